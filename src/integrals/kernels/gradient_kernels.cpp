#include "integrals/kernels/gradient_kernels.hpp"

#include "simd/simd.hpp"

namespace zentrix::kernels::ZX_ISA {

void fill_gradients_ss(EXCHANGE_GRADIENT* row);
void fill_gradients_ps(EXCHANGE_GRADIENT* row);
void fill_gradients_pp(EXCHANGE_GRADIENT* row);
void fill_gradients_ds(EXCHANGE_GRADIENT* row);
void fill_gradients_dp(EXCHANGE_GRADIENT* row);
void fill_gradients_dd(EXCHANGE_GRADIENT* row);
void fill_gradients_fs(EXCHANGE_GRADIENT* row);
void fill_gradients_fp(EXCHANGE_GRADIENT* row);
void fill_gradients_fd(EXCHANGE_GRADIENT* row);
void fill_gradients_ff(EXCHANGE_GRADIENT* row);
void fill_gradients_gs(EXCHANGE_GRADIENT* row);
void fill_gradients_gp(EXCHANGE_GRADIENT* row);
void fill_gradients_gd(EXCHANGE_GRADIENT* row);
void fill_gradients_gf(EXCHANGE_GRADIENT* row);
void fill_gradients_gg(EXCHANGE_GRADIENT* row);

namespace {

GRADIENT_KERNELS_T make_kernels() {
  GRADIENT_KERNELS_T kernels{};
  using FILL = void (*)(EXCHANGE_GRADIENT*);
  const FILL fill[KERNEL_PAIR_CLASSES] = {fill_gradients_ss, fill_gradients_ps, fill_gradients_pp, fill_gradients_ds,
                                          fill_gradients_dp, fill_gradients_dd, fill_gradients_fs, fill_gradients_fp,
                                          fill_gradients_fd, fill_gradients_ff, fill_gradients_gs, fill_gradients_gp,
                                          fill_gradients_gd, fill_gradients_gf, fill_gradients_gg};
  for (int bra = 0; bra < KERNEL_PAIR_CLASSES; ++bra) fill[bra](kernels.exchange[bra]);
  return kernels;
}

}  // namespace

const GRADIENT_KERNELS_T& gradient_kernels() {
  static const GRADIENT_KERNELS_T kernels = make_kernels();
  return kernels;
}

}  // namespace zentrix::kernels::ZX_ISA

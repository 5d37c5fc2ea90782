#include "integrals/kernels/quartet_kernels.hpp"

#include "simd/simd.hpp"

namespace zentrix::kernels::ZX_ISA {

void fill_fronts_ss(FRONT* row);
void fill_fronts_ps(FRONT* row);
void fill_fronts_pp(FRONT* row);
void fill_fronts_ds(FRONT* row);
void fill_fronts_dp(FRONT* row);
void fill_fronts_dd(FRONT* row);
void fill_fronts_fs(FRONT* row);
void fill_fronts_fp(FRONT* row);
void fill_fronts_fd(FRONT* row);
void fill_fronts_ff(FRONT* row);
void fill_fronts_gs(FRONT* row);
void fill_fronts_gp(FRONT* row);
void fill_fronts_gd(FRONT* row);
void fill_fronts_gf(FRONT* row);
void fill_fronts_gg(FRONT* row);
void fill_row_backs(QUARTET_KERNELS_T& kernels);
void fill_block_backs(QUARTET_KERNELS_T& kernels);
void fill_merged_fronts(QUARTET_KERNELS_T& kernels);
void fill_merged_fronts_d(QUARTET_KERNELS_T& kernels);
void fill_merged_backs(QUARTET_KERNELS_T& kernels);

namespace {

QUARTET_KERNELS_T make_kernels() {
  QUARTET_KERNELS_T kernels{};
  using FILL = void (*)(FRONT*);
  const FILL fill[KERNEL_PAIR_CLASSES] = {fill_fronts_ss, fill_fronts_ps, fill_fronts_pp, fill_fronts_ds, fill_fronts_dp,
                                          fill_fronts_dd, fill_fronts_fs, fill_fronts_fp, fill_fronts_fd, fill_fronts_ff,
                                          fill_fronts_gs, fill_fronts_gp, fill_fronts_gd, fill_fronts_gf, fill_fronts_gg};
  for (int bra = 0; bra < KERNEL_PAIR_CLASSES; ++bra) fill[bra](kernels.front[bra]);
  fill_row_backs(kernels);
  fill_block_backs(kernels);
  fill_merged_fronts(kernels);
  fill_merged_fronts_d(kernels);
  fill_merged_backs(kernels);
  return kernels;
}

}  // namespace

const QUARTET_KERNELS_T& quartet_kernels() {
  static const QUARTET_KERNELS_T kernels = make_kernels();
  return kernels;
}

}  // namespace zentrix::kernels::ZX_ISA

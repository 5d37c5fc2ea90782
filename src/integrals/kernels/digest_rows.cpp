#include "integrals/kernels/digest.hpp"

namespace zentrix::kernels::ZX_ISA {

namespace {

template <int CLASS, int LC = 0, int LD = 0>
void fill(QUARTET_KERNELS_T& kernels) {
  if constexpr (CLASS < KERNEL_PAIR_CLASSES) {
    kernels.digest_rows[CLASS] = BACK_OF_CLASS<LC, LD, TRANSFERRED_ROW, true, false>::run;
    kernels.store_rows[CLASS] = STORE_OF_CLASS<LC, LD>::run;
    fill<CLASS + 1, (LD == LC ? LC + 1 : LC), (LD == LC ? 0 : LD + 1)>(kernels);
  }
}

}  // namespace

void fill_row_backs(QUARTET_KERNELS_T& kernels) { fill<0>(kernels); }

}  // namespace zentrix::kernels::ZX_ISA

#include "integrals/kernels/digest.hpp"

namespace zentrix::kernels::ZX_ISA {

namespace {

template <int CLASS, int LC = 0, int LD = 0>
void fill(QUARTET_KERNELS_T& kernels) {
  if constexpr (CLASS < KERNEL_PAIR_CLASSES) {
    kernels.digest_block[CLASS] = BACK_OF_CLASS<LC, LD, STORED_ROW, true, false>::run;
    kernels.digest_block_coulomb[CLASS] = BACK_OF_CLASS<LC, LD, STORED_ROW, false, true>::run;
    kernels.digest_block_both[CLASS] = BACK_OF_CLASS<LC, LD, STORED_ROW, true, true>::run;
    fill<CLASS + 1, (LD == LC ? LC + 1 : LC), (LD == LC ? 0 : LD + 1)>(kernels);
  }
}

}  // namespace

void fill_block_backs(QUARTET_KERNELS_T& kernels) { fill<0>(kernels); }

}  // namespace zentrix::kernels::ZX_ISA

#include "integrals/kernels/merged_front.hpp"

namespace zentrix::kernels::ZX_ISA {

void fill_merged_fronts_d(QUARTET_KERNELS_T& kernels) {
  MERGED_FRONTS_OF_BRA<2, 0>::fill(kernels.merged_front[merged_class(2, 0)]);
  MERGED_FRONTS_OF_BRA<2, 1>::fill(kernels.merged_front[merged_class(2, 1)]);
  MERGED_FRONTS_OF_BRA<2, SP_SHELL>::fill(kernels.merged_front[merged_class(2, SP_SHELL)]);
  MERGED_FRONTS_OF_BRA<2, 2>::fill(kernels.merged_front[merged_class(2, 2)]);
}

}  // namespace zentrix::kernels::ZX_ISA

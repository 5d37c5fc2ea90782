#include "integrals/kernels/front.hpp"

namespace zentrix::kernels::ZX_ISA {

void fill_fronts_ss(FRONT* row) { FRONTS_OF_BRA<0, 0>::fill<KERNEL_PAIR_CLASSES - 1>(row); }

}  // namespace zentrix::kernels::ZX_ISA

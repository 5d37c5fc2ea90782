#include "integrals/kernels/front.hpp"

namespace zentrix::kernels::ZX_ISA {

void fill_fronts_gs(FRONT* row) { FRONTS_OF_BRA<4, 0>::fill<KERNEL_PAIR_CLASSES - 1>(row); }

}  // namespace zentrix::kernels::ZX_ISA

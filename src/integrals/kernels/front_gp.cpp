#include "integrals/kernels/front.hpp"

namespace zentrix::kernels::ZX_ISA {

void fill_fronts_gp(FRONT* row) { FRONTS_OF_BRA<4, 1>::fill<KERNEL_PAIR_CLASSES - 1>(row); }

}  // namespace zentrix::kernels::ZX_ISA

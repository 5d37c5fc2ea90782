#include "integrals/kernels/gradient.hpp"

namespace zentrix::kernels::ZX_ISA {

void fill_gradients_dp(EXCHANGE_GRADIENT* row) { GRADIENTS_OF_BRA<2, 1>::fill<KERNEL_PAIR_CLASSES - 1>(row); }

}  // namespace zentrix::kernels::ZX_ISA

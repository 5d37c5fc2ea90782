#pragma once

#include "integrals/kernels/coulomb_kernels.hpp"

ZX_DECLARE_FOR_EACH_ISA(
    /// Fully unrolled kernels for bra_order + ket_order <= 5, bra_order >= ket_order; null for others.
    COULOMB_KERNEL coulomb_low_kernel(int bra_order, int ket_order))

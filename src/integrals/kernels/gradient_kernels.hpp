#pragma once

#include "integrals/kernels/quartet_kernels.hpp"

// What the driver sees of the kernels of the exchange gradient: one function per quartet class.

namespace zentrix::kernels {

/// Densities as the bra's panels (DIGEST_T::dp), one after the other.
struct GRADIENT_DENSITIES_T {
  int count = 0;
  const double* panels = nullptr;
  long stride = 0;  ///< doubles from one density's panel to the next
};

/// Derivatives of scale * sum_s sum_abcd (D_ac D_bd + D_ad D_bc) (ab|cd) over a batch with respect to the motion of
/// the whole bra (B and A together), of B alone and of D alone: forces[9][lane] in this order, overwritten. The others
/// follow from translation: A is bra less B, C is what is left. `scratch` and `rows` are aligned to 64 bytes.
using EXCHANGE_GRADIENT = void (*)(const BATCH_T& batch, const BOYS_SERVICE_T& boys, const GRADIENT_DENSITIES_T& densities,
                                   double* scratch, double* rows, double* forces);

struct GRADIENT_KERNELS_T {
  EXCHANGE_GRADIENT exchange[KERNEL_PAIR_CLASSES][KERNEL_PAIR_CLASSES];  ///< [bra class][ket class]; null as in the fronts
};

}  // namespace zentrix::kernels

ZX_DECLARE_FOR_EACH_ISA(const GRADIENT_KERNELS_T& gradient_kernels())

#pragma once

#include "integrals/kernels/boys_cells.hpp"
#include "simd/isa.hpp"

// Kernels of the Coulomb engine: one Hermite bra pair against blocks of LANES Hermite ket pairs.
//
//   J_bra[t] += sum_u R_(t+u) H_ket[u],   J_ket[u] += sum_t R_(t+u) H_bra[t],   R_tuv of the distance P - Q,
//
// both from the same R. The factor (-1)^u of [t|u] belongs to the ket's vectors: H_ket comes with it, J_ket goes without it.

namespace zentrix::kernels {

struct COULOMB_BRA_T {
  int order;         ///< total Hermite order
  double p;          ///< exponent, bohr^-2
  double center[3];  ///< bohr
  const double* h;   ///< Hermite density, one vector per density
  long h_stride;     ///< distance of those vectors
  double* j;         ///< potential [density][t][lane], added to; summed over the lanes by the caller
};

struct COULOMB_KETS_T {
  int order;
  const double* geometry;  ///< [block][p, x, y, z][lane]
  const double* h;         ///< [block][density][u][lane]
  double* j;               ///< the same shape, added to
  const double* weight;    ///< [lane], factor of every interaction
  int begin;               ///< blocks begin .. end - 1
  int end;
};

using COULOMB_KERNEL = void (*)(const BOYS_SERVICE_T& boys, const COULOMB_BRA_T& bra, const COULOMB_KETS_T& kets,
                                int n_densities, double* scratch);

/// Highest order on either side: two h functions.
inline constexpr int COULOMB_ORDER_MAX = 10;
/// Highest order with kernels of its own: two g functions. Beyond it one kernel takes the orders at run time.
inline constexpr int COULOMB_UNROLLED_ORDER_MAX = 8;
/// Doubles of 64-byte aligned scratch that a kernel of total order m may use.
constexpr long coulomb_scratch(int m) { return static_cast<long>(m + 1) * (m + 1) * (m + 1) * MAX_LANES; }

}  // namespace zentrix::kernels

ZX_DECLARE_FOR_EACH_ISA(
    /// The kernel for a bra of the given order with kets of an order not above it.
    COULOMB_KERNEL coulomb_kernel(int bra_order, int ket_order))

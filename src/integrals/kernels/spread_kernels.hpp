#pragma once

#include "integrals/kernels/shell_pair.hpp"
#include "simd/isa.hpp"

// From stored blocks of vectors, one ket pair per lane, to dense rectangles over the components of a whole ket class, the
// form in which matrix products take integrals.

namespace zentrix::kernels {

/// Where the lanes of a block [ab][cd] of vectors go: a panel [ab][c][d] over the ket components of a whole class.
struct SPREAD_T {
  double* panel = nullptr;
  long ab_stride = 0;           ///< doubles between the rectangles of two component pairs ab
  long row_stride = 0;          ///< doubles between two c
  long corner[MAX_LANES] = {};  ///< of every lane's first (c, d) in a rectangle
  int count = 0;                ///< used lanes
};

/// Writes `n_rows` rows ab of a block into the panel.
using SPREAD_BLOCK = void (*)(const SPREAD_T& target, int n_rows, const double* block);
/// square[c][d] += square[d][c] for all c, d < n, of which only one had been filled; n a multiple of 8.
using MIRROR = void (*)(double* square, int n, long row_stride);

struct SPREAD_KERNELS_T {
  SPREAD_BLOCK spread[KERNEL_PAIR_CLASSES];  ///< [ket class]
  MIRROR mirror;
};

}  // namespace zentrix::kernels

ZX_DECLARE_FOR_EACH_ISA(const SPREAD_KERNELS_T& spread_kernels())

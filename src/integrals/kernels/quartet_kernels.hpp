#pragma once

#include "integrals/kernels/boys_cells.hpp"
#include "integrals/kernels/shell_pair.hpp"
#include "simd/isa.hpp"

// What the drivers see of the quartet kernels: batches of one bra pair and as many ket pairs of one class as a vector has
// lanes, and tables of functions over angular momenta.
//
// A quartet is made in two steps. The *front* of its class evaluates the primitives, contracts and transfers the bra,
// leaving rows (ab|f] with f = c .. c+d in `rows`. The *back* of its ket class takes row after row, transfers the ket and
// digests it with the density (or stores it), so that the full block never exists.

namespace zentrix::kernels {

struct BATCH_T {
  const SHELL_PAIR_T* bra = nullptr;
  const SHELL_PAIR_T* kets[MAX_LANES] = {};  ///< unused lanes repeat the first ket
  double scale[MAX_LANES] = {};              ///< symmetry factors; 0 in unused lanes
  int count = 0;                             ///< used lanes
  double primitive_cutoff = 0.0;             ///< primitive quartets with a smaller product of prefactors are left out
};

/// Density and target arrays of a back. `dp` and `kp` are the bra's panels: rows of all components x, each with the columns
/// of the bra's first and second shell, so that a ket shell's block is one contiguous run. Both have 8 spare doubles at the
/// end.
struct DIGEST_T {
  int na = 0, nb = 0;
  const double* dp = nullptr;
  double* kp = nullptr;
  // Coulomb part (stored integrals only): density and target of the bra's block, and of all pairs by SHELL_PAIR_T::block.
  const double* bra_density = nullptr;
  double* bra_coulomb = nullptr;  ///< vectors, one per component pair
  const double* pair_density = nullptr;
  double* pair_coulomb = nullptr;
};

/// rows[(a nb + b) row_stride + f], vectors; one such set for each combination when a pair has several contractions.
/// `scratch` is aligned to 64 bytes.
using FRONT = void (*)(const BATCH_T& batch, const BOYS_SERVICE_T& boys, double* scratch, double* rows);
/// Number of vectors between rows of a ket class.
constexpr int row_stride(int lc, int ld) {
  int n = 0;
  for (int c = 0; c < shells_in(lc); ++c)
    for (int d = 0; d < shells_in(ld); ++d)
      for (int l = l_of(lc, c); l <= l_of(lc, c) + l_of(ld, d); ++l) n += (l + 1) * (l + 2) / 2;
  return n | 1;  // odd: rows spread over all cache sets
}
/// Digests the rows of a batch into the exchange panel.
using DIGEST_ROWS = void (*)(const BATCH_T& batch, const DIGEST_T& target, double* scratch, const double* rows);
/// Transfers the ket and writes the block [ab][cd] of vectors.
using STORE_ROWS = void (*)(const BATCH_T& batch, int n_rows, const double* rows, double* block);
/// Digests a stored block [ab][cd] into the exchange panel and, when `with_coulomb`, into the Coulomb blocks.
using DIGEST_BLOCK = void (*)(const BATCH_T& batch, const DIGEST_T& target, double* scratch, const double* block);

struct QUARTET_KERNELS_T {
  FRONT front[KERNEL_PAIR_CLASSES][KERNEL_PAIR_CLASSES];  ///< [bra class][ket class]; null where the ket ranks higher
  DIGEST_ROWS digest_rows[KERNEL_PAIR_CLASSES];
  STORE_ROWS store_rows[KERNEL_PAIR_CLASSES];
  DIGEST_BLOCK digest_block[KERNEL_PAIR_CLASSES];          ///< exchange
  DIGEST_BLOCK digest_block_coulomb[KERNEL_PAIR_CLASSES];  ///< Coulomb
  DIGEST_BLOCK digest_block_both[KERNEL_PAIR_CLASSES];     ///< both in one pass
  // With merged shells: [merged_class of the bra][of the ket], null where the ket ranks higher.
  FRONT merged_front[MERGED_PAIR_CLASSES][MERGED_PAIR_CLASSES];
  DIGEST_ROWS merged_digest[MERGED_PAIR_CLASSES];
};

}  // namespace zentrix::kernels

ZX_DECLARE_FOR_EACH_ISA(const QUARTET_KERNELS_T& quartet_kernels())

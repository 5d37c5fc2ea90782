#pragma once

#include <vector>

#include "integrals/shell_pairs.hpp"
#include "integrals/workspace.hpp"

// How the pairs of a molecule are cut into tasks and batches; shared by the direct exchange build, the integral store and
// the contraction of the store.

namespace zentrix::INTEGRALS_2E {

/// Primitive quartets of a batch are left out when their product of prefactors lies this far below the threshold.
inline constexpr double PRIMITIVE_SAFETY = 1e-3;

/// One bra pair: its list and its place there.
struct BRA_T {
  int list = 0;
  int index = 0;
};

/// All bra pairs, expensive ones first.
std::vector<BRA_T> bra_order(const SHELL_PAIRS_T& data);

/// Kets of list `ket_list` that may meet the bra: all of a lower list, the ones up to the bra itself in its own.
inline int ket_limit(const SHELL_PAIRS_T& data, const BRA_T& bra, int ket_list) {
  return ket_list == bra.list ? bra.index + 1
                              : static_cast<int>(data.lists[static_cast<std::size_t>(ket_list)].pairs.size());
}

/// Number of leading kets of a list with Q_bra Q_ket >= threshold (lists are sorted).
int surviving_kets(const SHELL_PAIRS_T& data, const BRA_T& bra, int ket_list, double threshold);

/// Up to `lanes` kets from `kets` with the symmetry factors of their quartets; unused lanes repeat the first ket with factor
/// 0. `primitive_cutoff`: of s functions, lowered for what the functions of the batch can grow to.
kernels::BATCH_T make_batch(const SHELL_PAIR_T& bra, const SHELL_PAIR_T* const* kets, int count, double primitive_cutoff);

/// Largest |D_ab| of every shell block over all densities, for components of self-overlap 1; nshell x nshell.
MATRIX block_maxima(const SHELL_PAIRS_T& data, const std::vector<const MATRIX*>& densities);

/// Columns of the bra's two shells of a symmetric matrix, as rows of na + nb doubles for every component, into `panel`.
void fill_panel(const MATRIX& density, const SHELL_PAIR_T& bra, int na, int nb, double* panel);
/// Adds a panel to the columns of the bra's shells.
void add_panel(const double* panel, const SHELL_PAIR_T& bra, int na, int nb, Eigen::Map<MATRIX> target);

/// Doubles of the panels of any bra, with the spare doubles that whole vectors need.
std::size_t panel_doubles(const SHELL_PAIRS_T& data);

}  // namespace zentrix::INTEGRALS_2E

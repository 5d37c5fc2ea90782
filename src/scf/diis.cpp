#include "scf/diis.hpp"

#include <algorithm>
#include <cmath>

#include "linalg/lapack.hpp"

namespace zentrix::SCF {
namespace {

/// |largest| / |smallest| eigenvalue in LAPACK's ascending order; 1e30 when there are none.
double condition_ratio(const MATRIX& bordered) {
  VECTOR values;
  if (symmetric_eigenvalues(bordered, values) != 0) return 1e30;
  return std::max(std::abs(values(values.size() - 1)), 1e-300) / std::max(std::abs(values(0)), 1e-300);
}

}  // namespace

void DIIS_T::push(const SPIN_MATRICES_T& fock, const SPIN_MATRICES_T& error) {
  if (size() == max_entries) entries_.pop_front();
  entries_.push_back({fock, error});
}

MATRIX DIIS_T::bordered_matrix() const {
  const int m = size();
  MATRIX b = MATRIX::Constant(m + 1, m + 1, -1.0);
  b(m, m) = 0.0;
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j <= i; ++j) {
      double product = 0.0;
      const ENTRY_T& first = entries_[static_cast<std::size_t>(i)];
      const ENTRY_T& second = entries_[static_cast<std::size_t>(j)];
      for (std::size_t s = 0; s < first.error.size(); ++s) product += first.error[s].cwiseProduct(second.error[s]).sum();
      b(i, j) = b(j, i) = product;
    }
  }
  return b;
}

DIIS_T::OUTCOME_T DIIS_T::extrapolate(SPIN_MATRICES_T& fock) {
  OUTCOME_T outcome;
  if (size() < 2) return outcome;
  MATRIX b = bordered_matrix();
  while (true) {
    const double ratio = condition_ratio(b);
    if (outcome.pruned == 0 || ratio > condition_max_) outcome.ratio = ratio;
    if (ratio <= condition_max_ || outcome.pruned >= max_pruned || size() < 2) break;
    entries_.pop_front();
    ++outcome.pruned;
    b = bordered_matrix();
  }
  const int m = size();
  if (m < 2) return outcome;
  VECTOR rhs = VECTOR::Zero(m + 1);
  rhs(m) = -1.0;
  VECTOR solution;
  if (solve_linear(b, rhs, solution) != 0 || !solution.allFinite()) return outcome;
  for (std::size_t s = 0; s < fock.size(); ++s) {
    fock[s].setZero();
    for (int i = 0; i < m; ++i) fock[s] += solution(i) * entries_[static_cast<std::size_t>(i)].fock[s];
  }
  outcome.extrapolated = true;
  return outcome;
}

}  // namespace zentrix::SCF

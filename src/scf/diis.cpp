#include "scf/diis.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "linalg/lapack.hpp"

namespace zentrix::SCF {
namespace {

/// |last| / |first| eigenvalue, in LAPACK's ascending order, of the errors' inner products; 1e30 when there are none. The
/// border has no part in it: it alone gives one negative and one positive eigenvalue of about sqrt(m), whatever the errors
/// are.
double condition_ratio(const MATRIX& bordered) {
  const Eigen::Index m = bordered.rows() - 1;
  VECTOR values;
  if (symmetric_eigenvalues(bordered.topLeftCorner(m, m), values) != 0) return 1e30;
  return std::max(std::abs(values(values.size() - 1)), 1e-300) / std::max(std::abs(values(0)), 1e-300);
}

/// Lower triangles, column after column, what is below the diagonal times `below`.
std::vector<VECTOR> lower_triangles(const SPIN_MATRICES_T& matrices, double below) {
  std::vector<VECTOR> triangles;
  for (const MATRIX& matrix : matrices) {
    const Eigen::Index n = matrix.rows();
    VECTOR& packed = triangles.emplace_back(n * (n + 1) / 2);
    for (Eigen::Index c = 0, at = 0; c < n; at += n - c, ++c) {
      packed(at) = matrix(c, c);
      packed.segment(at + 1, n - c - 1) = below * matrix.col(c).tail(n - c - 1);
    }
  }
  return triangles;
}

/// The symmetric matrix of a lower triangle.
void unpack(const VECTOR& packed, MATRIX& matrix) {
  const Eigen::Index n = matrix.rows();
  for (Eigen::Index c = 0, at = 0; c < n; at += n - c, ++c) matrix.col(c).tail(n - c) = packed.segment(at, n - c);
  matrix.triangularView<Eigen::StrictlyUpper>() = matrix.transpose();
}

/// The entries of `values` whose bits are set in `subset`.
std::vector<Eigen::Index> members(unsigned subset) {
  std::vector<Eigen::Index> indices;
  for (Eigen::Index i = 0; subset >> i != 0; ++i)
    if ((subset >> i & 1U) != 0) indices.push_back(i);
  return indices;
}

/// Minimum of b.c + c.Q.c/2 over c >= 0, sum c = 1. It is a stationary point of one of the faces of the simplex; there are
/// at most 255 of them, so all are tried.
VECTOR minimum_on_simplex(const VECTOR& b, const MATRIX& q) {
  const auto n = b.size();
  VECTOR best = VECTOR::Unit(n, n - 1);
  double lowest = b(n - 1) + 0.5 * q(n - 1, n - 1);
  for (unsigned subset = 1; subset < (1U << n); ++subset) {
    const std::vector<Eigen::Index> face = members(subset);
    const auto k = static_cast<Eigen::Index>(face.size());
    MATRIX system = MATRIX::Ones(k + 1, k + 1);
    system(k, k) = 0.0;
    system.topLeftCorner(k, k) = q(face, face);
    VECTOR rhs(k + 1);
    rhs << -b(face), 1.0;
    const VECTOR solution = system.partialPivLu().solve(rhs);
    if (!solution.allFinite() || solution.head(k).minCoeff() < 0.0 || std::abs(solution.head(k).sum() - 1.0) > 1e-8)
      continue;
    VECTOR c = VECTOR::Zero(n);
    c(face) = solution.head(k);
    const double value = b.dot(c) + 0.5 * c.dot(q * c);
    if (value < lowest) {
      lowest = value;
      best = c;
    }
  }
  return best;
}

}  // namespace

void DIIS_T::push(const SPIN_MATRICES_T& fock, const SPIN_MATRICES_T& density, const SPIN_MATRICES_T& error) {
  if (size() == max_entries) entries_.pop_front();
  entries_.push_back(
      {lower_triangles(fock, 1.0), lower_triangles(density, 2.0), lower_triangles(error, std::numbers::sqrt2)});
}

void DIIS_T::combine(const VECTOR& coefficients, SPIN_MATRICES_T& fock) const {
  for (std::size_t s = 0; s < fock.size(); ++s) {
    VECTOR sum = VECTOR::Zero(entries_.front().fock[s].size());
    for (int i = 0; i < size(); ++i) sum += coefficients(i) * entries_[static_cast<std::size_t>(i)].fock[s];
    unpack(sum, fock[s]);
  }
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
      for (std::size_t s = 0; s < first.error.size(); ++s) product += first.error[s].dot(second.error[s]);
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
    if (size() == 2) go_between_opposed(b, fock);
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
  combine(solution.head(m), fock);
  outcome.extrapolated = true;
  return outcome;
}

void DIIS_T::go_between_opposed(const MATRIX& b, SPIN_MATRICES_T& fock) const {
  if (b(0, 1) >= 0.0) return;
  VECTOR weights(2);
  weights << b(1, 1) - b(0, 1), b(0, 0) - b(0, 1);
  combine(weights / weights.sum(), fock);
}

bool DIIS_T::interpolate(SPIN_MATRICES_T& fock) const {
  const int m = size();
  if (m < 2) return false;
  VECTOR linear = VECTOR::Zero(m);
  MATRIX quadratic = MATRIX::Zero(m, m);
  const ENTRY_T& newest = entries_.back();
  for (std::size_t s = 0; s < fock.size(); ++s) {
    for (int i = 0; i < m; ++i) {
      const VECTOR step = entries_[static_cast<std::size_t>(i)].density[s] - newest.density[s];
      linear(i) += step.dot(newest.fock[s]);
      for (int j = 0; j < m; ++j)
        quadratic(i, j) += step.dot(entries_[static_cast<std::size_t>(j)].fock[s] - newest.fock[s]);
    }
  }
  const MATRIX symmetric = 0.5 * (quadratic + quadratic.transpose());
  combine(minimum_on_simplex(linear, symmetric), fock);
  return true;
}

}  // namespace zentrix::SCF

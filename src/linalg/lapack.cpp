#include "linalg/lapack.hpp"

#include <lapacke.h>

#include <vector>

namespace zentrix {

int symmetric_eigen(const MATRIX& symmetric, VECTOR& values, MATRIX& vectors) {
  const auto n = static_cast<lapack_int>(symmetric.rows());
  if (&vectors != &symmetric) vectors = symmetric;
  values.resize(n);
  if (n == 0) return 0;
  return LAPACKE_dsyev(LAPACK_COL_MAJOR, 'V', 'L', n, vectors.data(), n, values.data());
}

int symmetric_eigenvalues(const MATRIX& symmetric, VECTOR& values) {
  const auto n = static_cast<lapack_int>(symmetric.rows());
  MATRIX work = symmetric;
  values.resize(n);
  if (n == 0) return 0;
  return LAPACKE_dsyev(LAPACK_COL_MAJOR, 'N', 'L', n, work.data(), n, values.data());
}

int solve_linear(const MATRIX& matrix, const VECTOR& rhs, VECTOR& x) {
  const auto n = static_cast<lapack_int>(matrix.rows());
  MATRIX factors = matrix;
  x = rhs;
  if (n == 0) return 0;
  std::vector<lapack_int> pivots(static_cast<std::size_t>(n));
  return LAPACKE_dgesv(LAPACK_COL_MAJOR, n, 1, factors.data(), n, pivots.data(), x.data(), n);
}

}  // namespace zentrix

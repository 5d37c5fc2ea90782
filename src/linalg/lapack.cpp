#include "linalg/lapack.hpp"

#include <lapacke.h>
#include <omp.h>

#include <vector>

namespace zentrix {
namespace {

/// Runs a block on one thread when the matrix is too small to share. Handing out the many short steps of a small
/// factorisation gains nothing on an idle machine and loses seconds on a busy one, where every step waits for a thread to be
/// scheduled.
class SMALL_MATRIX_GUARD_T {
 public:
  explicit SMALL_MATRIX_GUARD_T(lapack_int n) : threads_(omp_get_max_threads()) {
    constexpr lapack_int worth_sharing = 200;
    if (n < worth_sharing) omp_set_num_threads(1);
  }
  ~SMALL_MATRIX_GUARD_T() { omp_set_num_threads(threads_); }
  SMALL_MATRIX_GUARD_T(const SMALL_MATRIX_GUARD_T&) = delete;
  SMALL_MATRIX_GUARD_T& operator=(const SMALL_MATRIX_GUARD_T&) = delete;

 private:
  int threads_;
};

}  // namespace

int symmetric_eigen(const MATRIX& symmetric, VECTOR& values, MATRIX& vectors) {
  const auto n = static_cast<lapack_int>(symmetric.rows());
  if (&vectors != &symmetric) vectors = symmetric;
  values.resize(n);
  if (n == 0) return 0;
  const SMALL_MATRIX_GUARD_T threads(n);
  return LAPACKE_dsyev(LAPACK_COL_MAJOR, 'V', 'L', n, vectors.data(), n, values.data());
}

int symmetric_eigenvalues(const MATRIX& symmetric, VECTOR& values) {
  const auto n = static_cast<lapack_int>(symmetric.rows());
  MATRIX work = symmetric;
  values.resize(n);
  if (n == 0) return 0;
  const SMALL_MATRIX_GUARD_T threads(n);
  return LAPACKE_dsyev(LAPACK_COL_MAJOR, 'N', 'L', n, work.data(), n, values.data());
}

int solve_linear(const MATRIX& matrix, const VECTOR& rhs, VECTOR& x) {
  const auto n = static_cast<lapack_int>(matrix.rows());
  MATRIX factors = matrix;
  x = rhs;
  if (n == 0) return 0;
  const SMALL_MATRIX_GUARD_T threads(n);
  std::vector<lapack_int> pivots(static_cast<std::size_t>(n));
  return LAPACKE_dgesv(LAPACK_COL_MAJOR, n, 1, factors.data(), n, pivots.data(), x.data(), n);
}

}  // namespace zentrix

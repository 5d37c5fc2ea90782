#pragma once

#include "linalg/matrix.hpp"

// LAPACK calls whose failure the report names. Each returns LAPACK's info (0 = success) and never prints.

namespace zentrix {

/// Eigenvalues (ascending) and eigenvectors (columns) of a symmetric matrix, of which the lower triangle is read.
/// `vectors` may be the same object as `symmetric`.
[[nodiscard]] int symmetric_eigen(const MATRIX& symmetric, VECTOR& values, MATRIX& vectors);

/// Eigenvalues only, ascending.
[[nodiscard]] int symmetric_eigenvalues(const MATRIX& symmetric, VECTOR& values);

/// Solves matrix x = rhs by LU factorisation with pivoting; info > 0 for an exactly singular matrix.
[[nodiscard]] int solve_linear(const MATRIX& matrix, const VECTOR& rhs, VECTOR& x);

}  // namespace zentrix

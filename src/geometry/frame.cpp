#include <Eigen/Eigenvalues>

#include "geometry/internal_coords.hpp"
#include "geometry/vectors.hpp"
#include "linalg/lapack.hpp"
#include "report/stop.hpp"

namespace zentrix::INTERNAL_COORDS {
namespace {

/// Singular values of B below this (bohr^-1 for angles) count as zero. Those of rigid motions are of rounding size; that of
/// the bending of a chain of 40 carbon atoms as a whole is 4e-3, and falls with the square of the length.
constexpr double smallest_singular_value = 1e-3;
/// A rotation whose displacements have a norm below this (bohr) turns a linear molecule about itself.
constexpr double no_rotation = 1e-4;

}  // namespace

MATRIX rigid_motions(const VECTOR& positions) {
  const Eigen::Index n_atoms = positions.size() / 3;
  const Eigen::Map<const MATRIX> x(positions.data(), 3, n_atoms);
  const VECTOR3 centre = x.rowwise().mean();
  const MATRIX centred = x.colwise() - centre;
  // Turned about the principal axes of the point set, the three rotations are orthogonal.
  const Eigen::Matrix3d second_moments = centred * centred.transpose();
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> principal(second_moments);
  MATRIX motions = MATRIX::Zero(positions.size(), 6);
  Eigen::Index count = 0;
  for (int k = 0; k < 3; ++k, ++count) {
    for (Eigen::Index a = 0; a < n_atoms; ++a) motions(3 * a + k, count) = 1.0 / std::sqrt(static_cast<double>(n_atoms));
  }
  for (int k = 0; k < 3; ++k) {
    const VECTOR3 axis = principal.eigenvectors().col(k);
    VECTOR rotation(positions.size());
    for (Eigen::Index a = 0; a < n_atoms; ++a) rotation.segment<3>(3 * a) = axis.cross(VECTOR3(centred.col(a)));
    const double norm = rotation.norm();
    if (norm > no_rotation) motions.col(count++) = rotation / norm;
  }
  return motions.leftCols(count);
}

FRAME_T frame_of(const MATRIX& b) {
  const Eigen::Index n = b.cols();
  VECTOR squares;
  MATRIX vectors;
  const MATRIX metric = b.transpose() * b;
  if (symmetric_eigen(metric, squares, vectors) != 0)
    throw run_stopped(" *** FATAL: Diagonalization of the internal-coordinate metric failed.");
  Eigen::Index rank = 0;
  while (rank < n && squares(n - 1 - rank) > smallest_singular_value * smallest_singular_value) ++rank;
  FRAME_T frame;
  frame.sigma = squares.tail(rank).cwiseSqrt();
  frame.v = vectors.rightCols(rank);
  frame.u = b * frame.v;
  for (Eigen::Index k = 0; k < rank; ++k) frame.u.col(k) /= frame.sigma(k);
  return frame;
}

VECTOR FRAME_T::internal_gradient(const VECTOR& cartesian) const {
  if (sigma.size() == 0) return VECTOR::Zero(u.rows());
  return u * (v.transpose() * cartesian).cwiseQuotient(sigma);
}

VECTOR FRAME_T::cartesian_step(const VECTOR& dq) const {
  if (sigma.size() == 0) return VECTOR::Zero(v.rows());
  return v * (u.transpose() * dq).cwiseQuotient(sigma);
}

}  // namespace zentrix::INTERNAL_COORDS

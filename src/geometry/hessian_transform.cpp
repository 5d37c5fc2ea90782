#include "geometry/hessian_transform.hpp"

namespace zentrix::OPTIMIZER {
namespace {

constexpr double DEPENDENT_CONSTANT = 0.1;  // hartree per squared coordinate unit
constexpr double DISPLACEMENT = 1e-4;       // bohr; B is smooth, its differences are good to ten digits

/// K by central differences of B^T g.
MATRIX curvature_of_coordinates(const COORDINATE_SYSTEM_T& system, const COORDINATE_POINT_T& point) {
  const Eigen::Index n = point.positions.size();
  // The rigid motions that a B matrix is cleared of turn with the positions (and one of them vanishes for a line), which
  // differences would take for a curvature.
  if (!system.curved()) return MATRIX::Zero(n, n);
  MATRIX k(n, n);
  VECTOR x = point.positions;
  for (Eigen::Index i = 0; i < n; ++i) {
    x(i) = point.positions(i) + DISPLACEMENT;
    const VECTOR forward = system.b_matrix(x).transpose() * point.gradient;
    x(i) = point.positions(i) - DISPLACEMENT;
    const VECTOR backward = system.b_matrix(x).transpose() * point.gradient;
    x(i) = point.positions(i);
    k.col(i) = (forward - backward) / (2.0 * DISPLACEMENT);
  }
  return 0.5 * (k + k.transpose());
}

/// (B^+)^T H B^+, and the stiff constant for what does not exist here.
MATRIX from_cartesian(const MATRIX& cartesian, const INTERNAL_COORDS::FRAME_T& frame) {
  const MATRIX inverse = frame.v * frame.sigma.cwiseInverse().asDiagonal() * frame.u.transpose();
  const MATRIX dependent = MATRIX::Identity(frame.u.rows(), frame.u.rows()) - frame.u * frame.u.transpose();
  return inverse.transpose() * cartesian * inverse + DEPENDENT_CONSTANT * dependent;
}

}  // namespace

COORDINATE_POINT_T point_in_coordinates(const COORDINATE_SYSTEM_T& system, const VECTOR& positions,
                                        const VECTOR& cartesian_gradient) {
  COORDINATE_POINT_T point;
  point.positions = positions;
  point.values = system.values(positions);
  point.frame = INTERNAL_COORDS::frame_of(system.b_matrix(positions));
  point.gradient = point.frame.internal_gradient(cartesian_gradient);
  return point;
}

MATRIX hessian_in_coordinates(const COORDINATE_SYSTEM_T& system, const COORDINATE_POINT_T& point, const MATRIX& cartesian) {
  return from_cartesian(cartesian - curvature_of_coordinates(system, point), point.frame);
}

MATRIX hessian_in_cartesian(const COORDINATE_SYSTEM_T& system, const COORDINATE_POINT_T& point, const MATRIX& hessian) {
  const INTERNAL_COORDS::FRAME_T& frame = point.frame;
  const MATRIX b = frame.u * frame.sigma.asDiagonal() * frame.v.transpose();
  return b.transpose() * hessian * b + curvature_of_coordinates(system, point);
}

MATRIX hessian_in_new_coordinates(const MATRIX& hessian, const INTERNAL_COORDS::FRAME_T& before,
                                  const INTERNAL_COORDS::FRAME_T& after) {
  const MATRIX b = before.u * before.sigma.asDiagonal() * before.v.transpose();
  return from_cartesian(b.transpose() * hessian * b, after);
}

}  // namespace zentrix::OPTIMIZER

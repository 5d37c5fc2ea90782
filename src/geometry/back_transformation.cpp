#include <limits>

#include "geometry/internal_coords.hpp"
#include "geometry/vectors.hpp"

// Iteration after C. Peng, P. Y. Ayala, H. B. Schlegel, M. J. Frisch, J. Comput. Chem. 17 (1996) 49.

namespace zentrix::INTERNAL_COORDS {
namespace {

constexpr int MAX_ITERATIONS = 50;
constexpr double displacement_tolerance = 1e-8;  // bohr
constexpr double frozen_tolerance = 1e-10;       // bohr, radian

/// The frozen coordinates alone, as a set of their own.
COORDINATE_SET_T frozen_part(const COORDINATE_SET_T& set) {
  COORDINATE_SET_T part;
  for (const INTCOORD_T& coordinate : set.coordinates) {
    if (coordinate.frozen) part.coordinates.push_back(coordinate);
  }
  return part;
}

/// Redundant changes can contradict one another in second order, and the least-squares compromise would then bend the
/// constraints too: Newton steps in the frozen coordinates alone put them right at the smallest cost to the others.
void restore_frozen(const COORDINATE_SET_T& set, VECTOR& positions) {
  const COORDINATE_SET_T frozen = frozen_part(set);
  if (frozen.coordinates.empty()) return;
  VECTOR targets(static_cast<Eigen::Index>(frozen.coordinates.size()));
  for (Eigen::Index n = 0; n < targets.size(); ++n) targets(n) = frozen.coordinates[static_cast<std::size_t>(n)].target;
  for (int iteration = 0; iteration < MAX_ITERATIONS; ++iteration) {
    const VECTOR error = value_difference(frozen, targets, coordinate_values(frozen, positions));
    if (error.lpNorm<Eigen::Infinity>() < frozen_tolerance) return;
    const VECTOR step = frame_of(wilson_b(frozen, positions)).cartesian_step(error);
    positions += step;
    if (step.lpNorm<Eigen::Infinity>() < 1e-14) return;  // targets that exclude one another
  }
}

}  // namespace

BACK_TRANSFORMATION_T back_transform(const COORDINATE_SET_T& set, const VECTOR& positions, const VECTOR& dq) {
  BACK_TRANSFORMATION_T result;
  result.positions = positions;
  const VECTOR target = coordinate_values(set, positions) + dq;
  VECTOR x = positions;
  double smallest = std::numeric_limits<double>::infinity();
  while (result.iterations < MAX_ITERATIONS && !result.converged) {
    ++result.iterations;
    const VECTOR error = value_difference(set, target, coordinate_values(set, x));
    const VECTOR step = frame_of(wilson_b(set, x)).cartesian_step(error);
    x += step;
    const double size = value_difference(set, target, coordinate_values(set, x)).norm();
    result.converged = step.lpNorm<Eigen::Infinity>() < displacement_tolerance;
    if (size < smallest || result.converged) {
      smallest = size;
      result.positions = x;
    }
  }
  restore_frozen(set, result.positions);
  return result;
}

}  // namespace zentrix::INTERNAL_COORDS

#pragma once

#include <Eigen/Geometry>
#include <algorithm>
#include <cmath>

#include "constants/units.hpp"
#include "linalg/matrix.hpp"

namespace zentrix::INTERNAL_COORDS {

using VECTOR3 = Eigen::Vector3d;

/// Position of an atom counted from 1.
inline VECTOR3 position_of(const VECTOR& positions, int atom) { return positions.segment<3>(3 * (atom - 1)); }

/// Angle between two vectors; pi when one of them has no length.
inline double angle_between(const VECTOR3& a, const VECTOR3& b) {
  constexpr double zero_length = 1e-15;
  const double na = a.norm();
  const double nb = b.norm();
  if (na < zero_length || nb < zero_length) return PI;
  return std::acos(std::clamp(a.dot(b) / (na * nb), -1.0, 1.0));
}

/// Angle i-j-k at j.
inline double angle_at(const VECTOR& positions, int i, int j, int k) {
  const VECTOR3 apex = position_of(positions, j);
  return angle_between(position_of(positions, i) - apex, position_of(positions, k) - apex);
}

/// A unit vector across `direction`, along `wish` as far as possible.
inline VECTOR3 unit_across(const VECTOR3& direction, const VECTOR3& wish) {
  const VECTOR3 along = direction.normalized();
  const VECTOR3 across = wish - wish.dot(along) * along;
  if (across.norm() > 1e-3 * wish.norm() && wish.norm() > 0.0) return across.normalized();
  return along.unitOrthogonal();
}

}  // namespace zentrix::INTERNAL_COORDS

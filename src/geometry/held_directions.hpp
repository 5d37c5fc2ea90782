#pragma once

#include "geometry/hessian_transform.hpp"

namespace zentrix::OPTIMIZER {

/// The independent directions at a point (columns of `frame.u`; the rank is their number): those of the held coordinates
/// with the step that puts them on their targets, and the free rest, in which a search may do what it likes.
struct SPLIT_T {
  VECTOR correction;   ///< rank values: to the targets, along held directions only
  MATRIX free;         ///< rank x free directions, orthonormal
  double error = 0.0;  ///< largest deviation from a target, bohr or radian
};
SPLIT_T split_directions(const COORDINATE_SYSTEM_T& system, const COORDINATE_POINT_T& here);

/// The part of the gradient along free directions, in the coordinates.
VECTOR free_gradient(const COORDINATE_POINT_T& here, const SPLIT_T& parts);

}  // namespace zentrix::OPTIMIZER

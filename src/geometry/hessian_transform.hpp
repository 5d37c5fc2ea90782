#pragma once

#include "geometry/coordinate_system.hpp"
#include "geometry/internal_coords.hpp"
#include "linalg/matrix.hpp"

// Second derivatives of the energy between Cartesian coordinates and those of an optimiser. With the internal gradient g,
//   H_x = B^T H_q B + K,   K_ij = sum_q g_q d^2 q / dx_i dx_j
// (P. Pulay, G. Fogarasi, F. Pang, J. E. Boggs, J. Am. Chem. Soc. 101 (1979) 2550): away from a stationary point the bend of
// the coordinates counts.

namespace zentrix::OPTIMIZER {

/// A point of the surface as the coordinates see it.
struct COORDINATE_POINT_T {
  VECTOR positions;  ///< bohr
  VECTOR values;
  INTERNAL_COORDS::FRAME_T frame;
  VECTOR gradient;  ///< in the coordinates, of minimal norm
};
COORDINATE_POINT_T point_in_coordinates(const COORDINATE_SYSTEM_T& system, const VECTOR& positions,
                                        const VECTOR& cartesian_gradient);

/// H_q from H_x. Combinations of coordinates that do not exist at this point (but may a step later) get a stiff positive
/// constant.
MATRIX hessian_in_coordinates(const COORDINATE_SYSTEM_T& system, const COORDINATE_POINT_T& point, const MATRIX& cartesian);

/// H_x from H_q, in the space of the vibrations.
MATRIX hessian_in_cartesian(const COORDINATE_SYSTEM_T& system, const COORDINATE_POINT_T& point, const MATRIX& hessian);

/// H_q of other coordinates at the same point, K left out on both sides, so that a positive definite Hessian stays so: for
/// minimisations whose coordinates are made anew.
MATRIX hessian_in_new_coordinates(const MATRIX& hessian, const INTERNAL_COORDS::FRAME_T& before,
                                  const INTERNAL_COORDS::FRAME_T& after);

}  // namespace zentrix::OPTIMIZER

#pragma once

#include "linalg/matrix.hpp"

namespace zentrix::OPTIMIZER {

/// What is followed uphill from a point.
struct FOLLOWED_MODE_T {
  int mode = 0;             ///< from 1, in ascending eigenvalue
  double eigenvalue = 0.0;  ///< hartree per squared coordinate unit
  double overlap = 1.0;     ///< with the mode followed before
};

/// The eigenvector (columns of `vectors`, `eigenvalues` ascending) most like `before`, the one followed so far with
/// `eigenvalue_before`. One that was a way over a barrier stays one: while there are negative eigenvalues, only these are
/// looked at. A search that leaves them after a step too long climbs a wall and does not come back.
FOLLOWED_MODE_T follow_mode(const VECTOR& eigenvalues, const MATRIX& vectors, const VECTOR& before,
                            double eigenvalue_before);

}  // namespace zentrix::OPTIMIZER

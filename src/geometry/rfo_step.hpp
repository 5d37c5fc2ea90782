#pragma once

#include "linalg/matrix.hpp"

namespace zentrix::OPTIMIZER {

struct RFO_STEP_T {
  VECTOR step;
  double shift = 0.0;    ///< (H - shift metric) step = -g
  bool limited = false;  ///< shortened to the trust radius
};

/// Rational-function step: from the lowest eigenvector of the Hessian augmented with the gradient (A. Banerjee, N. Adams,
/// J. Simons, R. Shepard, J. Phys. Chem. 89 (1985) 52), lengths being sqrt(step^T metric step). When it is longer than
/// `trust`, the shift is lowered until the length is right: the step then is the minimum of the quadratic model on the
/// sphere, not a shortened copy.
RFO_STEP_T rfo_step(const MATRIX& hessian, const VECTOR& gradient, const MATRIX& metric, double trust);

}  // namespace zentrix::OPTIMIZER

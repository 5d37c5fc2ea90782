#pragma once

#include "linalg/matrix.hpp"

namespace zentrix::OPTIMIZER {

/// BFGS update from a step and the change of the gradient along it. A change that contradicts positive curvature, or shows
/// less than a fifth of the model's, is first mixed with the model's own (M. J. D. Powell, Math. Program. 14 (1978) 224), so
/// that a positive definite Hessian stays so. Steps of no length change nothing.
void bfgs_update(MATRIX& hessian, const VECTOR& step, const VECTOR& gradient_change);

}  // namespace zentrix::OPTIMIZER

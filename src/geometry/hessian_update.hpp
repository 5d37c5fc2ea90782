#pragma once

#include "linalg/matrix.hpp"

namespace zentrix::OPTIMIZER {

/// BFGS update from a step and the change of the gradient along it. A change that contradicts positive curvature, or shows
/// less than a fifth of the model's, is first mixed with the model's own (M. J. D. Powell, Math. Program. 14 (1978) 224), so
/// that a positive definite Hessian stays so. Steps of no length change nothing.
void bfgs_update(MATRIX& hessian, const VECTOR& step, const VECTOR& gradient_change);

/// Bofill's update: symmetric rank one and Powell's symmetric Broyden update, mixed by how well the first is defined (J. M.
/// Bofill, J. Comput. Chem. 15 (1994) 1). It lets the number of negative eigenvalues change, as the way to a saddle point
/// must. Steps of no length change nothing.
void bofill_update(MATRIX& hessian, const VECTOR& step, const VECTOR& gradient_change);

}  // namespace zentrix::OPTIMIZER

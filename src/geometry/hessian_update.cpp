#include "geometry/hessian_update.hpp"

namespace zentrix::OPTIMIZER {

void bfgs_update(MATRIX& hessian, const VECTOR& step, const VECTOR& gradient_change) {
  constexpr double no_step = 1e-12;
  constexpr double least_share = 0.2;
  const VECTOR model_change = hessian * step;
  const double model_curvature = step.dot(model_change);
  if (step.squaredNorm() < no_step * no_step || model_curvature <= 0.0) return;
  VECTOR change = gradient_change;
  double curvature = step.dot(change);
  if (curvature < least_share * model_curvature) {
    const double weight = (1.0 - least_share) * model_curvature / (model_curvature - curvature);
    change = weight * change + (1.0 - weight) * model_change;
    curvature = step.dot(change);
  }
  hessian += change * change.transpose() / curvature - model_change * model_change.transpose() / model_curvature;
}

}  // namespace zentrix::OPTIMIZER

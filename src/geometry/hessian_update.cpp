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

void bofill_update(MATRIX& hessian, const VECTOR& step, const VECTOR& gradient_change) {
  constexpr double no_step = 1e-12;
  constexpr double nothing_new = 1e-14;
  const double length = step.squaredNorm();
  const VECTOR surprise = gradient_change - hessian * step;
  const double size = surprise.squaredNorm();
  if (length < no_step * no_step || size < nothing_new * nothing_new) return;
  const double along = surprise.dot(step);
  const double share = along * along / (size * length);
  const MATRIX mixed = surprise * step.transpose() + step * surprise.transpose();
  const MATRIX powell = mixed / length - along / (length * length) * step * step.transpose();
  hessian += (1.0 - share) * powell;
  // share times the rank-one update, without its vanishing denominator: share / along = along / (size length).
  hessian += along / (size * length) * surprise * surprise.transpose();
}

}  // namespace zentrix::OPTIMIZER

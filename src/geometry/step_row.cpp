#include "geometry/step_row.hpp"

#include <cmath>

namespace zentrix::OPTIMIZER {
namespace {

double rms(const VECTOR& v) { return v.size() > 0 ? std::sqrt(v.squaredNorm() / static_cast<double>(v.size())) : 0.0; }
double largest(const VECTOR& v) { return v.size() > 0 ? v.lpNorm<Eigen::Infinity>() : 0.0; }

}  // namespace

STEP_ROW_T step_row(int step, double energy, double energy_change, const VECTOR& gradient, const VECTOR& dq) {
  return {step, energy, energy_change, largest(gradient), rms(gradient), largest(dq), rms(dq)};
}

bool below(const STEP_ROW_T& row, const THRESHOLDS_T& thresholds) {
  return row.max_gradient < thresholds.max_gradient && row.rms_gradient < thresholds.rms_gradient &&
         row.max_step < thresholds.max_step && row.rms_step < thresholds.rms_step;
}

}  // namespace zentrix::OPTIMIZER

#include "geometry/minimizer.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "geometry/held_directions.hpp"
#include "geometry/hessian_transform.hpp"
#include "geometry/hessian_update.hpp"
#include "geometry/rfo_step.hpp"
#include "geometry/trust_radius.hpp"

namespace zentrix::OPTIMIZER {
namespace {

constexpr double RISE_TO_REJECT = 1e-3;  // hartree
constexpr double HELD_TOLERANCE = 1e-6;  // bohr, radian

/// A geometry that has been evaluated.
struct VISITED_T : COORDINATE_POINT_T {
  double energy = 0.0;
  VECTOR cartesian_gradient;
};

class MINIMIZER_T {
 public:
  MINIMIZER_T(GRADIENTS::ENERGY_SURFACE_T& surface, COORDINATE_SYSTEM_T& system, const THRESHOLDS_T& thresholds,
              const OPTIMIZER_SETTINGS_T& settings, OPTIMIZER_OBSERVER_T& observer)
      : surface_(surface), system_(system), thresholds_(thresholds), settings_(settings), observer_(observer) {}

  OPTIMIZATION_T run(const MATRIX& hessian) {
    VECTOR x = GRADIENTS::positions_of(surface_.molecule());
    hessian_ = hessian;
    result_.outcome = OUTCOME::step_limit;
    for (int step = 1; step <= settings_.max_steps; ++step) {
      if (!evaluate(step, x)) break;
      if (step == settings_.max_steps) break;
      x = next_positions();
    }
    observer_.finished(result_);
    return result_;
  }

 private:
  /// False when the optimisation ends here.
  bool evaluate(int step, const VECTOR& x) {
    observer_.evaluating(step, x);
    result_.steps = step;
    result_.positions = x;
    result_.point = surface_.energy_and_gradient(x);
    if (!result_.point.converged) {
      observer_.scf_failed(step);
      result_.outcome = OUTCOME::scf_failed;
      return false;
    }
    if (step > 1) renew_coordinates(x);
    return judge(step, visited(x, result_.point.energy, result_.point.gradient));
  }

  /// Takes the new point or sends the search back; false when it has converged.
  bool judge(int step, VISITED_T here) {
    const VECTOR dq = best_ ? system_.difference(here.values, best_->values) : VECTOR::Zero(here.values.size());
    const SPLIT_T parts = split_directions(system_, here);
    const STEP_ROW_T row = tell(step, here, parts, dq);
    if (step == 1) {
      best_ = std::move(here);
      return true;
    }
    learn_from(here, dq);
    const double rise = here.energy - best_->energy;
    // The way to the targets of constraints may lead uphill.
    if (rise > RISE_TO_REJECT && split_directions(system_, *best_).error < HELD_TOLERANCE) {
      observer_.step_rejected(step, rise);
      limit_ = 0.5 * std::sqrt(dq.cwiseAbs2().dot(system_.weights()));
      return true;
    }
    limit_ = std::numeric_limits<double>::infinity();
    best_ = std::move(here);
    if (!below(row, thresholds_) || parts.error >= HELD_TOLERANCE) return true;
    result_.outcome = OUTCOME::converged;
    return false;
  }

  STEP_ROW_T tell(int step, const VISITED_T& here, const SPLIT_T& parts, const VECTOR& dq) {
    const double change = best_ ? here.energy - best_->energy : 0.0;
    const STEP_ROW_T row = step_row(step, here.energy, change, free_gradient(here, parts), dq);
    observer_.evaluated(row);
    return row;
  }

  /// Trust radius and Hessian from the step that was made.
  void learn_from(const VISITED_T& here, const VECTOR& dq) {
    const double predicted = best_->gradient.dot(dq) + 0.5 * dq.dot(hessian_ * dq);
    trust_ = next_trust(trust_, energy_ratio(here.energy - best_->energy, predicted));
    bfgs_update(hessian_, dq, here.gradient - best_->gradient);
  }

  VECTOR next_positions() const {
    const SPLIT_T parts = split_directions(system_, *best_);
    const MATRIX& u = best_->frame.u;
    if (u.cols() == 0) return best_->positions;  // an atom
    const MATRIX free = u * parts.free;
    const VECTOR correction = u * parts.correction;
    const VECTOR g = best_->gradient + hessian_ * correction;
    const RFO_STEP_T step = rfo_step(free.transpose() * hessian_ * free, free.transpose() * g,
                                     free.transpose() * system_.weights().asDiagonal() * free, std::min(trust_, limit_));
    return system_.displaced(best_->positions, correction + free * step.step);
  }

  VISITED_T visited(const VECTOR& x, double energy, const VECTOR& gradient) const {
    return {point_in_coordinates(system_, x, gradient), energy, gradient};
  }

  /// When the coordinates are made anew, the Hessian goes over at the last point, where old and new ones both exist.
  void renew_coordinates(const VECTOR& x) {
    if (!system_.remade_for(x)) return;
    const INTERNAL_COORDS::FRAME_T before = best_->frame;
    best_ = visited(best_->positions, best_->energy, best_->cartesian_gradient);
    hessian_ = hessian_in_new_coordinates(hessian_, before, best_->frame);
    observer_.coordinates_remade();
  }

  GRADIENTS::ENERGY_SURFACE_T& surface_;
  COORDINATE_SYSTEM_T& system_;
  const THRESHOLDS_T& thresholds_;
  const OPTIMIZER_SETTINGS_T& settings_;
  OPTIMIZER_OBSERVER_T& observer_;
  OPTIMIZATION_T result_;
  MATRIX hessian_;
  std::optional<VISITED_T> best_;  // where the next step starts
  double trust_ = TRUST_START;
  double limit_ = std::numeric_limits<double>::infinity();
};

}  // namespace

OPTIMIZATION_T minimize(GRADIENTS::ENERGY_SURFACE_T& surface, COORDINATE_SYSTEM_T& system, const MATRIX& hessian,
                        const THRESHOLDS_T& thresholds, const OPTIMIZER_SETTINGS_T& settings,
                        OPTIMIZER_OBSERVER_T& observer) {
  return MINIMIZER_T(surface, system, thresholds, settings, observer).run(hessian);
}

}  // namespace zentrix::OPTIMIZER

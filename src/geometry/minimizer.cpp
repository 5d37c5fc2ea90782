#include "geometry/minimizer.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "geometry/hessian_update.hpp"
#include "geometry/rfo_step.hpp"
#include "geometry/trust_radius.hpp"

namespace zentrix::OPTIMIZER {
namespace {

using INTERNAL_COORDS::frame_of;
using INTERNAL_COORDS::FRAME_T;

constexpr double RISE_TO_REJECT = 1e-3;  // hartree
constexpr double HELD_TOLERANCE = 1e-6;  // bohr, radian
constexpr double DEPENDENT_HOLD = 1e-6;  // share of a held coordinate that the others leave it

/// What is known of a geometry, in the present coordinates.
struct VISITED_T {
  VECTOR positions;
  double energy = 0.0;
  VECTOR cartesian_gradient;
  VECTOR values;
  VECTOR gradient;  // in the coordinates
  FRAME_T frame;
};

/// Directions in the space of independent coordinates: held ones and the correction they need, and the free rest.
struct SPLIT_T {
  VECTOR correction;   // rank
  MATRIX free;         // rank x number of free directions
  double error = 0.0;  // largest deviation from a target
};

double rms(const VECTOR& v) { return v.size() > 0 ? std::sqrt(v.squaredNorm() / static_cast<double>(v.size())) : 0.0; }
double largest(const VECTOR& v) { return v.size() > 0 ? v.lpNorm<Eigen::Infinity>() : 0.0; }

class MINIMIZER_T {
 public:
  MINIMIZER_T(GRADIENTS::ENERGY_SURFACE_T& surface, COORDINATE_SYSTEM_T& system, const THRESHOLDS_T& thresholds,
              const OPTIMIZER_SETTINGS_T& settings, OPTIMIZER_OBSERVER_T& observer)
      : surface_(surface), system_(system), thresholds_(thresholds), settings_(settings), observer_(observer) {}

  OPTIMIZATION_T run() {
    VECTOR x = GRADIENTS::positions_of(surface_.molecule());
    hessian_ = system_.model_hessian(x, settings_.initial_hessian);
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
    if (step > 1 && system_.remade_for(x)) carry_over_to_new_coordinates();
    VISITED_T here = visit(x);
    const VECTOR dq = best_ ? system_.difference(here.values, best_->values) : VECTOR::Zero(here.values.size());
    const STEP_ROW_T row = tell(step, here, dq);
    if (step == 1) {
      best_ = std::move(here);
      return true;
    }
    learn_from(here, dq);
    const double rise = here.energy - best_->energy;
    // The way to the targets of constraints may lead uphill.
    if (rise > RISE_TO_REJECT && split(*best_).error < HELD_TOLERANCE) {
      observer_.step_rejected(step, rise);
      limit_ = 0.5 * dq.norm();
      return true;
    }
    limit_ = std::numeric_limits<double>::infinity();
    const double error = split(here).error;
    best_ = std::move(here);
    if (!below_thresholds(row) || error >= HELD_TOLERANCE) return true;
    result_.outcome = OUTCOME::converged;
    return false;
  }

  VISITED_T visit(const VECTOR& x) const {
    VISITED_T here;
    here.positions = x;
    here.energy = result_.point.energy;
    here.cartesian_gradient = result_.point.gradient;
    express(here);
    return here;
  }

  /// Values, frame and gradient in the present coordinates.
  void express(VISITED_T& visited) const {
    visited.values = system_.values(visited.positions);
    visited.frame = frame_of(system_.b_matrix(visited.positions));
    visited.gradient = visited.frame.internal_gradient(visited.cartesian_gradient);
  }

  STEP_ROW_T tell(int step, const VISITED_T& here, const VECTOR& dq) {
    const SPLIT_T parts = split(here);
    VECTOR free_gradient = VECTOR::Zero(here.gradient.size());
    if (parts.free.cols() > 0) {
      const MATRIX free = here.frame.u * parts.free;
      free_gradient = free * (free.transpose() * here.gradient);
    }
    STEP_ROW_T row;
    row.step = step;
    row.energy = here.energy;
    row.energy_change = step > 1 ? here.energy - previous_energy_ : 0.0;
    row.max_gradient = largest(free_gradient);
    row.rms_gradient = rms(free_gradient);
    row.max_step = largest(dq);
    row.rms_step = rms(dq);
    previous_energy_ = here.energy;
    observer_.evaluated(row, here.cartesian_gradient);
    return row;
  }

  bool below_thresholds(const STEP_ROW_T& row) const {
    return row.max_gradient < thresholds_.max_gradient && row.rms_gradient < thresholds_.rms_gradient &&
           row.max_step < thresholds_.max_step && row.rms_step < thresholds_.rms_step;
  }

  /// Trust radius and Hessian from the step that was made.
  void learn_from(const VISITED_T& here, const VECTOR& dq) {
    const double predicted = best_->gradient.dot(dq) + 0.5 * dq.dot(hessian_ * dq);
    trust_ = next_trust(trust_, energy_ratio(here.energy - best_->energy, predicted));
    bfgs_update(hessian_, dq, here.gradient - best_->gradient);
  }

  SPLIT_T split(const VISITED_T& here) const {
    const std::vector<HELD_T> held = system_.held();
    const Eigen::Index rank = here.frame.u.cols();
    SPLIT_T parts;
    parts.correction = VECTOR::Zero(rank);
    parts.free = MATRIX::Identity(rank, rank);
    if (held.empty()) return parts;
    MATRIX directions(rank, static_cast<Eigen::Index>(held.size()));
    VECTOR target = here.values;
    for (std::size_t n = 0; n < held.size(); ++n) {
      directions.col(static_cast<Eigen::Index>(n)) = here.frame.u.row(held[n].index).transpose();
      target(held[n].index) = held[n].target;
    }
    const VECTOR differences = system_.difference(target, here.values);
    VECTOR wanted(directions.cols());
    for (std::size_t n = 0; n < held.size(); ++n) wanted(static_cast<Eigen::Index>(n)) = differences(held[n].index);
    parts.error = largest(wanted);
    Eigen::JacobiSVD<MATRIX> svd(directions, Eigen::ComputeFullU | Eigen::ComputeThinV);
    svd.setThreshold(DEPENDENT_HOLD);
    const Eigen::Index n_held = svd.rank();
    const VECTOR along =
        (svd.matrixV().leftCols(n_held).transpose() * wanted).cwiseQuotient(svd.singularValues().head(n_held));
    parts.correction = svd.matrixU().leftCols(n_held) * along;
    parts.free = svd.matrixU().rightCols(rank - n_held);
    return parts;
  }

  VECTOR next_positions() const {
    const SPLIT_T parts = split(*best_);
    const MATRIX& u = best_->frame.u;
    if (u.cols() == 0) return best_->positions;  // an atom
    const MATRIX h = u.transpose() * hessian_ * u;
    const VECTOR g = u.transpose() * best_->gradient + h * parts.correction;
    const RFO_STEP_T free =
        rfo_step(parts.free.transpose() * h * parts.free, parts.free.transpose() * g, std::min(trust_, limit_));
    return system_.displaced(best_->positions, u * (parts.correction + parts.free * free.step));
  }

  /// The Hessian goes over through its Cartesian form at the last point, where old and new coordinates both exist.
  void carry_over_to_new_coordinates() {
    constexpr double dependent = 0.1;  // constant of combinations that do not exist at this point but may at the next
    const MATRIX old_b = best_->frame.u * best_->frame.sigma.asDiagonal() * best_->frame.v.transpose();
    const MATRIX cartesian = old_b.transpose() * hessian_ * old_b;
    express(*best_);
    const FRAME_T& frame = best_->frame;
    const MATRIX complement = MATRIX::Identity(frame.u.rows(), frame.u.rows()) - frame.u * frame.u.transpose();
    const VECTOR scale = frame.sigma.cwiseInverse();
    const MATRIX independent = scale.asDiagonal() * (frame.v.transpose() * cartesian * frame.v) * scale.asDiagonal();
    hessian_ = frame.u * independent * frame.u.transpose() + dependent * complement;
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
  double previous_energy_ = 0.0;
  double trust_ = TRUST_START;
  double limit_ = std::numeric_limits<double>::infinity();
};

}  // namespace

OPTIMIZATION_T minimize(GRADIENTS::ENERGY_SURFACE_T& surface, COORDINATE_SYSTEM_T& system, const THRESHOLDS_T& thresholds,
                        const OPTIMIZER_SETTINGS_T& settings, OPTIMIZER_OBSERVER_T& observer) {
  return MINIMIZER_T(surface, system, thresholds, settings, observer).run();
}

}  // namespace zentrix::OPTIMIZER

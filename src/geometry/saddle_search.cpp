#include "geometry/saddle_search.hpp"

#include <cmath>
#include <optional>
#include <utility>

#include "geometry/coordinate_system.hpp"
#include "geometry/hessian_transform.hpp"
#include "geometry/hessian_update.hpp"
#include "geometry/prfo_step.hpp"
#include "geometry/saddle_trust.hpp"
#include "geometry/scaled_coordinates.hpp"
#include "linalg/lapack.hpp"
#include "report/stop.hpp"

namespace zentrix::TRANSITION_STATE {
namespace {

using namespace INTERNAL_COORDS;
using OPTIMIZER::COORDINATE_POINT_T;

/// Nearer (bohr or radian) to the lowest point along the mode to be climbed, a start does not tell which of the two ways up
/// is meant.
constexpr double AT_THE_BOTTOM = 0.5 * OPTIMIZER::SADDLE_TRUST_START;

/// The Hessian in the independent coordinates of a point.
struct MODES_T {
  VECTOR eigenvalues;  ///< ascending
  MATRIX vectors;      ///< columns, over all coordinates
};

MODES_T modes_of(const MATRIX& hessian, const FRAME_T& frame) {
  MODES_T modes;
  MATRIX independent = frame.u.transpose() * hessian * frame.u;
  MATRIX vectors;
  if (symmetric_eigen(independent, modes.eigenvalues, vectors) != 0)
    throw run_stopped(" *** FATAL: Diagonalization of the Hessian of the transition-state search failed.");
  modes.vectors = frame.u * vectors;
  return modes;
}

class SEARCH_T {
 public:
  SEARCH_T(GRADIENTS::ENERGY_SURFACE_T& surface, OPTIMIZER::COORDINATE_SYSTEM_T& system, const SADDLE_SETTINGS_T& settings,
           SADDLE_OBSERVER_T& observer)
      : surface_(surface), system_(system), settings_(settings), observer_(observer) {}

  SADDLE_POINT_T run(const MATRIX& cartesian_hessian) {
    VECTOR x = GRADIENTS::positions_of(surface_.molecule());
    result_.outcome = OUTCOME::step_limit;
    for (int step = 1; step <= settings_.max_steps; ++step) {
      observer_.evaluating(step, x);
      if (!evaluate(step, x)) break;
      const COORDINATE_POINT_T here = point_in_coordinates(system_, x, result_.point.gradient);
      if (step == 1 && !start(here, cartesian_hessian)) return result_;
      const VECTOR dq = last_ ? system_.difference(here.values, last_->values) : VECTOR::Zero(here.values.size());
      const bool turns = step == 2 && two_ways_up_ && step < settings_.max_steps && became_steeper(here, dq);
      const VECTOR turned_step = turns ? other_way(dq) : VECTOR();
      if (last_) learn_from(here, dq);
      const MODES_T modes = modes_of(hessian_, here.frame);
      follow(modes);
      const STEP_ROW_T row =
          OPTIMIZER::step_row(step, result_.point.energy, last_ ? result_.point.energy - last_energy_ : 0.0,
                              system_.unscaled_gradient(here.gradient), system_.unscaled_step(dq));
      observer_.evaluated(row, followed_);
      result_.negative_eigenvalues = static_cast<int>((modes.eigenvalues.array() < 0.0).count());
      if (turns) {
        observer_.turned();
        x = system_.displaced(last_->positions, turned_step);
        continue;
      }
      last_ = here;
      last_energy_ = result_.point.energy;
      if (step > 1 && OPTIMIZER::below(row, settings_.thresholds)) {
        result_.outcome = OUTCOME::converged;
        break;
      }
      if (step < settings_.max_steps) x = next_positions(here, modes);
    }
    observer_.finished(result_);
    return result_;
  }

 private:
  bool evaluate(int step, const VECTOR& x) {
    result_.steps = step;
    result_.positions = x;
    result_.point = surface_.energy_and_gradient(x);
    if (!result_.point.converged) {
      observer_.scf_failed(step);
      result_.outcome = OUTCOME::scf_failed;
      return false;
    }
    if (last_) renew_coordinates(x);
    return true;
  }

  /// When the coordinates are made anew, the Hessian goes over through its Cartesian form at the last point, where old and
  /// new ones both exist.
  void renew_coordinates(const VECTOR& x) {
    if (system_.suits(x)) return;
    const VECTOR cartesian_gradient =
        last_->frame.v * last_->frame.sigma.asDiagonal() * (last_->frame.u.transpose() * last_->gradient);
    const MATRIX cartesian = hessian_in_cartesian(system_, *last_, hessian_);
    const VECTOR motion = last_->frame.cartesian_step(followed_vector_);
    if (!system_.remade_for(x)) return;
    last_ = point_in_coordinates(system_, last_->positions, cartesian_gradient);
    hessian_ = hessian_in_coordinates(system_, *last_, cartesian);
    const VECTOR changes = last_->frame.u * (last_->frame.sigma.asDiagonal() * (last_->frame.v.transpose() * motion));
    followed_vector_ = changes.normalized();
    observer_.coordinates_remade();
  }

  /// Hessian and mode of the first point; false when the mode asked for does not exist.
  bool start(const COORDINATE_POINT_T& here, const MATRIX& cartesian_hessian) {
    hessian_ = hessian_in_coordinates(system_, here, cartesian_hessian);
    const MODES_T modes = modes_of(hessian_, here.frame);
    const auto n_modes = static_cast<int>(modes.eigenvalues.size());
    if (settings_.mode > n_modes || n_modes == 0) {
      observer_.mode_refused(settings_.mode, n_modes);
      result_.outcome = OUTCOME::refused;
      return false;
    }
    const int first = settings_.mode > 0 ? settings_.mode - 1 : 0;
    observer_.modes_known(modes.eigenvalues, first + 1);
    followed_vector_ = modes.vectors.col(first);
    followed_.eigenvalue = modes.eigenvalues(first);
    two_ways_up_ = followed_.eigenvalue > 0.0 && std::abs(to_the_bottom(here)) < AT_THE_BOTTOM;
    return true;
  }

  /// The Newton step along the followed mode.
  double to_the_bottom(const COORDINATE_POINT_T& here) const {
    return -followed_vector_.dot(here.gradient) / followed_.eigenvalue;
  }

  /// Whether the curvature along the followed mode grew on the step from the last point. Over a barrier it has to fall.
  bool became_steeper(const COORDINATE_POINT_T& here, const VECTOR& dq) const {
    const double length = followed_vector_.dot(dq);
    return followed_vector_.dot(here.gradient - last_->gradient) / length > followed_.eigenvalue;
  }

  /// A step from the last point as far up the other side of its valley.
  VECTOR other_way(const VECTOR& dq) const {
    return dq + (to_the_bottom(*last_) - 2.0 * followed_vector_.dot(dq)) * followed_vector_;
  }

  void follow(const MODES_T& modes) {
    followed_ = OPTIMIZER::follow_mode(modes.eigenvalues, modes.vectors, followed_vector_, followed_.eigenvalue);
    followed_vector_ = modes.vectors.col(followed_.mode - 1);
  }

  void learn_from(const COORDINATE_POINT_T& here, const VECTOR& dq) {
    const VECTOR change = here.gradient - last_->gradient;
    trust_ = OPTIMIZER::trust_after_step(trust_, dq.norm(), OPTIMIZER::gradient_miss(change, hessian_ * dq));
    OPTIMIZER::bofill_update(hessian_, dq, change);
  }

  VECTOR next_positions(const COORDINATE_POINT_T& here, const MODES_T& modes) const {
    const VECTOR gradient = modes.vectors.transpose() * here.gradient;
    const OPTIMIZER::PRFO_STEP_T step = OPTIMIZER::prfo_step(modes.eigenvalues, gradient, followed_.mode - 1, trust_);
    return system_.displaced(here.positions, modes.vectors * step.step);
  }

  GRADIENTS::ENERGY_SURFACE_T& surface_;
  OPTIMIZER::SCALED_SYSTEM_T system_;
  const SADDLE_SETTINGS_T& settings_;
  SADDLE_OBSERVER_T& observer_;
  SADDLE_POINT_T result_;
  MATRIX hessian_;
  std::optional<COORDINATE_POINT_T> last_;
  VECTOR followed_vector_;
  FOLLOWED_MODE_T followed_;
  bool two_ways_up_ = false;  ///< the start is the bottom of a valley, as far as the followed mode goes
  double last_energy_ = 0.0;
  double trust_ = OPTIMIZER::SADDLE_TRUST_START;
};

/// Internal coordinates serve when they see every vibration and the atoms are not on one line.
bool internals_serve(const COORDINATE_SET_T& set, const VECTOR& x) {
  constexpr Eigen::Index rigid_motions_in_space = 6;
  if (rigid_motions(x).cols() < rigid_motions_in_space) return false;
  return frame_of(wilson_b(set, x)).v.cols() >= x.size() - rigid_motions_in_space;
}

}  // namespace

SADDLE_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input) {
  SADDLE_SETTINGS_T settings;
  settings.max_steps = input.geom_maxiter;
  settings.mode = input.ts_mode;
  settings.force_cartesian = input.opt_coord == INPUT_PARSER::OPT_COORD::cartesian;
  return settings;
}

SADDLE_POINT_T find_saddle(GRADIENTS::ENERGY_SURFACE_T& surface, const MATRIX& hessian, const SADDLE_SETTINGS_T& settings,
                           SADDLE_OBSERVER_T& observer) {
  std::vector<int> z;
  for (const ATOM_T& atom : surface.molecule().atoms) z.push_back(atom.z);
  const VECTOR x = GRADIENTS::positions_of(surface.molecule());
  if (!settings.force_cartesian && z.size() > 2) {
    COORDINATE_SET_T set = generate_coordinates(z, x, FRAGMENT_LINKS::forming_bonds);
    if (set.bonds_truncated) observer.bonds_truncated();
    if (internals_serve(set, x)) {
      observer.coordinates_made(set);
      observer.started(true, settings.thresholds);
      OPTIMIZER::INTERNAL_SYSTEM_T system(z, std::move(set), {}, FRAGMENT_LINKS::forming_bonds);
      return SEARCH_T(surface, system, settings, observer).run(hessian);
    }
  }
  observer.started(false, settings.thresholds);
  OPTIMIZER::CARTESIAN_SYSTEM_T system(z);
  return SEARCH_T(surface, system, settings, observer).run(hessian);
}

}  // namespace zentrix::TRANSITION_STATE

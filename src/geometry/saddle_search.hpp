#pragma once

#include "geometry/mode_following.hpp"
#include "geometry/optimizer.hpp"

// Front door of the transition-state search: a first-order saddle point of an energy surface by partitioned
// rational-function steps with Bofill's update, in redundant internal coordinates, or in Cartesian ones for atoms on a line
// and systems too small for internals.

namespace zentrix::TRANSITION_STATE {

using OPTIMIZER::FOLLOWED_MODE_T;
using OPTIMIZER::OUTCOME;
using OPTIMIZER::STEP_ROW_T;
using OPTIMIZER::THRESHOLDS_T;

struct SADDLE_SETTINGS_T {
  int max_steps = 50;
  int mode = 0;  ///< eigenvector of the starting Hessian to follow, from 1 in ascending eigenvalue; 0: the lowest
  bool force_cartesian = false;
  THRESHOLDS_T thresholds;
};
SADDLE_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input);

struct SADDLE_POINT_T {
  OUTCOME outcome = OUTCOME::refused;
  int steps = 0;                     ///< evaluations of the surface
  VECTOR positions;                  ///< of the last evaluation, bohr
  GRADIENTS::SURFACE_POINT_T point;  ///< energy and gradient there
  int negative_eigenvalues = 0;      ///< of the final, updated Hessian
};

/// What a search tells while it goes on; this base says nothing.
class SADDLE_OBSERVER_T {
 public:
  virtual ~SADDLE_OBSERVER_T() = default;
  virtual void bonds_truncated() {}
  virtual void coordinates_made(const INTERNAL_COORDS::COORDINATE_SET_T&) {}
  virtual void started(bool /*internal*/, const THRESHOLDS_T&) {}
  /// Of the starting Hessian, ascending, once the first gradient is known; `followed` counts from 1.
  virtual void modes_known(const VECTOR& /*eigenvalues*/, int /*followed*/) {}
  virtual void mode_refused(int /*mode*/, int /*number of modes*/) {}
  /// Before the surface is asked.
  virtual void evaluating(int /*step*/, const VECTOR& /*positions*/) {}
  virtual void evaluated(const STEP_ROW_T&, const FOLLOWED_MODE_T&) {}
  virtual void coordinates_remade() {}
  /// The way out of a minimum became steeper; the other one is taken from the start.
  virtual void turned() {}
  virtual void scf_failed(int /*step*/) {}
  virtual void finished(const SADDLE_POINT_T&) {}
};

/// Searches from the positions of the surface's molecule. `hessian`: second derivatives of the energy there, 3 natom x 3
/// natom, hartree/bohr^2.
SADDLE_POINT_T find_saddle(GRADIENTS::ENERGY_SURFACE_T& surface, const MATRIX& hessian, const SADDLE_SETTINGS_T& settings,
                           SADDLE_OBSERVER_T& observer);

}  // namespace zentrix::TRANSITION_STATE

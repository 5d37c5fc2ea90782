#pragma once

#include <vector>

#include "geometry/internal_coords.hpp"
#include "geometry/step_row.hpp"
#include "gradients/energy_surface.hpp"
#include "input/input_data.hpp"

// Front door of the geometry optimisers: a minimum of an energy surface, in redundant internal coordinates (rational
// function steps) or in Cartesian ones.

namespace zentrix::OPTIMIZER {

struct OPTIMIZER_SETTINGS_T {
  int max_steps = 50;
  INPUT_PARSER::MODEL_HESSIAN initial_hessian = INPUT_PARSER::MODEL_HESSIAN::full;
  bool force_cartesian = false;
  double cartesian_max_gradient = 4.5e-4;  ///< of the Cartesian optimiser, which takes 2/3 of it as rms limit
  bool solvated = false;
  std::vector<INTERNAL_COORDS::CONSTRAINT_T> constraints;
};

OPTIMIZER_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input);

enum class OUTCOME { converged, step_limit, scf_failed, refused };

struct OPTIMIZATION_T {
  OUTCOME outcome = OUTCOME::refused;
  int steps = 0;                     ///< evaluations of the surface
  VECTOR positions;                  ///< of the last evaluation, bohr
  GRADIENTS::SURFACE_POINT_T point;  ///< energy and gradient there
};

enum class REFUSAL { constraints_need_internals, constraints_failed, solvated_cartesian };

/// What an optimisation tells while it goes on; this base says nothing.
class OPTIMIZER_OBSERVER_T {
 public:
  virtual ~OPTIMIZER_OBSERVER_T() = default;
  virtual void cartesian_forced() {}
  virtual void too_few_coordinates() {}
  virtual void bonds_truncated() {}
  virtual void coordinates_made(const INTERNAL_COORDS::COORDINATE_SET_T&) {}
  virtual void constraints_matched(const std::vector<INTERNAL_COORDS::CONSTRAINT_MATCH_T>&,
                                   const INTERNAL_COORDS::COORDINATE_SET_T&) {}
  virtual void refused(REFUSAL) {}
  virtual void started(bool /*internal*/, INPUT_PARSER::MODEL_HESSIAN, const THRESHOLDS_T&) {}
  /// Before the surface is asked.
  virtual void evaluating(int /*step*/, const VECTOR& /*positions*/) {}
  virtual void evaluated(const STEP_ROW_T&) {}
  virtual void step_rejected(int /*step*/, double /*rise*/) {}
  virtual void coordinates_remade() {}
  virtual void scf_failed(int /*step*/) {}
  virtual void finished(const OPTIMIZATION_T&) {}
};

/// Minimises the energy from the positions of the surface's molecule. Chooses the coordinates: Cartesian when asked for,
/// with fewer than three atoms, or when the internal coordinates do not span all vibrations; otherwise redundant internals.
OPTIMIZATION_T optimize(GRADIENTS::ENERGY_SURFACE_T& surface, const OPTIMIZER_SETTINGS_T& settings,
                        OPTIMIZER_OBSERVER_T& observer);

}  // namespace zentrix::OPTIMIZER

#pragma once

#include "geometry/coordinate_system.hpp"
#include "geometry/optimizer.hpp"

namespace zentrix::OPTIMIZER {

/// The loop of both optimisers: energy and gradient, convergence test, trust radius, BFGS update, rational-function step
/// with the held coordinates projected out, displacement.
///
/// A step that raised the energy by more than 1e-3 hartree is taken back: the next one starts from the better point with the
/// smaller trust radius, at most half as long, and with what the failed step taught the Hessian. `hessian`: the one to start
/// from, in the coordinates of the system.
OPTIMIZATION_T minimize(GRADIENTS::ENERGY_SURFACE_T& surface, COORDINATE_SYSTEM_T& system, const MATRIX& hessian,
                        const THRESHOLDS_T& thresholds, const OPTIMIZER_SETTINGS_T& settings,
                        OPTIMIZER_OBSERVER_T& observer);

}  // namespace zentrix::OPTIMIZER

#include "hessian/numerical_hessian.hpp"

#include <algorithm>

#include "integrals/boys.hpp"
#include "report/timing.hpp"

namespace zentrix::HESSIAN {
namespace {

/// Gradient with one coordinate displaced.
VECTOR displaced_gradient(GRADIENTS::ENERGY_SURFACE_T& surface, const VECTOR& reference, Eigen::Index coordinate,
                          double step, int& unconverged) {
  VECTOR positions = reference;
  positions(coordinate) += step;
  const GRADIENTS::SURFACE_POINT_T point = surface.energy_and_gradient(positions);
  if (!point.converged) ++unconverged;
  return point.gradient;
}

}  // namespace

NUMERICAL_HESSIAN_T numerical_hessian(GRADIENTS::ENERGY_SURFACE_T& surface, HESSIAN_OBSERVER_T& observer) {
  const STAGE_TIMER timer(STAGE::hessian);
  const BOYS::PRECISE_MODE_GUARD boys_mode;
  const VECTOR reference = GRADIENTS::positions_of(surface.molecule());
  const Eigen::Index n = reference.size();
  const auto dimension = static_cast<int>(n);
  NUMERICAL_HESSIAN_T result;
  observer.begins(dimension);
  observer.reference_begins();
  const GRADIENTS::SURFACE_POINT_T point = surface.energy_and_gradient(reference);
  surface.hold_start();
  result.energy = point.energy;
  result.gradient = point.gradient;
  result.unconverged = point.converged ? 0 : 1;
  observer.reference_ends(point.energy);
  result.hessian.resize(n, n);
  for (Eigen::Index k = 0; k < n; ++k) {
    const VECTOR forward = displaced_gradient(surface, reference, k, DIFFERENCE_STEP, result.unconverged);
    const VECTOR backward = displaced_gradient(surface, reference, k, -DIFFERENCE_STEP, result.unconverged);
    result.hessian.col(k) = (forward - backward) / (2.0 * DIFFERENCE_STEP);
    observer.coordinate_done(static_cast<int>(k) + 1, dimension);
  }
  observer.complete();
  result.hessian = (0.5 * (result.hessian + result.hessian.transpose())).eval();
  return result;
}

INPUT_PARSER::INPUT_DATA_T settings_for_differences(const INPUT_PARSER::INPUT_DATA_T& input) {
  INPUT_PARSER::INPUT_DATA_T settings = input;
  settings.scf_etol = std::min(input.scf_etol, 1e-9);
  settings.scf_ptol = std::min(input.scf_ptol, 1e-7);
  settings.scf_gtol = std::min(input.scf_gtol, 1e-7);
  // Iterations beyond the tolerances guard against rough guesses; these runs start next to their solution.
  const INPUT_PARSER::INPUT_DATA_T usual;
  if (input.scf_min_iter <= usual.scf_min_iter) settings.scf_min_iter = 1;
  if (input.scf_n_converged <= usual.scf_n_converged) settings.scf_n_converged = 1;
  return settings;
}

}  // namespace zentrix::HESSIAN

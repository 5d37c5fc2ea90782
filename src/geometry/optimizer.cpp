#include "geometry/optimizer.hpp"

#include <utility>

#include "geometry/coordinate_system.hpp"
#include "geometry/minimizer.hpp"

namespace zentrix::OPTIMIZER {
namespace {

using namespace INTERNAL_COORDS;

OPTIMIZATION_T refusal(REFUSAL reason, OPTIMIZER_OBSERVER_T& observer) {
  observer.refused(reason);
  return {};
}

OPTIMIZATION_T optimize_cartesian(GRADIENTS::ENERGY_SURFACE_T& surface, const std::vector<int>& z,
                                  const OPTIMIZER_SETTINGS_T& settings, OPTIMIZER_OBSERVER_T& observer) {
  if (!settings.constraints.empty()) return refusal(REFUSAL::constraints_need_internals, observer);
  if (settings.solvated) return refusal(REFUSAL::solvated_cartesian, observer);
  THRESHOLDS_T thresholds;
  thresholds.max_gradient = settings.cartesian_max_gradient;
  thresholds.rms_gradient = settings.cartesian_max_gradient * 2.0 / 3.0;
  observer.started(false, settings.initial_hessian, thresholds);
  CARTESIAN_SYSTEM_T system(z);
  const MATRIX start = system.model_hessian(GRADIENTS::positions_of(surface.molecule()), settings.initial_hessian);
  return minimize(surface, system, start, thresholds, settings, observer);
}

/// Whether the coordinates see every vibration. The plain count is tested first: it is the better-known condition.
bool enough(const COORDINATE_SET_T& set, const VECTOR& x) {
  const Eigen::Index vibrations = x.size() - rigid_motions(x).cols();
  return static_cast<Eigen::Index>(set.coordinates.size()) >= vibrations &&
         frame_of(wilson_b(set, x)).v.cols() >= vibrations;
}

}  // namespace

OPTIMIZER_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input) {
  OPTIMIZER_SETTINGS_T settings;
  settings.max_steps = input.geom_maxiter;
  settings.initial_hessian = input.initial_hess;
  settings.force_cartesian = input.opt_coord == INPUT_PARSER::OPT_COORD::cartesian;
  settings.cartesian_max_gradient = input.grad_tol;
  settings.solvated = input.solvated();
  for (const INPUT_PARSER::CONSTRAINT_T& entry : input.constraints)
    settings.constraints.push_back({entry.kind, entry.atoms, std::nullopt});
  return settings;
}

OPTIMIZATION_T optimize(GRADIENTS::ENERGY_SURFACE_T& surface, const OPTIMIZER_SETTINGS_T& settings,
                        OPTIMIZER_OBSERVER_T& observer) {
  const MOLECULE_T& molecule = surface.molecule();
  std::vector<int> z;
  for (const ATOM_T& atom : molecule.atoms) z.push_back(atom.z);
  if (settings.force_cartesian) observer.cartesian_forced();
  if (settings.force_cartesian || z.size() < 3) return optimize_cartesian(surface, z, settings, observer);

  const VECTOR x = GRADIENTS::positions_of(molecule);
  COORDINATE_SET_T set = generate_coordinates(z, x);
  if (set.bonds_truncated) observer.bonds_truncated();
  if (!enough(set, x)) {
    observer.too_few_coordinates();
    return optimize_cartesian(surface, z, settings, observer);
  }
  std::vector<CONSTRAINT_T> constraints = settings.constraints;
  if (!constraints.empty()) {
    std::vector<CONSTRAINT_MATCH_T> matches;
    const int status = apply_constraints(constraints, x, set, matches);
    observer.constraints_matched(matches, set);
    if (status != 0) return refusal(REFUSAL::constraints_failed, observer);
    for (std::size_t n = 0; n < constraints.size(); ++n) constraints[n].target = matches[n].value;
  }
  observer.coordinates_made(set);
  const THRESHOLDS_T thresholds;
  observer.started(true, settings.initial_hessian, thresholds);
  INTERNAL_SYSTEM_T system(z, std::move(set), std::move(constraints));
  return minimize(surface, system, system.model_hessian(x, settings.initial_hessian), thresholds, settings, observer);
}

}  // namespace zentrix::OPTIMIZER

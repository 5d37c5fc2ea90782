#include "gradients/scf_surface.hpp"

#include <memory>
#include <ostream>
#include <utility>

#include "gradients/gradient_report.hpp"
#include "gradients/scf_gradient.hpp"
#include "report/timing.hpp"
#include "scf/scf_run.hpp"

namespace zentrix::GRADIENTS {
namespace {

constexpr double same_position = 1e-10;  // bohr

}  // namespace

SCF_SURFACE_T::SCF_SURFACE_T(const INPUT_PARSER::INPUT_DATA_T& input, const DFT::FUNCTIONAL_T& functional,
                             const MOLECULE_T& molecule, std::ostream* report)
    : input_(input), functional_(functional), molecule_(molecule), report_(report) {}

void SCF_SURFACE_T::hold_start() {
  start_held_ = true;
  held_positions_ = positions_;
}

SCF::SPIN_MATRICES_T SCF_SURFACE_T::starting_densities(const CARTESIAN_T& positions) const {
  const bool known = start_held_ && scf_.converged && previous_densities_.size() == scf_.channels.size();
  if (!known || held_positions_.size() != positions.size()) return previous_densities_;
  if ((positions + positions_ - 2.0 * held_positions_).cwiseAbs().maxCoeff() > same_position) return previous_densities_;
  SCF::SPIN_MATRICES_T densities;
  for (std::size_t s = 0; s < scf_.channels.size(); ++s) {
    densities.emplace_back(2.0 * previous_densities_[s] - scf_.channels[s].density);
  }
  return densities;
}

void SCF_SURFACE_T::run_scf(const CARTESIAN_T& positions) {
  const MOLECULE_T there = moved(molecule_, positions);
  INTEGRALS_1E::ONE_ELECTRON_T one_electron;
  {
    const STAGE_TIMER timer(STAGE::integrals_1e);
    one_electron = INTEGRALS_1E::one_electron_matrices(there);
  }
  {
    const STAGE_TIMER timer(STAGE::integrals_2e);
    geometry_ = std::make_unique<SCF::GEOMETRY_DATA_T>(there, std::move(one_electron));
  }
  const SCF::SPIN_MATRICES_T start = starting_densities(positions);
  if (!functional_.is_hartree_fock()) SCF::set_up_grid(*geometry_, input_, report_);
  scf_ = SCF::run_method(*geometry_, functional_, input_, start, report_);
  positions_ = positions;
  if (!scf_.converged || start_held_) return;
  previous_densities_ = scf_.densities();
}

SURFACE_POINT_T SCF_SURFACE_T::energy(const CARTESIAN_T& positions) {
  run_scf(positions);
  SURFACE_POINT_T point{scf_.energy.total(), {}, scf_.converged};
  for (const NUCLEAR_TERM_T* term : terms_) {
    const double part = term->energy(positions);
    if (report_ != nullptr) print_nuclear_term(*term, part, *report_);
    point.energy += part;
  }
  return point;
}

void SCF_SURFACE_T::add_terms(const CARTESIAN_T& positions, GRADIENT_OBSERVER_T& observer, SURFACE_POINT_T& point) const {
  CARTESIAN_T gradient;
  for (const NUCLEAR_TERM_T* term : terms_) {
    observer.nuclear_term_begins(term->name());
    point.energy += term->energy_and_gradient(positions, gradient);
    point.gradient += gradient;
  }
}

SURFACE_POINT_T SCF_SURFACE_T::energy_and_gradient(const CARTESIAN_T& positions) {
  auto observer = std::make_unique<GRADIENT_OBSERVER_T>();
  if (report_ != nullptr) observer = std::make_unique<GRADIENT_PRINTER_T>(*report_);
  observer->scf_begins(molecule_.unrestricted);
  run_scf(positions);
  observer->scf_ends(scf_);
  SURFACE_POINT_T point{scf_.energy.total(), {}, scf_.converged};
  point.gradient = input_.semi_analytical_gradient ? semi_analytical_gradient(*geometry_, functional_, scf_, *observer)
                                                   : scf_gradient(*geometry_, functional_, scf_, *observer).total();
  add_terms(positions, *observer, point);
  if (report_ != nullptr && input_.print_grad) print_wanted_gradient(molecule_, point.gradient, *report_);
  return point;
}

}  // namespace zentrix::GRADIENTS

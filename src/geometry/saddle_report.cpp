#include "geometry/saddle_report.hpp"

#include <fmt/ostream.h>

#include <algorithm>

#include "geometry/internal_coords_report.hpp"
#include "geometry/positions_report.hpp"

namespace zentrix::TRANSITION_STATE {
namespace {

const std::string rule = "   " + std::string(96, '=');
constexpr auto table_header =
    "   Step        Energy       dE       max|g|    rms(g)    max|dx|   rms(dx)  Mode  Eigenvalue  Overlap\n";
constexpr int eigenvalues_shown = 5;

}  // namespace

SADDLE_PRINTER_T::SADDLE_PRINTER_T(const MOLECULE_T& molecule, std::ostream& report)
    : symbols_(INTERNAL_COORDS::symbols_of(molecule)), report_(report) {}

void SADDLE_PRINTER_T::bonds_truncated() { INTERNAL_COORDS::print_bonds_truncated(report_); }

void SADDLE_PRINTER_T::coordinates_made(const INTERNAL_COORDS::COORDINATE_SET_T& set) {
  INTERNAL_COORDS::print_summary(set, report_);
}

void SADDLE_PRINTER_T::started(bool internal, const THRESHOLDS_T& thresholds) {
  fmt::print(report_, "\n{}\n   Transition-State Search (P-RFO / {} Coordinates)\n{}\n", rule,
             internal ? "Internal" : "Cartesian", rule);
  fmt::print(report_, "                                     max|g|    rms(g)    max|dx|   rms(dx)\n");
  fmt::print(report_, "   Convergence when below:       {:10.6f}{:10.6f}{:11.6f}{:10.6f}\n", thresholds.max_gradient,
             thresholds.rms_gradient, thresholds.max_step, thresholds.rms_step);
  const char* length = internal ? "bohr or radian" : "bohr";
  fmt::print(report_, "   Energies in hartree, gradients g in hartree per {0}, steps dx in {0}.\n", length);
}

void SADDLE_PRINTER_T::modes_known(const VECTOR& eigenvalues, int followed) {
  fmt::print(report_, "\n   Lowest eigenvalues of the starting Hessian (hartree per squared bohr or radian):\n");
  for (Eigen::Index k = 0; k < std::min<Eigen::Index>(eigenvalues.size(), std::max(followed, eigenvalues_shown)); ++k)
    fmt::print(report_, "     mode {:3d}: {:12.6f}{}\n", k + 1, eigenvalues(k), k + 1 == followed ? "  followed" : "");
}

void SADDLE_PRINTER_T::mode_refused(int mode, int n_modes) {
  if (n_modes == 0) {
    fmt::print(report_, " *** ERROR: a single atom has no vibration to follow to a transition state.\n");
  } else {
    fmt::print(report_, " *** ERROR: %ts_mode {} does not exist; the molecule has {} mode(s).\n", mode, n_modes);
  }
}

void SADDLE_PRINTER_T::evaluating(int step, const VECTOR& positions) {
  fmt::print(report_, "\n   Geometry of step {} (Angstrom):\n", step);
  INTERNAL_COORDS::print_positions(symbols_, positions, report_);
}

void SADDLE_PRINTER_T::evaluated(const STEP_ROW_T& row, const FOLLOWED_MODE_T& followed) {
  fmt::print(report_, "\n{}", table_header);
  fmt::print(report_, "{:7d}{:15.8f}{:10.2e}{:11.6f}{:10.6f}{:11.6f}{:10.6f}{:6d}{:12.6f}{:9.4f}\n", row.step, row.energy,
             row.energy_change, row.max_gradient, row.rms_gradient, row.max_step, row.rms_step, followed.mode,
             followed.eigenvalue, followed.overlap);
}

void SADDLE_PRINTER_T::coordinates_remade() { INTERNAL_COORDS::print_remade(report_); }

void SADDLE_PRINTER_T::turned() {
  fmt::print(report_, "   The way up became steeper: back to the start and up the other way.\n");
}

void SADDLE_PRINTER_T::scf_failed(int step) { fmt::print(report_, "   *** SCF did not converge at step {}\n", step); }

void SADDLE_PRINTER_T::finished(const SADDLE_POINT_T& result) {
  const bool converged = result.outcome == OUTCOME::converged;
  if (converged) {
    fmt::print(report_, "\n   Transition-state search converged in {} steps.\n", result.steps);
  } else {
    fmt::print(report_, "\n   *** Transition-state search NOT converged after {} steps!\n", result.steps);
  }
  fmt::print(report_, "   Final energy: {:18.10f}\n", result.point.energy);
  fmt::print(report_, "   Negative eigenvalues of the updated Hessian: {}\n", result.negative_eigenvalues);
  if (converged && result.negative_eigenvalues != 1) {
    fmt::print(report_, "   *** WARNING: a transition state has exactly one; check the structure with %job freq.\n");
  }
  fmt::print(report_, "\n   {} (Angstrom):\n", converged ? "Transition-state geometry" : "Last geometry");
  INTERNAL_COORDS::print_positions(symbols_, result.positions, report_);
}

}  // namespace zentrix::TRANSITION_STATE

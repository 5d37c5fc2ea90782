#include "geometry/optimizer_report.hpp"

#include <fmt/ostream.h>

#include <string>

#include "geometry/internal_coords_report.hpp"
#include "geometry/positions_report.hpp"
#include "geometry/zmatrix_values.hpp"
#include "report/layout.hpp"

namespace zentrix::OPTIMIZER {
namespace {

const std::string rule = "   " + std::string(73, '=');
constexpr auto table_header = "   Step        Energy       dE       max|g|    rms(g)    max|dx|   rms(dx)\n";

}  // namespace

OPTIMIZER_PRINTER_T::OPTIMIZER_PRINTER_T(const MOLECULE_T& molecule, std::vector<INPUT_PARSER::ZMATRIX_ROW_T> zmatrix,
                                         std::ostream& report)
    : symbols_(INTERNAL_COORDS::symbols_of(molecule)), zmatrix_(std::move(zmatrix)), report_(report) {}

void OPTIMIZER_PRINTER_T::cartesian_forced() {
  fmt::print(report_, "   %opt_coord cart: forcing Cartesian-BFGS optimizer (skipping internals).\n");
}

void OPTIMIZER_PRINTER_T::too_few_coordinates() {
  fmt::print(report_, "   Too few internal coordinates, falling back to Cartesian BFGS\n");
}

void OPTIMIZER_PRINTER_T::bonds_truncated() { INTERNAL_COORDS::print_bonds_truncated(report_); }

void OPTIMIZER_PRINTER_T::coordinates_made(const INTERNAL_COORDS::COORDINATE_SET_T& set) {
  INTERNAL_COORDS::print_summary(set, report_);
}

void OPTIMIZER_PRINTER_T::constraints_matched(const std::vector<INTERNAL_COORDS::CONSTRAINT_MATCH_T>& matches,
                                              const INTERNAL_COORDS::COORDINATE_SET_T& set) {
  INTERNAL_COORDS::print_constraint_matching(matches, set, report_);
}

void OPTIMIZER_PRINTER_T::refused(REFUSAL reason) {
  switch (reason) {
    case REFUSAL::constraints_need_internals:
      fmt::print(report_, " *** ERROR: %constrain is only supported on the internal-coordinate optimizer.\n");
      fmt::print(report_, "            For diatomics or systems too small for redundant internals,\n");
      fmt::print(report_, "            use a Z-matrix scan instead (%job scan).\n");
      break;
    case REFUSAL::constraints_failed:
      fmt::print(report_, " *** ERROR: failed to apply geometry constraints; aborting optimization.\n");
      break;
    case REFUSAL::solvated_cartesian:
      fmt::print(report_, " *** PCM ERROR: PCM with the Cartesian-BFGS optimizer is\n");
      fmt::print(report_, "     not supported in v0.74.x.  This path is taken only for\n");
      fmt::print(report_, "     molecules too small for internal coordinates (<= 2 atoms).\n");
      fmt::print(report_, "     Use a larger system, or remove %solvent / %eps / %pcm.\n");
      break;
  }
}

void OPTIMIZER_PRINTER_T::started(bool internal, INPUT_PARSER::MODEL_HESSIAN model, const THRESHOLDS_T& thresholds) {
  fmt::print(report_, "\n{}\n   Geometry Optimization ({})\n{}\n", rule,
             internal ? "RFO / Internal Coordinates" : "BFGS / Cartesian Coordinates", rule);
  if (model == INPUT_PARSER::MODEL_HESSIAN::diag) {
    fmt::print(report_, "   Initial Hessian: Lindh diagonal model\n");
  } else {
    fmt::print(report_, "   Initial Hessian: Almloef coupled model (off-diagonal force constants)\n");
  }
  fmt::print(report_, "                                     max|g|    rms(g)    max|dx|   rms(dx)\n");
  fmt::print(report_, "   Convergence when below:       {:10.6f}{:10.6f}{:11.6f}{:10.6f}\n", thresholds.max_gradient,
             thresholds.rms_gradient, thresholds.max_step, thresholds.rms_step);
}

void OPTIMIZER_PRINTER_T::evaluating(int step, const VECTOR& positions) {
  fmt::print(report_, "\n   Geometry of step {} (Angstrom):\n", step);
  print_geometry(positions);
}

void OPTIMIZER_PRINTER_T::evaluated(const STEP_ROW_T& row) {
  fmt::print(report_, "\n{}", table_header);
  fmt::print(report_, "{:7d}{:15.8f}{:10.2e}{:11.6f}{:10.6f}{:11.6f}{:10.6f}\n", row.step, row.energy, row.energy_change,
             row.max_gradient, row.rms_gradient, row.max_step, row.rms_step);
}

void OPTIMIZER_PRINTER_T::step_rejected(int step, double rise) {
  fmt::print(report_, "   Step {} raised the energy by {:.2e} hartree: taken back, with a smaller trust radius.\n", step,
             rise);
}

void OPTIMIZER_PRINTER_T::coordinates_remade() { INTERNAL_COORDS::print_remade(report_); }

void OPTIMIZER_PRINTER_T::scf_failed(int step) { fmt::print(report_, "   *** SCF did not converge at step {}\n", step); }

void OPTIMIZER_PRINTER_T::finished(const OPTIMIZATION_T& result) {
  if (result.outcome == OUTCOME::converged) {
    fmt::print(report_, "\n   Optimization converged in {} steps.\n", result.steps);
  } else {
    fmt::print(report_, "\n   *** Optimization NOT converged after {} steps!\n", result.steps);
  }
  fmt::print(report_, "   Final energy: {:18.10f}\n", result.point.energy);
  fmt::print(report_, "\n   {} (Angstrom):\n",
             result.outcome == OUTCOME::converged ? "Optimized geometry" : "Last geometry");
  print_geometry(result.positions);
  if (!zmatrix_.empty()) print_zmatrix(result.positions);
}

void OPTIMIZER_PRINTER_T::print_geometry(const VECTOR& positions) const {
  INTERNAL_COORDS::print_positions(symbols_, positions, report_);
}

void OPTIMIZER_PRINTER_T::print_zmatrix(const VECTOR& positions) const {
  fmt::print(report_, "\n   Optimized Z-matrix:\n");
  for (const INPUT_PARSER::ZMATRIX_ROW_T& row : zmatrix_at(zmatrix_, positions)) {
    fmt::print(report_, "     {:<5}", row.token);
    if (row.bond_atom > 0) fmt::print(report_, " {:4d} {:12.8f}", row.bond_atom, row.bond);
    if (row.angle_atom > 0) fmt::print(report_, " {:4d} {:12.6f}", row.angle_atom, row.angle);
    if (row.dihedral_atom > 0)
      fmt::print(report_, " {:4d} {:12.6f}", row.dihedral_atom, without_minus_zero(row.dihedral, 6));
    fmt::print(report_, "\n");
  }
}

}  // namespace zentrix::OPTIMIZER

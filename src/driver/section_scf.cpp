#include <fmt/ostream.h>

#include <utility>

#include "driver/interrupts.hpp"
#include "driver/sections.hpp"
#include "report/layout.hpp"
#include "report/timing.hpp"
#include "scf/scf_report.hpp"

namespace zentrix {
namespace {

/// Shell pairs and Schwarz bounds of the geometry; the one-electron matrices move in.
void set_up_geometry(RUN_T& run) {
  const STAGE_TIMER timer(STAGE::integrals_2e);
  run.geometry = std::make_unique<SCF::GEOMETRY_DATA_T>(run.molecule, std::move(run.one_electron));
}

void set_up_grid(RUN_T& run, std::ostream& report) {
  fmt::print(report, "\n --- Building DFT integration grid ---\n");
  const STAGE_TIMER timer(STAGE::grid);
  run.geometry->grid = DFT_GRID::build_grid(run.molecule, DFT_GRID::grid_level_number(run.input.grid), report);
  DFT_GRID::print_grid(run.geometry->grid, report);
}

SCF::SCF_RESULT_T run_functional(RUN_T& run, const DFT::FUNCTIONAL_T& functional, const SCF::SCF_START_T& start,
                                 std::ostream& report) {
  const auto terms = SCF::energy_terms(*run.geometry, functional, run.input.eri_memory_limit_mb);
  SCF::SCF_PRINTER_T printer(report, functional.is_hartree_fock() ? "" : functional.name);
  return SCF::run_scf(*run.geometry, terms, SCF::settings_from(run.input), start, printer);
}

/// Meta-GGAs converge poorly from a rough guess: a PBE density is a better start.
SCF::SCF_START_T pre_converge(RUN_T& run, const SCF::SCF_START_T& guess, std::ostream& report) {
  fmt::print(report, "   meta-GGA: PBE pre-converge for initial guess\n");
  DFT::FUNCTIONAL_T pbe;
  if (DFT::set_up_functional("PBE", pbe, report) != 0) return guess;
  const SCF::SCF_RESULT_T result = run_functional(run, pbe, guess, report);
  if (result.converged) {
    fmt::print(report, "   PBE pre-converged, E = {:.10f}\n", result.energy.total());
  } else {
    fmt::print(report, "   PBE pre-converge: not fully converged, using best density\n");
  }
  fmt::print(report, "   Starting meta-GGA SCF with PBE density...\n");
  SCF::SCF_START_T start;
  start.densities = {result.channels[0].density};
  start.guess_name = "PBE pre-converged density";
  start.from_converged_run = true;
  return start;
}

void print_guess(const SCF::SCF_START_T& start, std::ostream& report) {
  fmt::print(report, "   Initial guess:             {}\n", start.guess_name);
}

}  // namespace

int section_scf(RUN_T& run, std::ostream& report) {
  set_up_geometry(run);
  if (!run.functional.is_hartree_fock()) {
    set_run_phase("construction of the integration grid");
    set_up_grid(run, report);
  }
  set_run_phase("Section 3 (SCF)");
  print_section_heading("3", "SCF", report);
  SCF::GUESS_PRINTER_T guess_printer(report);
  SCF::SCF_START_T start =
      SCF::initial_guess(run.molecule, run.geometry->one_electron.s, run.input.initial_guess, guess_printer);
  print_guess(start, report);
  if (run.functional.functional_class == DFT::FUNCTIONAL_CLASS::meta_gga && !run.molecule.unrestricted) {
    start = pre_converge(run, start, report);
    print_guess(start, report);
  }
  run.scf = run_functional(run, run.functional, start, report);
  if (!run.scf.converged) run.converged = false;
  return 0;
}

}  // namespace zentrix

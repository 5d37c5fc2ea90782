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

}  // namespace

int section_scf(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 3 (SCF)");
  print_section_heading("3", "SCF", report);
  set_up_geometry(run);
  SCF::GUESS_PRINTER_T guess_printer(report);
  const SCF::SCF_START_T start =
      SCF::initial_guess(run.molecule, run.geometry->one_electron.s, run.input.initial_guess, guess_printer);
  fmt::print(report, "   Initial guess:             {}\n", start.guess_name);
  const auto terms = SCF::hartree_fock_terms(*run.geometry);
  SCF::SCF_PRINTER_T printer(report);
  run.scf = SCF::run_scf(*run.geometry, terms, SCF::settings_from(run.input), start, printer);
  if (!run.scf.converged) run.converged = false;
  return 0;
}

}  // namespace zentrix

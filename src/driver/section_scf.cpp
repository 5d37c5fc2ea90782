#include <fmt/ostream.h>

#include <utility>

#include "correlation/mp2_report.hpp"
#include "correlation/mp2_run.hpp"
#include "driver/interrupts.hpp"
#include "driver/sections.hpp"
#include "report/layout.hpp"
#include "report/timing.hpp"
#include "scf/scf_run.hpp"

namespace zentrix {
namespace {

/// Shell pairs and Schwarz bounds of the geometry; the one-electron matrices move in.
void set_up_geometry(RUN_T& run) {
  const STAGE_TIMER timer(STAGE::integrals_2e);
  run.geometry = std::make_unique<SCF::GEOMETRY_DATA_T>(run.molecule, std::move(run.one_electron));
}

void add_correlation(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 3 (correlation energy)");
  CORRELATION::print_heading(run.scf.unrestricted(), report);
  run.mp2 = CORRELATION::run_mp2(*run.geometry, run.scf, run.input, &report);
  CORRELATION::print_energies(*run.mp2, run.scf.energy.total(), report);
}

}  // namespace

int section_scf(RUN_T& run, std::ostream& report) {
  set_up_geometry(run);
  if (!run.functional.is_hartree_fock()) {
    set_run_phase("construction of the integration grid");
    SCF::set_up_grid(*run.geometry, run.input, &report);
  }
  set_run_phase("Section 3 (SCF)");
  print_section_heading("3", "SCF", report);
  run.scf = SCF::run_method(*run.geometry, run.functional, run.input, {}, &report);
  if (!run.scf.converged) run.converged = false;
  if (run.functional.is_mp2()) add_correlation(run, report);
  return 0;
}

}  // namespace zentrix

#include <cstdlib>

#include "driver/driver_report.hpp"
#include "driver/interrupts.hpp"
#include "driver/sections.hpp"
#include "integrals/one_electron.hpp"
#include "report/layout.hpp"
#include "report/timing.hpp"

namespace zentrix {
namespace {

/// Whole matrices go to the report only when the environment asks for them: they would bury everything else.
bool matrices_wanted() {
  const char* value = std::getenv("ZENTRIX_PRINT_MATRICES");
  return value != nullptr && *value != '\0';
}

void print_matrices(const INTEGRALS_1E::ONE_ELECTRON_T& one_electron, std::ostream& report) {
  INTEGRALS_1E::print_matrix("S (overlap)", one_electron.s, report);
  INTEGRALS_1E::print_matrix("T (kinetic)", one_electron.t, report);
  INTEGRALS_1E::print_matrix("V (nuclear)", one_electron.v, report);
  INTEGRALS_1E::print_matrix("H_core (T+V)", one_electron.h_core, report);
}

}  // namespace

int section_one_electron(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 2 (one-electron integrals)");
  print_section_heading("2", "One-Electron Integrals", report);
  {
    const STAGE_TIMER timer(STAGE::integrals_1e);
    run.one_electron = INTEGRALS_1E::compute_one_electron(run.molecule, report);
  }
  if (matrices_wanted()) print_matrices(run.one_electron, report);
  print_section_end("Section 2 complete. S, T, V, H_core computed.", 2, timer_wall(STAGE::integrals_1e), report);
  return 0;
}

}  // namespace zentrix

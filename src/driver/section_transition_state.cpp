#include <fmt/ostream.h>

#include "driver/driver_report.hpp"
#include "driver/interrupts.hpp"
#include "driver/method_surface.hpp"
#include "driver/moving_geometry.hpp"
#include "driver/run_hessian.hpp"
#include "driver/sections.hpp"
#include "geometry/internal_coords.hpp"
#include "geometry/positions_report.hpp"
#include "geometry/saddle_report.hpp"
#include "geometry/saddle_search.hpp"
#include "hessian/vibration_report.hpp"
#include "report/layout.hpp"
#include "report/timing.hpp"

namespace zentrix {
namespace {

/// Whether the molecule has the mode that is to be followed: better known before the Hessian is computed than after.
bool mode_exists(const RUN_T& run, std::ostream& report) {
  const VECTOR positions = GRADIENTS::positions_of(run.molecule);
  const auto n_modes = static_cast<int>(positions.size() - INTERNAL_COORDS::rigid_motions(positions).cols());
  if (n_modes > 0 && run.input.ts_mode <= n_modes) return true;
  TRANSITION_STATE::SADDLE_PRINTER_T(run.molecule, report).mode_refused(run.input.ts_mode, n_modes);
  return false;
}

/// The Hessian the search starts from.
[[nodiscard]] int starting_hessian(RUN_T& run, HESSIAN::HESSIAN_FILE_T& hessian, std::ostream& report) {
  if (!run.input.read_hess.empty()) return read_cached_hessian(run, "TS search", hessian, report);
  fmt::print(report, "   No %read_hess supplied -- computing Hessian at input geometry.\n");
  compute_hessian(run, hessian, report);
  save_hessian(run, hessian, report);
  return 0;
}

/// Searches, and leaves the run at the structure found.
[[nodiscard]] int search(RUN_T& run, const MATRIX& hessian, std::ostream& report) {
  const STAGE_TIMER timer(STAGE::optimizer);
  const auto surface = method_surface(run, &report);
  KEEPS_GEOMETRY_T<TRANSITION_STATE::SADDLE_PRINTER_T> printer(run.molecule, report);
  const TRANSITION_STATE::SADDLE_POINT_T found =
      TRANSITION_STATE::find_saddle(*surface, hessian, TRANSITION_STATE::settings_from(run.input), printer);
  if (found.outcome == TRANSITION_STATE::OUTCOME::refused) return 1;
  if (found.outcome != TRANSITION_STATE::OUTCOME::converged) run.converged = false;
  settle(run, *surface, found.positions);
  return 0;
}

}  // namespace

int section_transition_state(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 5/6 (transition-state search)");
  print_section_heading("5/6", "Transition-State Search (P-RFO)", report);
  if (run.functional.is_mp2()) {
    print_no_ts_with_mp2(report);
    return 1;
  }
  if (!mode_exists(run, report)) return 1;
  HESSIAN::HESSIAN_FILE_T hessian;
  if (const int status = starting_hessian(run, hessian, report); status != 0) return status;
  const double start = timer_wall(STAGE::total);
  if (const int status = search(run, hessian.hessian, report); status != 0) return status;
  fmt::print(report, "   TS search time: {:.2f} s\n", timer_wall(STAGE::total) - start);
  return 0;
}

int section_validation(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 6 (frequencies at the transition state)");
  print_section_heading("6 (validation)", "Freq at located TS", report);
  HESSIAN::HESSIAN_FILE_T hessian;
  compute_hessian(run, hessian, report);
  if (const int status = analyse_hessian(run, hessian, true, report); status != 0) return status;
  VIBRATIONS::print_saddle_verdict(hessian.frequencies, run.converged, report);
  return 0;
}

}  // namespace zentrix

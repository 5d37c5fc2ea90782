#include <fmt/ostream.h>

#include "driver/interrupts.hpp"
#include "driver/method_surface.hpp"
#include "driver/moving_geometry.hpp"
#include "driver/sections.hpp"
#include "geometry/optimizer.hpp"
#include "geometry/optimizer_report.hpp"
#include "report/layout.hpp"
#include "report/timing.hpp"

namespace zentrix {

int section_optimization(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 5 (geometry optimization)");
  print_section_heading("5", "Geometry Optimization", report);
  {
    const STAGE_TIMER timer(STAGE::optimizer);
    const auto surface = method_surface(run, &report);
    KEEPS_GEOMETRY_T<OPTIMIZER::OPTIMIZER_PRINTER_T> printer(run.molecule, run.input.zmatrix, report);
    const OPTIMIZER::OPTIMIZATION_T result = OPTIMIZER::optimize(*surface, OPTIMIZER::settings_from(run.input), printer);
    if (result.outcome == OPTIMIZER::OUTCOME::refused) return 1;
    if (result.outcome != OPTIMIZER::OUTCOME::converged) run.converged = false;
    settle(run, *surface, result.positions);
  }
  fmt::print(report, "   Optimization time: {:.2f} s\n", timer_wall(STAGE::optimizer));
  return 0;
}

}  // namespace zentrix

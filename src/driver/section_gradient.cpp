#include <fmt/ostream.h>

#include "driver/interrupts.hpp"
#include "driver/method_surface.hpp"
#include "driver/sections.hpp"
#include "gradients/gradient_report.hpp"
#include "report/layout.hpp"

namespace zentrix {
namespace {

void print_method(const RUN_T& run, std::ostream& report) {
  if (run.input.semi_analytical_gradient) {
    fmt::print(report, "   Method: semi-analytical (Pulay+FD)\n");
  } else if (run.molecule.unrestricted) {
    fmt::print(report, "   Method: UHF analytical\n");
  } else {
    fmt::print(report, "   Method: fully analytical\n");
  }
}

}  // namespace

int section_gradient(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 4 (gradient)");
  print_section_heading("4", "Gradient", report);
  print_method(run, report);
  const auto surface = method_surface(run, &report);
  const GRADIENTS::SURFACE_POINT_T point = surface->energy_and_gradient(GRADIENTS::positions_of(run.molecule));
  if (!point.converged) {
    fmt::print(report, "   *** WARNING: {}SCF did not converge\n", run.molecule.unrestricted ? "UHF " : "");
    run.converged = false;
  }
  GRADIENTS::print_gradient(run.molecule, point.gradient, report);
  run.scf = surface->last_scf();
  run.geometry = surface->take_geometry();
  return 0;
}

}  // namespace zentrix

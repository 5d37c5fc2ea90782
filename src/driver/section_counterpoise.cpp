#include <fmt/ostream.h>

#include "composite/counterpoise.hpp"
#include "correlation/mp2_report.hpp"
#include "driver/interrupts.hpp"
#include "driver/method_surface.hpp"
#include "driver/sections.hpp"
#include "molecule/molecule.hpp"
#include "report/stop.hpp"

namespace zentrix {
namespace {

/// A complete energy of one sub-system by the run's method, by itself: nothing travels from one to the next.
COMPOSITE::SUBSYSTEM_ENERGY_T subsystem_energy(const RUN_T& run, const INPUT_PARSER::INPUT_DATA_T& subsystem,
                                               std::ostream& report) {
  RUN_T own;
  own.input = subsystem;
  own.functional = run.functional;
  if (build_molecule(own.input, own.molecule, report) != 0) return {0.0, true};
  print_molecule_summary(own.molecule, report);
  CORRELATION::note_unrestricted(own.functional.name, own.molecule.unrestricted, report);
  const auto surface = method_surface(own, &report);
  const GRADIENTS::SURFACE_POINT_T point = surface->energy(GRADIENTS::positions_of(own.molecule));
  return {point.energy, !point.converged};
}

}  // namespace

int section_counterpoise(RUN_T& run, std::ostream& report) {
  set_run_phase("the counterpoise analysis");
  COMPOSITE::COUNTERPOISE_T result;
  // A fault inside a step is a failure of the step, whose line names the fragment.
  const auto energy_of = [&](const INPUT_PARSER::INPUT_DATA_T& subsystem) -> COMPOSITE::SUBSYSTEM_ENERGY_T {
    try {
      return subsystem_energy(run, subsystem, report);
    } catch (const run_stopped& stop) {
      fmt::print(report, "{}\n", stop.what());
      return {0.0, true};
    }
  };
  return COMPOSITE::run_counterpoise(run.input, energy_of, result, report);
}

}  // namespace zentrix

#include <fmt/ostream.h>

#include <cmath>

#include "composite/scan_report.hpp"
#include "driver/interrupts.hpp"
#include "driver/method_surface.hpp"
#include "driver/moving_geometry.hpp"
#include "driver/sections.hpp"
#include "geometry/optimizer_report.hpp"
#include "molecule/molecule.hpp"
#include "report/side_files.hpp"
#include "report/timing.hpp"

namespace zentrix {
namespace {

void write_points(const RUN_T& run, const COMPOSITE::SCAN_RESULT_T& result, std::ostream& report) {
  const std::string name = unique_output_name(output_base_name(run.input_file), "scan", report);
  if (write_side_file(name, COMPOSITE::scan_file_text(run.input.scan, result))) {
    fmt::print(report, "   Scan points written to: {}\n", name);
  } else {
    fmt::print(report, "   *** WARNING: cannot write the scan points to {}\n", name);
  }
}

/// Tables, side file and statuses; a scan in which every point failed has failed. The completed points of a scan that ended
/// early stand in the report already; they go into the side file as well.
int finish(RUN_T& run, const COMPOSITE::SCAN_RESULT_T& result, bool relaxed, std::ostream& report) {
  if (result.status != COMPOSITE::SCAN_STATUS::done) {
    if (!result.points.empty()) write_points(run, result, report);
    COMPOSITE::print_scan_failure(run.input.scan, result, relaxed, report);
    return 1;
  }
  COMPOSITE::print_scan_summary(run.input.scan, result, relaxed, report);
  write_points(run, result, report);
  bool any_energy = false;
  for (const COMPOSITE::SCAN_POINT_T& point : result.points) {
    if (!point.converged) run.converged = false;
    any_energy = any_energy || !std::isnan(point.energy);
  }
  return any_energy ? 0 : 1;
}

/// Puts the run's molecule where a point has it, says so, and gives its surface.
COMPOSITE::SURFACE_MAKER_T surface_maker(RUN_T& run, std::ostream& report) {
  return [&](const GRADIENTS::CARTESIAN_T& positions) {
    run.molecule = GRADIENTS::moved(run.molecule, positions);
    print_molecule_summary(run.molecule, report);
    return method_surface(run, &report);
  };
}

}  // namespace

int section_rigid_scan(RUN_T& run, std::ostream& report) {
  set_run_phase("the rigid scan");
  COMPOSITE::print_scan_header(run.input.scan, false, report);
  COMPOSITE::SCAN_PRINTER_T printer(run.input.scan, false, report);
  return finish(run, COMPOSITE::rigid_scan(run.input, surface_maker(run, report), printer, report), false, report);
}

int section_relaxed_scan(RUN_T& run, std::ostream& report) {
  set_run_phase("the relaxed scan");
  COMPOSITE::print_scan_header(run.input.scan, true, report);
  COMPOSITE::SCAN_PRINTER_T printer(run.input.scan, true, report);
  KEEPS_GEOMETRY_T<OPTIMIZER::OPTIMIZER_PRINTER_T> optimizer_printer(run.molecule, run.input.zmatrix, report);
  const STAGE_TIMER timer(STAGE::optimizer);
  return finish(run, COMPOSITE::relaxed_scan(run.input, surface_maker(run, report), optimizer_printer, printer, report),
                true, report);
}

}  // namespace zentrix

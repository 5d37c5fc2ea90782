#include <fmt/ostream.h>

#include "driver/interrupts.hpp"
#include "driver/run_hessian.hpp"
#include "driver/sections.hpp"
#include "hessian/vibration_report.hpp"
#include "report/layout.hpp"
#include "report/timing.hpp"

namespace zentrix {

int section_frequencies(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 6 (Hessian and frequencies)");
  print_section_heading("6", "Hessian & Frequencies", report);
  const double start = timer_wall(STAGE::total);
  const bool computed = run.input.read_hess.empty();
  HESSIAN::HESSIAN_FILE_T hessian;
  if (computed) {
    compute_hessian(run, hessian, report);
  } else if (const int status = read_cached_hessian(run, "frequency analysis", hessian, report); status != 0) {
    return status;
  }
  if (const int status = analyse_hessian(run, hessian, computed, report); status != 0) return status;
  if (run.optimized) VIBRATIONS::print_minimum_verdict(hessian.frequencies, report);
  fmt::print(report, "   Section 6 time: {:.2f} s\n", timer_wall(STAGE::total) - start);
  return 0;
}

}  // namespace zentrix

#include "driver/run.hpp"

#include <fmt/ostream.h>
#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string_view>

#include "driver/driver_report.hpp"
#include "driver/interrupts.hpp"
#include "driver/job_table.hpp"
#include "driver/sections.hpp"
#include "integrals/boys.hpp"
#include "report/layout.hpp"
#include "report/timing.hpp"

namespace zentrix {
namespace {

/// The last resort for an exception that cannot reach `main` (thrown inside a parallel region): the same lines and status.
[[noreturn]] void end_on_lost_exception() {
  if (std::current_exception()) print_current_exception(std::cout);
  std::cout.flush();
  _exit(EXIT_STOPPED);
}

/// More threads than this make no run faster, and a mistyped number of them (1000000) would end in a crash of the threading
/// library.
int most_threads() { return std::max(256, 4 * omp_get_num_procs()); }

void set_up_threads(std::ostream& report) {
  const int wanted = omp_get_max_threads();
  omp_set_num_threads(std::min(wanted, most_threads()));
  print_threads(omp_get_max_threads(), report);
  if (wanted > omp_get_max_threads()) print_fewer_threads(wanted, omp_get_max_threads(), report);
}

/// Sections in the order of the job's row, the end lines and the timing profile.
int walk_sections(int argc, char** argv, std::ostream& report) {
  RUN_T run;
  if (section_input(argc, argv, run, report) != 0) return EXIT_STOPPED;
  const BOYS::PRECISE_MODE_GUARD boys_mode(run.input.boys_precise);
  for (const SECTION section : job_row(run.input.job).sections) {
    if (section(run, report) != 0) return EXIT_STOPPED;
  }
  timer_stop(STAGE::total);
  print_end_lines(timer_wall(STAGE::total), report);
  if (run.input.print_time) print_timing_profile(report);
  return run.converged ? EXIT_DONE : EXIT_NOT_CONVERGED;
}

int run_report(int argc, char** argv, std::ostream& report) {
  try {
    timer_reset();
    timer_start(STAGE::total);
    print_banner(report);
    print_timestamp(report);
    set_up_threads(report);
    return walk_sections(argc, argv, report);
  } catch (...) {
    print_current_exception(report);
    return EXIT_STOPPED;
  }
}

}  // namespace

int run_program(int argc, char** argv) {
  std::set_terminate(end_on_lost_exception);
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // every finished line is visible at once, also in a file or a pipe
  std::ostream& report = std::cout;
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (first == "--help" || first == "--version") {
    first == "--help" ? print_help(report) : print_version(report);
    return EXIT_DONE;
  }
  install_interrupt_handlers();
  const int status = run_report(argc, argv, report);
  if (!report.flush() || std::ferror(stdout) != 0) {
    fmt::print(stderr, " *** ERROR: The report could not be written in full.\n");
    return EXIT_STOPPED;
  }
  return status;
}

}  // namespace zentrix

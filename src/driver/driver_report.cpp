#include "driver/driver_report.hpp"

#include <fmt/ostream.h>

#include <exception>
#include <new>

#include "report/layout.hpp"
#include "report/stop.hpp"

namespace zentrix {
namespace {

constexpr const char* version = "0.82.1";
constexpr const char* build_date = "2026-06-07";

}  // namespace

void print_banner(std::ostream& report) {
  const std::string rule = section_rule();
  fmt::print(report, "{}\n                     Z e n t r i x\n          Educational Quantum Chemistry Program\n", rule);
  fmt::print(report, "                  Version {} ({})\n{}\n", version, build_date, rule);
  fmt::print(report, "  HF / DFT / MP2  |  RHF/UHF  |  RKS/UKS  |  ECP\n");
  fmt::print(report, "  Geometry Optimization  |  Hessian & Frequencies\n{}\n", rule);
}

void print_version(std::ostream& report) { fmt::print(report, "zentrix {} ({})\n", version, build_date); }

void print_help(std::ostream& report) {
  fmt::print(report,
             "Usage: zentrix [<input_file>]\n"
             "\n"
             "Computes the electronic structure of the molecule that the input file describes and writes a report to\n"
             "standard output. Without an argument the file is input.dat of the working directory.\n"
             "\n"
             "  --help       this text\n"
             "  --version    version and build date\n"
             "\n"
             "Exit status: 0 converged; 1 stopped by an error; 3 finished, but something did not converge;\n"
             "130 or 143 interrupted.\n"
             "\n"
             "Environment: OMP_NUM_THREADS         number of threads\n"
             "             ZENTRIX                 folder that holds basis_data/\n"
             "             ZENTRIX_PRINT_MATRICES  when set, the one-electron matrices are printed\n"
             "             ZENTRIX_ISA             baseline, avx2 or avx512: the fastest kernels that may be used\n");
}

void print_threads(int threads, std::ostream& report) {
  if (threads > 1) {
    fmt::print(report, " OpenMP enabled: {} threads\n", threads);
  } else {
    fmt::print(report, " Serial execution (OpenMP: 1 thread)\n");
  }
}

void print_fewer_threads(int wanted, int used, std::ostream& report) {
  fmt::print(report, "   *** WARNING: {} threads were asked for; {} are used.\n", wanted, used);
}

void print_fatal(const std::string& what, int code, std::ostream& report) {
  fmt::print(report, " *** FATAL: {}, error = {}\n", what, code);
}

void print_missing(const std::string& feature, std::ostream& report) {
  fmt::print(report, " *** ERROR: Not available in this version: {}.\n", feature);
}

void print_xc_deriv_unused(std::ostream& report) {
  fmt::print(report, "   NOTE: %xc_deriv numerical changes nothing here: no job of this version needs second derivatives\n");
  fmt::print(report, "         of the functional, and first ones are always analytical.\n");
}

void print_no_memory(int n_basis, double needed_mb, double machine_mb, std::ostream& report) {
  fmt::print(report, " *** ERROR: Not enough memory: the matrices of {} basis functions take some {:.0f} MB,\n", n_basis,
             needed_mb);
  fmt::print(report, "            this machine has {:.0f} MB.\n", machine_mb);
}

void print_section_end(const std::string& line, int section, double seconds, std::ostream& report) {
  const std::string rule = section_rule();
  fmt::print(report, "{}\n  {}\n  Section {} time: {:.2f} s\n{}\n", rule, line, section, seconds, rule);
}

void print_no_ts_with_mp2(std::ostream& report) {
  fmt::print(report, " *** ERROR: TS search does not yet support MP2 / UMP2 / PUMP2.\n");
  fmt::print(report, "            Use HF or DFT in this release.\n");
}

void print_final_energies(const RUN_T& run, const std::vector<std::pair<std::string, double>>& nuclear_terms,
                          std::ostream& report) {
  const SCF::ENERGY_PARTS_T& energy = run.scf.energy;
  fmt::print(report, "\n   Final energies:\n");
  fmt::print(report, "     Electronic energy: {:20.10f}\n", energy.electronic);
  fmt::print(report, "     Nuclear repulsion: {:20.10f}\n", energy.nuclear);
  double total = energy.total();
  if (run.mp2) {
    fmt::print(report, "     {}{:20.10f}\n",
               run.mp2->unrestricted ? "UMP2 correlation:  " : "MP2 correlation:   ", run.mp2->energy());
    total += run.mp2->energy();
  }
  for (const auto& [label, part] : nuclear_terms) {
    fmt::print(report, "     {:<19s}{:20.10f}\n", label + ":", part);
    total += part;
  }
  fmt::print(report, "     Total energy:      {:20.10f}\n", total);
}

void print_grid_quality(double integrated, int electrons, std::ostream& report) {
  const double deviation = integrated - electrons;
  fmt::print(report, "   Grid-quality check (density integration):\n");
  fmt::print(report, "     Integrated N_e:    {:18.10f}   (exact = {})\n", integrated, electrons);
  fmt::print(report, "     Deviation:         {:18.4e}   ({:.4e})\n", deviation, deviation / electrons);
}

void print_end_lines(double seconds, std::ostream& report) {
  const std::string rule = section_rule();
  fmt::print(report, "\n{}\n  Zentrix run completed.\n  Wall time: {:.2f} seconds\n{}\n", rule, seconds, rule);
  print_timestamp(report);
}

void print_current_exception(std::ostream& report) {
  try {
    throw;
  } catch (const run_stopped& stop) {
    fmt::print(report, "{}\n", stop.what());
  } catch (const std::bad_alloc&) {
    fmt::print(report, " *** ERROR: Out of memory.\n");
  } catch (const std::exception& fault) {
    fmt::print(report, " *** ERROR: Internal error: {}\n", fault.what());
  } catch (...) {
    fmt::print(report, " *** ERROR: Internal error.\n");
  }
}

}  // namespace zentrix

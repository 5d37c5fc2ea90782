#include <fmt/ostream.h>

#include "correlation/mp2_report.hpp"
#include "driver/availability.hpp"
#include "driver/dispersion_setup.hpp"
#include "driver/driver_report.hpp"
#include "driver/interrupts.hpp"
#include "driver/sections.hpp"
#include "input/input_parser.hpp"
#include "integrals/boys.hpp"
#include "molecule/molecule.hpp"
#include "report/layout.hpp"
#include "report/machine_memory.hpp"
#include "report/timing.hpp"
#include "solvation/activation.hpp"
#include "solvation/solvents.hpp"

namespace zentrix {
namespace {

using INPUT_PARSER::JOB;

std::string input_file_name(int argc, char** argv, std::ostream& report) {
  if (argc > 1) return argv[1];
  fmt::print(report, " Usage: zentrix <input_file>\n No input file specified, looking for \"input.dat\"...\n");
  return "input.dat";
}

int read_input(RUN_T& run, std::ostream& report) {
  fmt::print(report, " Reading input from: {}\n", run.input_file);
  if (const int error = INPUT_PARSER::parse_input(run.input_file, run.input, report); error != 0) {
    print_fatal("Input parsing failed", error, report);
    return error;
  }
  fmt::print(report, " Input parsed successfully.\n");
  // The summary shows the permittivity of a known solvent; an unknown one stops the run later in this section.
  if (run.input.solvent_given && !run.input.eps_given) run.input.eps = SOLVATION::solvent_permittivity(run.input.solvent);
  INPUT_PARSER::print_job_summary(run.input, report);
  return 0;
}

/// Non-zero, after the line that names it, when this version lacks `feature` (empty: nothing is lacking).
int refuse_missing(const std::string& feature, std::ostream& report) {
  if (feature.empty()) return 0;
  print_missing(feature, report);
  return 1;
}

/// Non-zero, after its message, when the matrices do not fit into the machine: the system would end the run without a word.
int refuse_too_large(const MOLECULE_T& molecule, std::ostream& report) {
  const double machine = machine_memory() / (1024.0 * 1024.0);
  const double needed = matrices_mb(molecule);
  if (needed <= machine) return 0;
  print_no_memory(molecule.n_basis, needed, machine, report);
  return 1;
}

int set_up_method(RUN_T& run, std::ostream& report) {
  fmt::print(report, "\n Setting up method...\n");
  if (const int error = DFT::set_up_functional(run.input.method_as_written, run.functional, report); error != 0)
    return error;
  DFT::print_functional(run.functional, report);
  if (run.input.xc_deriv == INPUT_PARSER::DERIVATIVE::numerical) print_xc_deriv_unused(report);
  return set_up_dispersion(run, report);
}

/// What an MP2 run leaves uncorrelated, where the user might not expect it.
void tell_frozen_core(const RUN_T& run, std::ostream& report) {
  if (run.input.frozen_core < 0) {
    CORRELATION::print_frozen_core(CORRELATION::settings_from(run.input, run.molecule).frozen_core, report);
  } else if (run.input.frozen_core > 0 && run.input.job == JOB::bsse) {
    fmt::print(report, "   *** WARNING: %frozen_core {} freezes as many orbitals in every fragment as in the complex;\n",
               run.input.frozen_core);
    fmt::print(report, "            -1 (automatic) freezes the cores of each.\n");
  }
}

/// Settings of other methods. What other jobs use is told when the input is read.
void warn_unused_by_method(const RUN_T& run, std::ostream& report) {
  const INPUT_PARSER::INPUT_DATA_T usual;
  const auto warn = [&](const char* keyword) {
    fmt::print(report, "   *** WARNING: %{} is not used by this method.\n", keyword);
  };
  if (run.input.frozen_core != usual.frozen_core && !run.functional.is_mp2()) warn("frozen_core");
  if (run.input.grid != usual.grid && run.functional.is_hartree_fock()) warn("grid");
  if (run.input.occupation != usual.occupation && !run.molecule.unrestricted && run.input.job != JOB::bsse)
    warn("uks_occupation");
}

int set_up_molecule(RUN_T& run, std::ostream& report) {
  fmt::print(report, "\n Building molecule...\n");
  if (const int error = build_molecule(run.input, run.molecule, report); error != 0) {
    print_fatal("Molecule build failed", error, report);
    return error;
  }
  print_molecule_summary(run.molecule, report);
  CORRELATION::note_unrestricted(run.functional.name, run.molecule.unrestricted, report);
  if (run.functional.is_mp2()) tell_frozen_core(run, report);
  warn_unused_by_method(run, report);
  if (const int error = refuse_missing(missing_for_molecule(run.molecule), report); error != 0) return error;
  return refuse_too_large(run.molecule, report);
}

/// The solvent and the model, and with them the last of what the input can ask for.
int set_up_solvation(RUN_T& run, std::ostream& report) {
  const bool correlated = run.input.pump2 || run.functional.is_mp2();
  if (const int error = SOLVATION::resolve_solvation(run.input, correlated, run.solvation, report); error != 0) return error;
  return refuse_missing(missing_for_input(run.input, run.functional), report);
}

void set_up_tables(std::ostream& report) {
  fmt::print(report, "\n Initializing precomputed tables...\n");
  BOYS::initialize_tables();
  BOYS::print_table_summary(report);
}

}  // namespace

int section_input(int argc, char** argv, RUN_T& run, std::ostream& report) {
  set_run_phase("Section 1 (input and setup)");
  print_section_heading("1", "Input & Setup", report);
  {
    const STAGE_TIMER timer(STAGE::input);
    run.input_file = input_file_name(argc, argv, report);
    if (const int error = read_input(run, report); error != 0) return error;
    if (const int error = set_up_method(run, report); error != 0) return error;
    if (const int error = set_up_molecule(run, report); error != 0) return error;
    if (const int error = set_up_solvation(run, report); error != 0) return error;
    set_up_tables(report);
  }
  print_section_end("Section 1 complete. Ready for integral evaluation.", 1, timer_wall(STAGE::input), report);
  return 0;
}

}  // namespace zentrix

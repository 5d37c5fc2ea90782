#include "scf/scf_run.hpp"

#include <memory>
#include <sstream>

#include "report/timing.hpp"
#include "scf/scf_report.hpp"

namespace zentrix::SCF {
namespace {

std::unique_ptr<GUESS_OBSERVER_T> guess_observer(std::ostream* report) {
  if (report == nullptr) return std::make_unique<GUESS_OBSERVER_T>();
  return std::make_unique<GUESS_PRINTER_T>(*report);
}

SCF_RESULT_T run_functional(GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                            const INPUT_PARSER::INPUT_DATA_T& input, const SCF_START_T& start, std::ostream* report) {
  const auto terms = energy_terms(geometry, functional, input.eri_memory_limit_mb);
  if (report == nullptr) {
    SCF_OBSERVER_T silent;
    return run_scf(geometry, terms, settings_from(input), start, silent);
  }
  SCF_PRINTER_T printer(*report, functional.is_hartree_fock() ? "" : functional.name);
  return run_scf(geometry, terms, settings_from(input), start, printer);
}

/// Meta-GGAs converge poorly from a rough guess: a PBE density is a better start.
SCF_START_T pre_converge(GEOMETRY_DATA_T& geometry, const INPUT_PARSER::INPUT_DATA_T& input, const SCF_START_T& guess,
                         GUESS_OBSERVER_T& observer, std::ostream* report) {
  observer.pre_convergence_begins();
  DFT::FUNCTIONAL_T pbe;
  std::ostringstream known_name;
  if (DFT::set_up_functional("PBE", pbe, known_name) != 0) return guess;
  const SCF_RESULT_T result = run_functional(geometry, pbe, input, guess, report);
  observer.pre_convergence_ends(result);
  SCF_START_T start;
  start.densities = result.densities();
  start.guess_name = "PBE pre-converged density";
  start.from_converged_run = true;
  return start;
}

}  // namespace

void set_up_grid(GEOMETRY_DATA_T& geometry, const INPUT_PARSER::INPUT_DATA_T& input, std::ostream* report) {
  const STAGE_TIMER timer(STAGE::grid);
  std::ostringstream silence;
  std::ostream& out = report == nullptr ? silence : *report;
  print_grid_heading(out);
  geometry.grid = DFT_GRID::build_grid(geometry.molecule, DFT_GRID::grid_level_number(input.grid), out);
  DFT_GRID::print_grid(geometry.grid, out);
}

SCF_RESULT_T run_method(GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                        const INPUT_PARSER::INPUT_DATA_T& input, const SPIN_MATRICES_T& previous, std::ostream* report) {
  const std::unique_ptr<GUESS_OBSERVER_T> observer = guess_observer(report);
  SCF_START_T start;
  if (!previous.empty()) {
    start.densities = previous;
    start.guess_name = "previous density";
    start.from_converged_run = true;
  } else {
    start =
        initial_guess(geometry.molecule, geometry.one_electron.s, input.initial_guess, input.eri_memory_limit_mb, *observer);
    observer->guess_made(start);
    if (functional.functional_class == DFT::FUNCTIONAL_CLASS::meta_gga && !geometry.molecule.unrestricted) {
      start = pre_converge(geometry, input, start, *observer, report);
      observer->guess_made(start);
    }
  }
  return run_functional(geometry, functional, input, start, report);
}

}  // namespace zentrix::SCF

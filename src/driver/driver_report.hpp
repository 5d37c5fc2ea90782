#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "driver/run_state.hpp"

// The texts that the driver owns.

namespace zentrix {

void print_banner(std::ostream& report);
void print_version(std::ostream& report);
void print_help(std::ostream& report);
void print_threads(int threads, std::ostream& report);
void print_fewer_threads(int wanted, int used, std::ostream& report);
/// " *** FATAL: <what>, error = <code>".
void print_fatal(const std::string& what, int code, std::ostream& report);
/// The line for a request that this version cannot serve.
void print_missing(const std::string& feature, std::ostream& report);
/// Told when numerical second derivatives of the functional were asked for.
void print_xc_deriv_unused(std::ostream& report);
/// The line for a molecule whose matrices do not fit into the machine.
void print_no_memory(int n_basis, double needed_mb, double machine_mb, std::ostream& report);
/// The lines for a transition-state search on a correlated surface.
void print_no_ts_with_mp2(std::ostream& report);
/// The end of a section with a closing line of its own: rule, that line, the time, rule.
void print_section_end(const std::string& line, int section, double seconds, std::ostream& report);
/// The energy block of Section 7, hartree: the SCF and correlation energies of the run, the energies of its nuclear terms
/// with their labels, and the sum of all.
void print_final_energies(const RUN_T& run, const std::vector<std::pair<std::string, double>>& nuclear_terms,
                          std::ostream& report);
/// The integral of the density on the grid beside the electron count.
void print_grid_quality(double integrated, int electrons, std::ostream& report);
void print_end_lines(double seconds, std::ostream& report);
/// The lines of the exception that is being handled; the reason a run stopped.
void print_current_exception(std::ostream& report);

}  // namespace zentrix

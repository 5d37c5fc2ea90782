#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "input/input_data.hpp"
#include "molecule/types.hpp"

// Front door of the molecule subsystem: from the parsed input to the molecule record.

namespace zentrix {

/// Path under which a data file (basis set, ECP, dispersion parameters) is opened: "$ZENTRIX/basis_data/name" when the
/// environment variable ZENTRIX is set and not empty, else "basis_data/name" of the working directory. When the variable is
/// unset and that file does not exist, the data folder installed beside the program is tried last.
std::string data_file_path(const std::string& file_name);

/// File name of a basis set: '*' -> 'd', '**' -> 'dp', '+' -> 'p', "(),": and blanks dropped, lower case, ".dat" appended.
std::string basis_file_name(const std::string& basis_name);
/// The same with "_ecp.dat".
std::string ecp_file_name(const std::string& basis_name);
/// Where the files of a basis set are opened: by the rule above, or under the literal lower-case name where a file of that
/// name exists (def2-SV(P), which the rule would confuse with def2-SVP).
std::string basis_path(const std::string& basis_name);
std::string ecp_path(const std::string& basis_name);

/// Builds atoms, shells, ECPs and electron counts. 0 on success, otherwise a code after the reason was printed.
[[nodiscard]] int build_molecule(const INPUT_PARSER::INPUT_DATA_T& input, MOLECULE_T& molecule, std::ostream& report);

/// Normalises a shell's coefficients in place so that the component x^l has self-overlap 1. On entry the coefficients are
/// those of normalised primitives (as in basis-set files). 0 on success; otherwise a code after a line "FATAL [...]: ...".
[[nodiscard]] int normalize_shell(SHELL_T& shell, std::ostream& report);

/// Renumbers functions and recounts totals after shells were added or the spherical flag was set.
void count_basis_functions(MOLECULE_T& molecule);

void print_molecule_summary(const MOLECULE_T& molecule, std::ostream& report);

/// Orbitals left uncorrelated by default: the cores of all atoms that carry no ECP.
int automatic_frozen_core(const MOLECULE_T& molecule);

/// Sum over pairs of charges / distance, hartree. Ghost atoms carry no charge.
double nuclear_repulsion(const MOLECULE_T& molecule);

}  // namespace zentrix

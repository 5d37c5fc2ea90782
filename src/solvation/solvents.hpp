#pragma once

#include <iosfwd>
#include <string_view>

namespace zentrix::SOLVATION {

/// Relative permittivity of a solvent, its name in any case and without regard to blanks around it; -1 for a name that is
/// not in the table.
double solvent_permittivity(std::string_view name);

/// The names that the table knows, with their permittivities.
void print_known_solvents(std::ostream& report);

}  // namespace zentrix::SOLVATION

#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

namespace zentrix::INTERNAL_COORDS {

std::vector<std::string> symbols_of(const MOLECULE_T& molecule);

/// One line an atom: number, symbol, position in angstrom. `positions`: 3 natom, bohr.
void print_positions(const std::vector<std::string>& symbols, const VECTOR& positions, std::ostream& report);

}  // namespace zentrix::INTERNAL_COORDS

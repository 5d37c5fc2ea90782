#pragma once

#include <iosfwd>

#include "dft/grid.hpp"

namespace zentrix::DFT_GRID {

/// The warning about an angular rule that does not exist.
void print_missing_angular_rule(int points, std::ostream& report);

}  // namespace zentrix::DFT_GRID

#pragma once

#include <iosfwd>

#include "dft/grid.hpp"

namespace zentrix::DFT_GRID {

/// The warning about an angular rule that does not exist.
void print_missing_angular_rule(int points, std::ostream& report);

/// The summary of a grid of that level with so many points.
void print_summary(const GRID_LEVEL_T& level, std::size_t points, std::ostream& report);

}  // namespace zentrix::DFT_GRID

#pragma once

#include <iosfwd>
#include <vector>

#include "dft/grid.hpp"
#include "dft/lebedev.hpp"

namespace zentrix::DFT_GRID {

/// One radial shell of an atom.
struct RADIAL_SHELL_T {
  double r = 0.0;       ///< bohr
  double weight = 0.0;  ///< 4 pi times the radial weight, bohr^3
  const ANGULAR_RULE_T* rule = nullptr;
};

/// The shells of an atom of element z, from the nucleus outwards. An angular rule that does not exist is replaced, with one
/// warning for each size.
std::vector<RADIAL_SHELL_T> atomic_grid(const GRID_LEVEL_T& level, int z, std::ostream& report);

}  // namespace zentrix::DFT_GRID

#pragma once

#include <vector>

#include "dft/grid.hpp"

namespace zentrix::DFT_GRID {

/// Sizes of the angular rules of an atom by zones of x = r / Bragg-Slater radius, from the nucleus outwards.
struct ANGULAR_ZONES_T {
  std::vector<double> boundaries;  ///< between zones, in units of the Bragg-Slater radius
  std::vector<int> sizes;          ///< one more than there are boundaries
  bool boundary_is_inside = true;  ///< a shell on a boundary belongs to the inner zone
};

/// The zones of element z on a level. The boundaries of the five-zone levels are those of P. M. W. Gill, B. G. Johnson,
/// J. A. Pople, Chem. Phys. Lett. 209 (1993) 506, and variants of them.
ANGULAR_ZONES_T angular_zones(const GRID_LEVEL_T& level, int z);

/// Size of the angular rule of a shell.
int angular_size(const ANGULAR_ZONES_T& zones, double x);

}  // namespace zentrix::DFT_GRID

#pragma once

#include <vector>

#include "dft/grid.hpp"

namespace zentrix::DFT_GRID {

/// Quadrature of the half line: integral from 0 to infinity of f(r) r^2 dr = sum_i weight_i f(r_i).
struct RADIAL_GRID_T {
  std::vector<double> r;       ///< bohr, rising
  std::vector<double> weight;  ///< bohr^3, r^2 included

  int size() const { return static_cast<int>(r.size()); }
};

/// Radial points of an atom of element z. Five-zone levels give hydrogen and helium 0.52 of the row's count, at least 10;
/// levels with counts by row give every period its own.
int radial_point_count(const GRID_LEVEL_T& level, int z);

/// The radial grid of an atom of element z:
///   Mura-Knowles       r = -s ln(1 - x^3), midpoints of (0, 1)               J. Chem. Phys. 104 (1996) 9848
///   Euler-Maclaurin    r = R x^2/(1 - x)^2, x = i/(n + 1)                    C. W. Murray, N. C. Handy, G. J. Laming,
///                                                                            Mol. Phys. 78 (1993) 997, m = 2
///   Treutler-Ahlrichs  r = xi/ln 2 (1 + x)^alpha ln(2/(1 - x)), x from the   J. Chem. Phys. 102 (1995) 346, maps M3 and M4
///                      Gauss-Chebyshev rule of the second kind
RADIAL_GRID_T radial_grid(const GRID_LEVEL_T& level, int z);

}  // namespace zentrix::DFT_GRID

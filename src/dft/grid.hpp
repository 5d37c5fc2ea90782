#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "molecule/types.hpp"

// Front door of the molecular integration grid: points and weights for one geometry, atom-centred shells of Lebedev points
// joined by fuzzy cells.

namespace zentrix::DFT_GRID {

enum class RADIAL_SCHEME : int { mura_knowles = 1, euler_maclaurin = 2, treutler_ahlrichs = 3 };
enum class PRUNING : int { uniform = 0, tiered = 1, five_zones = 2, five_zones_by_row = 3 };
enum class SIZE_ADJUSTMENT : int { none = 0, becke = 1, treutler = 2 };

/// One row of the table of grid levels.
struct GRID_LEVEL_T {
  std::string name;
  int radial_points = 0;
  RADIAL_SCHEME radial_scheme = RADIAL_SCHEME::mura_knowles;
  double alpha = 0.0;  ///< exponent of the Treutler-Ahlrichs map
  PRUNING pruning = PRUNING::uniform;
  int angular_points = 0;  ///< largest Lebedev rule on an atom
  SIZE_ADJUSTMENT size_adjustment = SIZE_ADJUSTMENT::none;
};

/// The row of a level; levels outside 1..10 give that of level 2.
const GRID_LEVEL_T& grid_level(int level);

/// Level of a word of the input ("FINE", "ULTRAFINE", "TM", "G09", "ORCA7" or "1" to "10").
int grid_level_number(std::string_view word);

/// The molecular quadrature: integral of f = sum_p weight_p f(x_p, y_p, z_p). Points of one atom are consecutive.
struct MOLECULAR_GRID_T {
  int level = 0;
  std::vector<double> x, y, z;  ///< bohr
  std::vector<double> weight;   ///< radial x angular x partition weight, bohr^3
  std::vector<int> atom;        ///< owner of each point, index into MOLECULE_T::atoms

  std::size_t size() const { return weight.size(); }
};

/// Builds the grid of a geometry. Ghost atoms carry points. Warnings about the angular rules go to the report.
MOLECULAR_GRID_T build_grid(const MOLECULE_T& molecule, int level, std::ostream& report);

/// The summary of the report, seven lines.
void print_grid(const MOLECULAR_GRID_T& grid, std::ostream& report);

}  // namespace zentrix::DFT_GRID

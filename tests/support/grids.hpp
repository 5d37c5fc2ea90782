#pragma once

#include <cmath>
#include <sstream>
#include <stdexcept>

#include "constants/units.hpp"
#include "dft/grid.hpp"
#include "support/molecules.hpp"

// What the tests of the grid share: grids and functions whose integrals are known.

namespace zentrix::TESTS {

/// The grid of a level; throws when anything was reported.
inline DFT_GRID::MOLECULAR_GRID_T grid_of(const MOLECULE_T& molecule, int level) {
  std::ostringstream report;
  DFT_GRID::MOLECULAR_GRID_T grid = DFT_GRID::build_grid(molecule, level, report);
  if (!report.str().empty()) throw std::runtime_error(report.str());
  return grid;
}

/// Relative error of the integral of a model density: on every atom normalised Gaussians of a diffuse, a valence and a core
/// exponent (bohr^-2), one electron in each.
inline double gaussian_error(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid) {
  double sum = 0.0;
  for (std::size_t p = 0; p < grid.size(); ++p) {
    for (const ATOM_T& atom : molecule.atoms) {
      const double dx = grid.x[p] - atom.position[0];
      const double dy = grid.y[p] - atom.position[1];
      const double dz = grid.z[p] - atom.position[2];
      const double r2 = dx * dx + dy * dy + dz * dz;
      if (r2 > 200.0) continue;
      for (double alpha : {0.25, 1.0, 20.0}) sum += grid.weight[p] * std::pow(alpha / PI, 1.5) * std::exp(-alpha * r2);
    }
  }
  return sum / (3.0 * static_cast<double>(molecule.atoms.size())) - 1.0;
}

}  // namespace zentrix::TESTS

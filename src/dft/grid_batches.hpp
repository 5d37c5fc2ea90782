#pragma once

#include <cstddef>
#include <vector>

#include "dft/grid.hpp"
#include "molecule/types.hpp"

namespace zentrix::DFT {

/// Points of the grid that lie close together, with the shells that reach them. Padded to a multiple of MAX_LANES with
/// copies of the last point of weight 0.
struct GRID_BATCH_T {
  std::size_t first = 0;       ///< into the arrays of GRID_BATCHES_T
  std::size_t points = 0;      ///< padded number
  std::vector<int> shells;     ///< indices into MOLECULE_T::shells, ascending
  std::vector<int> functions;  ///< their basis functions
  double cost() const { return static_cast<double>(points) * static_cast<double>(functions.size() * functions.size()); }
};

/// The grid cut into batches, the most expensive ones first.
struct GRID_BATCHES_T {
  std::vector<double> x, y, z, weight;  ///< bohr, bohr^3
  std::vector<int> atom;                ///< owner of each point
  std::vector<GRID_BATCH_T> batches;
  std::size_t largest_points = 0;
  std::size_t largest_functions = 0;
};

/// Splits the grid at medians of its longest extension until a batch has at most MAX_BATCH_POINTS points, and finds the
/// shells whose values exceed `cutoff` anywhere in the box of a batch. Batches that no shell reaches are left out.
GRID_BATCHES_T make_batches(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid, double cutoff);

inline constexpr std::size_t MAX_BATCH_POINTS = 256;

/// Distance from its centre beyond which every component of the shell stays below `cutoff`, bohr.
double shell_extent(const SHELL_T& shell, double cutoff);

}  // namespace zentrix::DFT

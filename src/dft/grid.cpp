#include "dft/grid.hpp"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "dft/atomic_grid.hpp"
#include "dft/partition.hpp"

namespace zentrix::DFT_GRID {
namespace {

/// Points with a smaller weight, in bohr^3, are dropped.
constexpr double SMALLEST_WEIGHT = 1e-14;

/// Neighbouring shells of one atom: the unit of work of a thread.
struct TASK_T {
  int atom;
  int first_shell;
  int end_shell;
  std::size_t first_point;
};

using ATOMIC_GRIDS = std::map<int, std::vector<RADIAL_SHELL_T>>;  // by element

/// Cuts the atoms into a few tasks per thread, so that a small molecule keeps all threads busy as well.
std::vector<TASK_T> make_tasks(const MOLECULE_T& molecule, const ATOMIC_GRIDS& grids, std::size_t& points) {
  const int n_atoms = static_cast<int>(molecule.atoms.size());
  const int pieces = n_atoms == 0 ? 1 : 1 + 8 * omp_get_max_threads() / n_atoms;
  std::vector<TASK_T> tasks;
  points = 0;
  for (int atom = 0; atom < n_atoms; ++atom) {
    const std::vector<RADIAL_SHELL_T>& shells = grids.at(molecule.atoms[atom].z);
    const int n_shells = static_cast<int>(shells.size());
    const int step = (n_shells + pieces - 1) / pieces;
    for (int first = 0; first < n_shells; first += step) {
      const int end = std::min(first + step, n_shells);
      tasks.push_back({atom, first, end, points});
      for (int s = first; s < end; ++s) points += shells[s].rule->size();
    }
  }
  return tasks;
}

/// Fills in the points of one shell from index `first` on.
void place_shell(const ATOM_T& atom, int index, const RADIAL_SHELL_T& shell, const PARTITION_T& partition, std::size_t first,
                 MOLECULAR_GRID_T& grid) {
  const ANGULAR_RULE_T& rule = *shell.rule;
  double largest = 0.0;
  for (int p = 0; p < rule.size(); ++p) {
    grid.x[first + p] = atom.position[0] + shell.r * rule.x[p];
    grid.y[first + p] = atom.position[1] + shell.r * rule.y[p];
    grid.z[first + p] = atom.position[2] + shell.r * rule.z[p];
    largest = std::max(largest, std::abs(rule.weight[p]));
  }
  const double negligible = SMALLEST_WEIGHT / (shell.weight * largest);
  partition.weights(index, rule.size(), &grid.x[first], &grid.y[first], &grid.z[first], negligible, &grid.weight[first]);
  for (int p = 0; p < rule.size(); ++p) {
    grid.weight[first + p] *= shell.weight * rule.weight[p];
    grid.atom[first + p] = index;
  }
}

void resize(MOLECULAR_GRID_T& grid, std::size_t points) {
  for (std::vector<double>* values : {&grid.x, &grid.y, &grid.z, &grid.weight}) {
    values->resize(points);
    values->shrink_to_fit();
  }
  grid.atom.resize(points);
  grid.atom.shrink_to_fit();
}

void drop_small_weights(MOLECULAR_GRID_T& grid) {
  std::size_t kept = 0;
  for (std::size_t p = 0; p < grid.size(); ++p) {
    if (!(std::abs(grid.weight[p]) >= SMALLEST_WEIGHT)) continue;
    grid.x[kept] = grid.x[p];
    grid.y[kept] = grid.y[p];
    grid.z[kept] = grid.z[p];
    grid.weight[kept] = grid.weight[p];
    grid.atom[kept] = grid.atom[p];
    ++kept;
  }
  resize(grid, kept);
}

}  // namespace

MOLECULAR_GRID_T build_grid(const MOLECULE_T& molecule, int level, std::ostream& report) {
  const GRID_LEVEL_T& row = grid_level(level);
  ATOMIC_GRIDS atomic_grids;
  for (const ATOM_T& atom : molecule.atoms) {
    if (!atomic_grids.contains(atom.z)) atomic_grids[atom.z] = atomic_grid(row, atom.z, report);
  }
  const PARTITION_T partition(molecule, row.size_adjustment);
  MOLECULAR_GRID_T grid;
  grid.level = level;
  std::size_t points = 0;
  const std::vector<TASK_T> tasks = make_tasks(molecule, atomic_grids, points);
  resize(grid, points);
#pragma omp parallel for schedule(dynamic)
  for (const TASK_T& task : tasks) {
    const ATOM_T& atom = molecule.atoms[task.atom];
    const std::vector<RADIAL_SHELL_T>& shells = atomic_grids.at(atom.z);
    std::size_t first = task.first_point;
    for (int s = task.first_shell; s < task.end_shell; ++s) {
      place_shell(atom, task.atom, shells[s], partition, first, grid);
      first += shells[s].rule->size();
    }
  }
  drop_small_weights(grid);
  return grid;
}

}  // namespace zentrix::DFT_GRID

#include "dft/grid.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <tuple>

#include "dft/atomic_grid.hpp"
#include "dft/atomic_scales.hpp"
#include "dft/pruning.hpp"
#include "support/grids.hpp"
#include "support/molecules.hpp"
#include "support/printed.hpp"

using namespace zentrix;
using namespace zentrix::DFT_GRID;
using TESTS::bare_molecule;
using TESTS::gaussian_error;
using TESTS::grid_of;

namespace {

std::string summary(int level) {
  MOLECULAR_GRID_T grid;
  grid.level = level;
  grid.weight.resize(1234);
  return TESTS::printed(print_grid, grid);
}

std::string summary_text(const char* name, const char* radial, const char* points, const char* angular, const char* sizes,
                         const char* adjustment) {
  return fmt::format(
      "   Grid               : {}\n   Radial scheme      : {}\n   Radial points/atom : {}\n   Angular scheme     : Lebedev, "
      "{}\n"
      "   Angular sizes      : {}\n   Becke size adj.    : {}\n   Grid points (total): 1234\n",
      name, radial, points, angular, sizes, adjustment);
}

}  // namespace

TEST(GridLevels, SummaryOfEveryLevel) {
  const char* mura = "Mura-Knowles Log3";
  const char* euler = "Euler-Maclaurin (Murray-Handy-Laming)";
  const char* plain = "none (standard Becke)";
  const char* becke = "Becke (chi = R/R)";
  const char* uniform = "uniform (no pruning)";
  const char* three = "pruned (3 tiers, r/R_BS)";
  const char* five = "pruned (5 zones, NWChem)";
  EXPECT_EQ(summary(1), summary_text("coarse", mura, "25", uniform, "110", plain));
  EXPECT_EQ(summary(2), summary_text("medium", mura, "50", "pruned (2 tiers, r/R_BS)", "86 / 302", plain));
  EXPECT_EQ(summary(3), summary_text("fine", mura, "75", three, "86 / 590 / 302", plain));
  EXPECT_EQ(summary(4), summary_text("ultrafine", mura, "100", three, "86 / 590 / 302", plain));
  EXPECT_EQ(summary(5), summary_text("extreme", mura, "150", three, "86 / 590 / 302", plain));
  EXPECT_EQ(summary(6), summary_text("Gaussian Fine", euler, "75 (H/He 39)", five, "50 / 86 / 266 / 302 / 266", becke));
  EXPECT_EQ(summary(7), summary_text("Gaussian UltraFine", euler, "99 (H/He 51)", five, "50 / 86 / 434 / 590 / 434", becke));
  EXPECT_EQ(summary(8), summary_text("Treutler (75,302)", "Treutler-Ahlrichs M4 (G-Cheb + alpha=0.6)", "75", uniform, "302",
                                     "Treutler (chi = sqrt R/R)"));
  EXPECT_EQ(summary(9), summary_text("G09 ref (75,302)", euler, "75", uniform, "302", becke));
  EXPECT_EQ(summary(10), summary_text("ORCA7", "Treutler-Ahlrichs M3 (G-Cheb + alpha=0)", "row-dep (39..64)",
                                      "pruned (5 zones, r/R_BS)", "110 / 434 / 590 / 770 / 590", plain));
  for (int other : {0, -1, 11}) EXPECT_EQ(summary(other), summary(2)) << other;
}

// A shell on a boundary belongs to the inner zone on levels 2 to 7, to the outer one on level 10.
TEST(Pruning, ZonesAndTheirBoundaries) {
  const std::tuple<int, int, double, int> cases[] = {
      {2, 6, 0.6, 86},      {2, 6, 0.61, 302},   {3, 6, 0.6, 86},     {3, 6, 5.0, 590},  {3, 6, 5.01, 302},
      {6, 6, 0.1667, 50},   {6, 6, 0.1668, 86},  {6, 6, 0.9, 266},    {6, 6, 3.5, 302},  {6, 6, 3.51, 266},
      {6, 2, 4.5, 302},     {6, 2, 4.51, 266},   {7, 6, 3.5, 590},    {7, 11, 2.5, 590}, {7, 11, 2.51, 434},
      {10, 6, 0.1999, 110}, {10, 6, 0.2, 434},   {10, 6, 0.9, 770},   {10, 6, 4.0, 590}, {10, 1, 0.25, 302},
      {10, 2, 0.1, 50},     {10, 11, 0.05, 110}, {10, 53, 3.49, 770}, {10, 53, 3.5, 590}};
  for (const auto& [level, z, x, size] : cases)
    EXPECT_EQ(angular_size(angular_zones(grid_level(level), z), x), size) << level << ' ' << z << ' ' << x;
}

// Shell 20 of hydrogen's 39 lies exactly at the Bragg-Slater radius, the third boundary.
TEST(Pruning, ShellsOfRealAtoms) {
  std::ostringstream report;
  const std::vector<RADIAL_SHELL_T> shells = atomic_grid(grid_level(6), 1, report);
  EXPECT_EQ(shells[19].r, bragg_slater_radius(1));
  EXPECT_EQ(shells[19].rule->size(), 266);
  EXPECT_EQ(shells[20].rule->size(), 302);
  for (const RADIAL_SHELL_T& shell : atomic_grid(grid_level(9), 1, report)) EXPECT_EQ(shell.rule->size(), 302);
}

TEST(Grid, MissingAngularRuleIsReplacedWithAWarning) {
  GRID_LEVEL_T row = grid_level(1);
  row.angular_points = 100;
  std::ostringstream report;
  for (const RADIAL_SHELL_T& shell : atomic_grid(row, 6, report)) EXPECT_EQ(shell.rule->size(), 302);
  EXPECT_EQ(report.str(), " *** WARNING: Lebedev grid with 100 points not available. Using 302.\n");
}

// Every point of a lone atom above the threshold is kept, and nothing else.
TEST(Grid, PointsOfALoneAtom) {
  std::ostringstream report;
  for (int level = 1; level <= 10; ++level) {
    std::size_t expected = 0;
    for (const RADIAL_SHELL_T& shell : atomic_grid(grid_level(level), 8, report)) {
      for (double w : shell.rule->weight) expected += std::abs(shell.weight * w) >= 1e-14;
    }
    EXPECT_EQ(grid_of(bare_molecule("O 0.3 0.2 0.1"), level).size(), expected) << level;
  }
}

TEST(Grid, IntegratesAMolecularDensity) {
  const double bound[] = {1e-4, 2e-6, 2e-7, 2e-7, 2e-7, 2e-5, 2e-6, 5e-6, 2e-5, 3e-7};
  const std::string askew = "O 0.1 0.2 -0.1\nC 0.8 1.0 0.5\nH 1.7 0.9 1.1\nH 0.4 1.9 0.3\n";
  for (const std::string& geometry : {TESTS::water, askew}) {
    const MOLECULE_T molecule = bare_molecule(geometry);
    for (int level = 1; level <= 10; ++level)
      EXPECT_LT(std::abs(gaussian_error(molecule, grid_of(molecule, level))), bound[level - 1]) << level;
  }
}

// A ghost is an ordinary atom to the grid: its functions carry density too.
TEST(Grid, GhostAtomsCarryPointsAndAtomsFollowEachOther) {
  const MOLECULE_T molecule = bare_molecule(TESTS::water);
  MOLECULE_T with_ghosts = molecule;
  for (int i : {1, 2}) {
    with_ghosts.atoms[i].ghost = true;
    with_ghosts.atoms[i].charge = 0.0;
  }
  const MOLECULAR_GRID_T grid = grid_of(molecule, 6);
  const MOLECULAR_GRID_T ghostly = grid_of(with_ghosts, 6);
  EXPECT_EQ(grid.weight, ghostly.weight);
  EXPECT_EQ(grid.atom, ghostly.atom);
  EXPECT_TRUE(std::is_sorted(grid.atom.begin(), grid.atom.end()));
  EXPECT_EQ(grid.atom.back(), 2);
}

TEST(Grid, SameDigitsForEveryNumberOfThreads) {
  const MOLECULE_T molecule = bare_molecule(TESTS::caffeine);
  const int threads = omp_get_max_threads();
  omp_set_num_threads(1);
  const MOLECULAR_GRID_T one = grid_of(molecule, 6);
  omp_set_num_threads(3);
  const MOLECULAR_GRID_T three = grid_of(molecule, 6);
  omp_set_num_threads(threads);
  EXPECT_EQ(one.x, three.x);
  EXPECT_EQ(one.y, three.y);
  EXPECT_EQ(one.z, three.z);
  EXPECT_EQ(one.weight, three.weight);
  EXPECT_EQ(one.atom, three.atom);
}

#include "dft/partition.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "support/grids.hpp"
#include "support/molecules.hpp"

using namespace zentrix;
using namespace zentrix::DFT_GRID;
using TESTS::bare_molecule;

namespace {

double weight(const PARTITION_T& partition, int owner, std::array<double, 3> point) {
  double w = -1.0;
  partition.weights(owner, 1, &point[0], &point[1], &point[2], 0.0, &w);
  return w;
}

constexpr std::array all_kinds = {SIZE_ADJUSTMENT::none, SIZE_ADJUSTMENT::becke, SIZE_ADJUSTMENT::treutler};

}  // namespace

// The clamp acts from a ratio of radii of 1 + sqrt 2 on; the adjustment is odd under exchange of the atoms and makes the
// cell of the larger atom larger.
TEST(Partition, SizeAdjustment) {
  EXPECT_EQ(size_adjustment(SIZE_ADJUSTMENT::none, 3.0, 1.0), 0.0);
  EXPECT_NEAR(size_adjustment(SIZE_ADJUSTMENT::becke, 2.0, 1.0), -0.375, 1e-15);
  EXPECT_NEAR(size_adjustment(SIZE_ADJUSTMENT::becke, 1.0, 2.0), 0.375, 1e-15);
  EXPECT_NEAR(size_adjustment(SIZE_ADJUSTMENT::treutler, 4.0, 1.0), -0.375, 1e-15);
  EXPECT_EQ(size_adjustment(SIZE_ADJUSTMENT::becke, 1.0, 2.5), 0.5);
  EXPECT_EQ(size_adjustment(SIZE_ADJUSTMENT::becke, 2.5, 1.0), -0.5);
  const PARTITION_T cells(bare_molecule("C 0 0 0\nH 0 0 2", 1.0), SIZE_ADJUSTMENT::becke);
  EXPECT_GT(weight(cells, 0, {0.3, 0.0, 1.0}), 0.9);
}

TEST(Partition, WeightsOfAnIndependentProgram) {
  std::ifstream file(ZENTRIX_SOURCE_DIR "/tests/reference/becke.json");
  const nlohmann::json cases = nlohmann::json::parse(file);
  ASSERT_EQ(cases.size(), 2U);
  for (const auto& entry : cases) {
    std::string geometry;
    for (const auto& atom : entry["atoms"]) {
      geometry += fmt::format("{} {} {} {}\n", atom[0].get<std::string>(), atom[1].get<double>(), atom[2].get<double>(),
                              atom[3].get<double>());
    }
    for (int kind = 0; kind < 3; ++kind) {
      const PARTITION_T cells(bare_molecule(geometry, 1.0), all_kinds[kind]);
      for (const auto& point : entry["points"]) {
        EXPECT_NEAR(weight(cells, point[0], {point[1], point[2], point[3]}), point[4 + kind].get<double>(), 1e-13)
            << entry["molecule"] << point;
      }
    }
  }
}

// Odd numbers of points leave a part of the last vector empty; every instruction set must treat it alike, and the cells of a
// larger molecule must fill space.
TEST(Partition, WeightsOfAllAtomsSumToOneInEveryInstructionSet) {
  const MOLECULE_T molecule = bare_molecule(TESTS::caffeine);
  const MOLECULAR_GRID_T points = TESTS::grid_of(bare_molecule("C 0 0 0"), 1);
  const int n = 301;
  std::vector<double> first;
  for (kernels::ISA isa : {kernels::ISA::baseline, kernels::ISA::avx2, kernels::ISA::avx512}) {
    setenv("ZENTRIX_ISA", kernels::isa_name(isa), 1);
    const PARTITION_T cells(molecule, SIZE_ADJUSTMENT::becke);
    unsetenv("ZENTRIX_ISA");
    std::vector<double> sum(n);
    std::vector<double> all;
    for (int owner = 0; owner < cells.n_atoms(); ++owner) {
      std::vector<double> w(n + 1, 7.0);
      cells.weights(owner, n, &points.x[800], &points.y[800], &points.z[800], 0.0, w.data());
      EXPECT_EQ(w[n], 7.0);
      for (int p = 0; p < n; ++p) sum[p] += w[p];
      all.insert(all.end(), w.begin(), w.end());
    }
    for (double total : sum) EXPECT_NEAR(total, 1.0, 1e-14);
    if (first.empty()) first = all;
    for (std::size_t i = 0; i < all.size(); ++i) ASSERT_NEAR(all[i], first[i], 1e-15);
  }
}

// Atoms in one place (a ghost on a nucleus) must not divide by zero.
TEST(Partition, AtomsInOnePlaceShareTheirCell) {
  const PARTITION_T cells(bare_molecule("H 0 0 0\nH 0 0 0\nO 0 0 1.8", 1.0), SIZE_ADJUSTMENT::becke);
  const std::array<double, 3> point = {0.1, 0.2, 0.3};
  EXPECT_NEAR(weight(cells, 0, point), 0.5 * (1.0 - weight(cells, 2, point)), 1e-15);
  EXPECT_EQ(weight(cells, 0, point), weight(cells, 1, point));
  EXPECT_EQ(weight(PARTITION_T(bare_molecule("H 0 0 0"), SIZE_ADJUSTMENT::none), 0, point), 1.0);
}

// Leaving small weights out may not change the others.
TEST(Partition, NegligibleWeightsVanishAndTheOthersStay) {
  const PARTITION_T cells(bare_molecule(TESTS::caffeine), SIZE_ADJUSTMENT::none);
  const MOLECULAR_GRID_T points = TESTS::grid_of(bare_molecule("C 0 0 0"), 1);
  const int n = static_cast<int>(points.size());
  std::vector<double> all(n);
  std::vector<double> large(n);
  cells.weights(1, n, points.x.data(), points.y.data(), points.z.data(), 0.0, all.data());
  cells.weights(1, n, points.x.data(), points.y.data(), points.z.data(), 1e-3, large.data());
  int dropped = 0;
  for (int p = 0; p < n; ++p) {
    dropped += large[p] != all[p];
    EXPECT_TRUE(large[p] == all[p] || (large[p] == 0.0 && all[p] < 1e-3)) << p;
  }
  EXPECT_GT(dropped, 0);
}

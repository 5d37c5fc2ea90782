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

// In a large molecule most cells are never looked at for a point; one too many left out would spoil the sum.
TEST(Partition, WeightsSumToOneInALargeMolecule) {
  std::string lattice;
  for (int i = 0; i < 448; ++i) {  // 4 x 8 x 14 atoms at 1.6 angstrom, of two sizes, slightly out of place
    const double shift = 0.2 * std::sin(7.0 * i);
    lattice += fmt::format("{} {} {} {}\n", i % 3 == 0 ? "C" : "H", 1.6 * (i % 4) + shift, 1.6 * (i / 4 % 8) - shift,
                           1.6 * (i / 32));
  }
  const MOLECULE_T molecule = bare_molecule(lattice);
  for (SIZE_ADJUSTMENT kind : {SIZE_ADJUSTMENT::none, SIZE_ADJUSTMENT::becke}) {
    const PARTITION_T cells(molecule, kind);
    for (int atom : {0, 200, 447}) {
      std::vector<double> x, y, z;  // a spiral around an atom
      for (int p = 0; p < 64; ++p) {
        const double r = 0.1 * std::pow(1.09, p);
        x.push_back(molecule.atoms[atom].position[0] + r * std::cos(0.1 * p));
        y.push_back(molecule.atoms[atom].position[1] + r * std::sin(0.1 * p));
        z.push_back(molecule.atoms[atom].position[2] + 0.2 * r);
      }
      std::vector<double> sum(x.size()), w(x.size());
      for (int owner = 0; owner < cells.n_atoms(); ++owner) {
        cells.weights(owner, static_cast<int>(x.size()), x.data(), y.data(), z.data(), 0.0, w.data());
        for (std::size_t p = 0; p < x.size(); ++p) sum[p] += w[p];
      }
      for (double total : sum) EXPECT_NEAR(total, 1.0, 1e-14);
    }
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

namespace {

/// sum_p c_p w(p) over points that hang on `owner` at fixed offsets.
double weighted_sum(const MOLECULE_T& molecule, SIZE_ADJUSTMENT kind, int owner, const MOLECULAR_GRID_T& offsets,
                    std::vector<double>& weights) {
  const int n = static_cast<int>(offsets.size());
  const auto& [x0, y0, z0] = molecule.atoms[owner].position;
  std::vector<double> x, y, z;
  for (int p = 0; p < n; ++p) {
    x.push_back(x0 + offsets.x[p]);
    y.push_back(y0 + offsets.y[p]);
    z.push_back(z0 + offsets.z[p]);
  }
  weights.resize(n);
  PARTITION_T(molecule, kind).weights(owner, n, x.data(), y.data(), z.data(), 0.0, weights.data());
  double sum = 0.0;
  for (int p = 0; p < n; ++p) sum += offsets.weight[p] * weights[p];
  return sum;
}

std::vector<double> gradient_of_sum(const MOLECULE_T& molecule, SIZE_ADJUSTMENT kind, int owner,
                                    const MOLECULAR_GRID_T& offsets) {
  std::vector<double> weights, x, y, z, value;
  weighted_sum(molecule, kind, owner, offsets, weights);
  const auto& [x0, y0, z0] = molecule.atoms[owner].position;
  for (std::size_t p = 0; p < offsets.size(); ++p) {
    x.push_back(x0 + offsets.x[p]);
    y.push_back(y0 + offsets.y[p]);
    z.push_back(z0 + offsets.z[p]);
    value.push_back(offsets.weight[p] * weights[p]);
  }
  std::vector<double> gradient(3 * molecule.atoms.size());
  PARTITION_T(molecule, kind)
      .add_gradient(owner, static_cast<int>(x.size()), x.data(), y.data(), z.data(), value.data(), gradient.data());
  return gradient;
}

}  // namespace

// Five-point differences of the weights of points that move with their owner; errors of the points off the owner, of the
// size adjustment's slope or of the owner's own share show.
TEST(Partition, GradientAgainstFiniteDifferences) {
  const std::array<std::string, 2> geometries = {"H 1.75 0.6 -0.2\nO 0 0.1 0\nF -0.7 2.5 0.4\n",
                                                 "Li 0 0 0\nH 0.2 0.1 3\nH -0.1 0.3 4.6\nO 3 1 0\n"};
  std::ostringstream report;
  MOLECULAR_GRID_T offsets;  // 61 points around the origin with weights of both signs
  for (int p = 0; p < 61; ++p) {
    const double r = 0.05 * std::pow(1.08, p);
    offsets.x.push_back(r * std::cos(2.4 * p) * std::sin(1.0 + p));
    offsets.y.push_back(r * std::sin(2.4 * p) * std::sin(1.0 + p));
    offsets.z.push_back(r * std::cos(1.0 + p));
    offsets.weight.push_back(std::cos(0.7 * p));
  }
  for (const std::string& geometry : geometries) {
    for (SIZE_ADJUSTMENT kind : all_kinds) {
      MOLECULE_T molecule = bare_molecule(geometry, 1.0);
      for (int owner = 0; owner < static_cast<int>(molecule.atoms.size()); ++owner) {
        const std::vector<double> gradient = gradient_of_sum(molecule, kind, owner, offsets);
        std::array<double, 3> total = {};
        for (std::size_t i = 0; i < gradient.size(); ++i) {
          double& coordinate = molecule.atoms[i / 3].position[i % 3];
          const double start = coordinate;
          std::vector<double> unused;
          const auto at = [&](double step) {
            coordinate = start + step;
            const double sum = weighted_sum(molecule, kind, owner, offsets, unused);
            coordinate = start;
            return sum;
          };
          const double h = 1e-3;
          const double numerical = (8.0 * (at(h) - at(-h)) - (at(2.0 * h) - at(-2.0 * h))) / (12.0 * h);
          EXPECT_NEAR(gradient[i], numerical, 1e-9) << geometry << "owner " << owner << ", coordinate " << i;
          total[i % 3] += gradient[i];
        }
        for (double sum : total) EXPECT_NEAR(sum, 0.0, 1e-13);
      }
    }
  }
}

// Points next to other nuclei, far outside and on a nucleus, a ghost on an atom: no infinities, the same in every
// instruction set.
TEST(Partition, GradientStaysFinite) {
  MOLECULE_T molecule = bare_molecule(TESTS::caffeine);
  molecule.atoms.push_back(molecule.atoms[3]);
  const MOLECULAR_GRID_T far = TESTS::grid_of(bare_molecule("C 0 0 0"), 1);
  MOLECULAR_GRID_T offsets;
  for (std::size_t p = 0; p < far.size(); p += 7) {
    offsets.x.push_back(far.x[p]);
    offsets.y.push_back(far.y[p]);
    offsets.z.push_back(far.z[p]);
  }
  for (int axis = 0; axis < 3; ++axis) {
    std::vector<double>& values = axis == 0 ? offsets.x : axis == 1 ? offsets.y : offsets.z;
    for (int atom : {5, 0, 3}) values.push_back(molecule.atoms[atom].position[axis] - molecule.atoms[5].position[axis]);
  }
  offsets.weight.assign(offsets.x.size(), 1.0);
  std::vector<double> first;
  for (kernels::ISA isa : {kernels::ISA::baseline, kernels::ISA::avx2, kernels::ISA::avx512}) {
    setenv("ZENTRIX_ISA", kernels::isa_name(isa), 1);
    const std::vector<double> gradient = gradient_of_sum(molecule, SIZE_ADJUSTMENT::becke, 5, offsets);
    unsetenv("ZENTRIX_ISA");
    if (first.empty()) first = gradient;
    for (std::size_t i = 0; i < gradient.size(); ++i) ASSERT_NEAR(gradient[i], first[i], 1e-11) << i;
  }
}

#include "dft/partition.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <numeric>

#include "linalg/matrix.hpp"
#include "support/differences.hpp"
#include "support/grids.hpp"
#include "support/instruction_sets.hpp"
#include "support/molecules.hpp"
#include "support/reference.hpp"

using namespace zentrix;
using namespace zentrix::DFT_GRID;
using TESTS::bare_molecule;

namespace {

void add_point(double x, double y, double z, double factor, MOLECULAR_GRID_T& points) {
  points.x.push_back(x);
  points.y.push_back(y);
  points.z.push_back(z);
  points.weight.push_back(factor);
}

/// 61 points around the origin, near and far, with factors of both signs. A part of the last vector stays empty.
MOLECULAR_GRID_T spiral() {
  MOLECULAR_GRID_T points;
  for (int p = 0; p < 61; ++p) {
    const double r = 0.05 * std::pow(1.09, p);
    add_point(r * std::cos(0.1 * p), r * std::sin(0.1 * p), 0.2 * r, std::cos(0.7 * p), points);
  }
  return points;
}

/// Points that hang on an atom at fixed offsets.
MOLECULAR_GRID_T hung_on(const ATOM_T& owner, MOLECULAR_GRID_T points) {
  for (double& x : points.x) x += owner.position[0];
  for (double& y : points.y) y += owner.position[1];
  for (double& z : points.z) z += owner.position[2];
  return points;
}

std::vector<double> weights(const PARTITION_T& cells, int owner, const MOLECULAR_GRID_T& points, double negligible = 0.0) {
  std::vector<double> w(points.size() + 1, 7.0);
  cells.weights(owner, static_cast<int>(points.size()), points.x.data(), points.y.data(), points.z.data(), negligible,
                w.data());
  EXPECT_EQ(w.back(), 7.0) << "written behind the points";
  w.pop_back();
  return w;
}

double weight(const PARTITION_T& cells, int owner, std::array<double, 3> point) {
  MOLECULAR_GRID_T one;
  add_point(point[0], point[1], point[2], 1.0, one);
  return weights(cells, owner, one)[0];
}

/// The factors of points that hang on `owner` times their weights.
std::vector<double> weighted(const MOLECULE_T& molecule, SIZE_ADJUSTMENT kind, int owner, const MOLECULAR_GRID_T& offsets) {
  std::vector<double> values = weights(PARTITION_T(molecule, kind), owner, hung_on(molecule.atoms[owner], offsets));
  for (std::size_t p = 0; p < values.size(); ++p) values[p] *= offsets.weight[p];
  return values;
}

/// The gradient of their sum.
std::vector<double> gradient_of_sum(const MOLECULE_T& molecule, SIZE_ADJUSTMENT kind, int owner,
                                    const MOLECULAR_GRID_T& offsets) {
  const MOLECULAR_GRID_T points = hung_on(molecule.atoms[owner], offsets);
  const std::vector<double> values = weighted(molecule, kind, owner, offsets);
  std::vector<double> gradient(3 * molecule.atoms.size());
  PARTITION_T(molecule, kind)
      .add_gradient(owner, static_cast<int>(points.size()), points.x.data(), points.y.data(), points.z.data(), values.data(),
                    gradient.data());
  return gradient;
}

constexpr std::array all_kinds = {SIZE_ADJUSTMENT::none, SIZE_ADJUSTMENT::becke, SIZE_ADJUSTMENT::treutler};

}  // namespace

// Radii that differ more than the clamp of the adjustment allows are among them.
TEST(Partition, WeightsOfAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("becke");
  ASSERT_EQ(cases.size(), 2U);
  for (const auto& entry : cases) {
    const MOLECULE_T molecule = bare_molecule(TESTS::geometry_of(entry["atoms"]), 1.0);
    for (int kind = 0; kind < 3; ++kind) {
      const PARTITION_T cells(molecule, all_kinds[kind]);
      for (const auto& point : entry["points"]) {
        EXPECT_NEAR(weight(cells, point[0], {point[1], point[2], point[3]}), point[4 + kind].get<double>(), 1e-13)
            << entry["molecule"] << point;
      }
    }
  }
}

// In a large molecule most cells are never looked at for a point; one too many left out would spoil the sum.
TEST(Partition, WeightsSumToOneInALargeMoleculeInEveryInstructionSet) {
  std::string lattice;
  for (int i = 0; i < 448; ++i) {  // 4 x 8 x 14 atoms at 1.6 angstrom, of two sizes, slightly out of place
    const double shift = 0.2 * std::sin(7.0 * i);
    lattice += fmt::format("{} {} {} {}\n", i % 3 == 0 ? "C" : "H", 1.6 * (i % 4) + shift, 1.6 * (i / 4 % 8) - shift,
                           1.6 * (i / 32));
  }
  const MOLECULE_T molecule = bare_molecule(lattice);
  for (kernels::ISA isa : TESTS::available_isas()) {
    const TESTS::ISA_GUARD guard(isa);
    for (SIZE_ADJUSTMENT kind : {SIZE_ADJUSTMENT::none, SIZE_ADJUSTMENT::becke}) {
      const PARTITION_T cells(molecule, kind);
      for (int atom : {0, 200}) {
        const MOLECULAR_GRID_T points = hung_on(molecule.atoms[atom], spiral());
        VECTOR sum = VECTOR::Zero(static_cast<Eigen::Index>(points.size()));
        for (int owner = 0; owner < cells.n_atoms(); ++owner)
          sum += VECTOR::Map(weights(cells, owner, points).data(), sum.size());
        EXPECT_LT((sum.array() - 1.0).abs().maxCoeff(), 1e-14);
      }
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
  const std::vector<double> all = weights(cells, 1, points), large = weights(cells, 1, points, 1e-3);
  int dropped = 0;
  for (std::size_t p = 0; p < all.size(); ++p) {
    dropped += large[p] != all[p];
    EXPECT_TRUE(large[p] == all[p] || (large[p] == 0.0 && all[p] < 1e-3)) << p;
  }
  EXPECT_GT(dropped, 0);
}

// Five-point differences of the weights of points that move with their owner; errors of the points off the owner, of the
// size adjustment's slope or of the owner's own share show.
TEST(Partition, GradientAgainstFiniteDifferences) {
  const std::array<std::string, 2> geometries = {"H 1.75 0.6 -0.2\nO 0 0.1 0\nF -0.7 2.5 0.4\n",
                                                 "Li 0 0 0\nH 0.2 0.1 3\nH -0.1 0.3 4.6\nO 3 1 0\n"};
  const MOLECULAR_GRID_T offsets = spiral();
  for (const std::string& geometry : geometries) {
    for (SIZE_ADJUSTMENT kind : all_kinds) {
      const MOLECULE_T molecule = bare_molecule(geometry, 1.0);
      for (int owner = 0; owner < static_cast<int>(molecule.atoms.size()); ++owner) {
        const std::vector<double> gradient = gradient_of_sum(molecule, kind, owner, offsets);
        std::array<double, 3> total = {};
        for (std::size_t i = 0; i < gradient.size(); ++i) {
          const auto sum_at = [&](double step) {
            MOLECULE_T moved = molecule;
            moved.atoms[i / 3].position[i % 3] += step;
            const std::vector<double> values = weighted(moved, kind, owner, offsets);
            return std::accumulate(values.begin(), values.end(), 0.0);
          };
          EXPECT_NEAR(gradient[i], TESTS::derivative(sum_at, 1e-3), 1e-9)
              << geometry << "owner " << owner << ", coordinate " << i;
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
  for (std::size_t p = 0; p < far.size(); p += 7) add_point(far.x[p], far.y[p], far.z[p], 1.0, offsets);
  const auto& owner = molecule.atoms[5].position;
  for (int atom : {5, 0, 3}) {
    const auto& nucleus = molecule.atoms[atom].position;
    add_point(nucleus[0] - owner[0], nucleus[1] - owner[1], nucleus[2] - owner[2], 1.0, offsets);
  }
  std::vector<double> first;
  for (kernels::ISA isa : TESTS::available_isas()) {
    const TESTS::ISA_GUARD guard(isa);
    const std::vector<double> gradient = gradient_of_sum(molecule, SIZE_ADJUSTMENT::becke, 5, offsets);
    if (first.empty()) first = gradient;
    for (std::size_t i = 0; i < gradient.size(); ++i) ASSERT_NEAR(gradient[i], first[i], 1e-11) << i;
  }
}

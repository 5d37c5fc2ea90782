#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "geometry/covalent_radii.hpp"
#include "geometry/optimizer.hpp"
#include "support/surfaces.hpp"

// Minima of real molecules against those that an independent program finds from the same start
// (tests/reference/make_optimization_references.py). bench/compare_optimizations.py makes the table of all of them.

namespace {

using namespace zentrix;

/// Lengths between atoms nearer than 1.2 times the sum of their covalent radii, zero elsewhere.
MATRIX bond_lengths(const MOLECULE_T& molecule, const VECTOR& x) {
  const auto n = static_cast<Eigen::Index>(molecule.atoms.size());
  const auto radius = [&](Eigen::Index a) {
    return INTERNAL_COORDS::covalent_radius(molecule.atoms[static_cast<std::size_t>(a)].z);
  };
  MATRIX lengths = MATRIX::Zero(n, n);
  for (Eigen::Index i = 0; i < n; ++i) {
    for (Eigen::Index j = 0; j < i; ++j) {
      const double r = (x.segment<3>(3 * i) - x.segment<3>(3 * j)).norm();
      if (r < 1.2 * (radius(i) + radius(j))) lengths(i, j) = r;
    }
  }
  return lengths;
}

TEST(OptimizationReference, MinimaAreThoseOfAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("optimizations");
  ASSERT_GE(cases.size(), 25U);
  // One of every kind: diatomic, linear, planar centre, radical, charged, hydrogen-bonded.
  const std::set<std::string> short_run = {"hydrogen fluoride", "hydrogen cyanide", "formate",
                                           "methyl radical",    "ammonium",         "hydrogen fluoride dimer"};
  const bool all = std::getenv("ZENTRIX_LONG_TESTS") != nullptr;
  for (const auto& entry : cases) {
    const auto name = entry["molecule"].get<std::string>();
    if (!all && short_run.count(name) == 0) continue;
    SCOPED_TRACE(name);
    const TESTS::SURFACE_CASE_T test = TESTS::surface_case(entry);
    GRADIENTS::SCF_SURFACE_T surface = test.surface();
    OPTIMIZER::OPTIMIZER_OBSERVER_T silent;
    const OPTIMIZER::OPTIMIZATION_T result = OPTIMIZER::optimize(surface, {}, silent);
    ASSERT_EQ(result.outcome, OPTIMIZER::OUTCOME::converged);
    EXPECT_NEAR(result.point.energy, entry["energy"].get<double>(), 1e-6);
    VECTOR expected(result.positions.size());
    for (Eigen::Index k = 0; k < expected.size(); ++k)
      expected(k) = entry["optimized"][static_cast<std::size_t>(k / 3)][static_cast<std::size_t>(k % 3)].get<double>();
    expected *= BOHR_PER_ANGSTROM;
    const MATRIX difference = bond_lengths(test.molecule, result.positions) - bond_lengths(test.molecule, expected);
    EXPECT_LT(difference.lpNorm<Eigen::Infinity>() / BOHR_PER_ANGSTROM, 1e-3);
  }
}

}  // namespace

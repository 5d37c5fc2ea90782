#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "geometry/covalent_radii.hpp"
#include "geometry/optimizer.hpp"
#include "support/surfaces.hpp"
#include "unit/geometry/samples.hpp"

// Minima of real molecules against those that an independent program finds from the same start
// (tests/reference/make_optimization_references.py). bench/compare_optimizations.py makes the table of all of them.

namespace {

using namespace zentrix;

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
    // Lengths between atoms nearer than 1.2 times the sum of their covalent radii.
    const std::vector<ATOM_T>& atoms = test.molecule.atoms;
    for (std::size_t a = 0; a < atoms.size(); ++a) {
      for (std::size_t b = 0; b < a; ++b) {
        const auto i = static_cast<Eigen::Index>(a), j = static_cast<Eigen::Index>(b);
        const double length = TESTS::distance(expected, i, j);
        const double radii = INTERNAL_COORDS::covalent_radius(atoms[a].z) + INTERNAL_COORDS::covalent_radius(atoms[b].z);
        if (length * BOHR_PER_ANGSTROM > 1.2 * radii) continue;
        EXPECT_NEAR(TESTS::distance(result.positions, i, j) / BOHR_PER_ANGSTROM, length, 1e-3) << a << " " << b;
      }
    }
  }
}

}  // namespace

#include <gtest/gtest.h>

#include <cmath>

#include "scf/incremental_jk.hpp"
#include "support/molecules.hpp"

// Builds from density changes must give what full builds give, through many steps and after jumps.

namespace {

using namespace zentrix;
using namespace zentrix::SCF;

/// A run that converges and jumps back once, in two spin channels and without exchange.
TEST(INCREMENTAL_JK, FollowsTheDensitiesOfARunLikeFullBuilds) {
  const MOLECULE_T molecule = TESTS::sample_molecule(TESTS::formaldehyde, "6-31G*");
  const INTEGRALS_2E::JK_BUILDER jk(molecule);
  INCREMENTAL_JK_T incremental(jk), without_exchange(jk);
  const auto random_symmetric = [&] {
    const MATRIX half = MATRIX::Random(molecule.n_basis, molecule.n_basis);
    return MATRIX(half + half.transpose());
  };
  const MATRIX limit = random_symmetric();
  for (int step = 0; step < 24; ++step) {
    const double distance = std::pow(10.0, -0.5 * (step % 17));
    const SPIN_MATRICES_T densities = {limit + distance * random_symmetric(), limit + distance * random_symmetric()};
    const MATRIX total = densities[0] + densities[1];
    const auto whole = jk.build(std::span<const MATRIX>(&total, 1), densities);
    const auto& built = incremental.build(densities, true);
    EXPECT_LT((built.j[0] - whole.j[0]).cwiseAbs().maxCoeff(), 1e-10) << "step " << step;
    ASSERT_EQ(built.k.size(), 2U);
    for (std::size_t s = 0; s < 2; ++s) EXPECT_LT((built.k[s] - whole.k[s]).cwiseAbs().maxCoeff(), 1e-10) << "step " << step;
    const auto& only_j = without_exchange.build(densities, false);
    EXPECT_TRUE(only_j.k.empty());
    EXPECT_LT((only_j.j[0] - whole.j[0]).cwiseAbs().maxCoeff(), 1e-10) << "step " << step;
  }
}

}  // namespace

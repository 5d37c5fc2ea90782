#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "scf/incremental_jk.hpp"
#include "support/molecules.hpp"

// Builds from density changes must give what full builds give, through many steps and after jumps.

namespace {

using namespace zentrix;
using namespace zentrix::SCF;

MATRIX random_symmetric(Eigen::Index n, std::mt19937& generator) {
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  MATRIX m = MATRIX::NullaryExpr(n, n, [&] { return element(generator); });
  return m + m.transpose().eval();
}

double largest_difference(const INTEGRALS_2E::JK_RESULT_T& a, const INTEGRALS_2E::JK_RESULT_T& b) {
  EXPECT_EQ(a.j.size(), b.j.size());
  EXPECT_EQ(a.k.size(), b.k.size());
  double worst = (a.j[0] - b.j[0]).cwiseAbs().maxCoeff();
  for (std::size_t s = 0; s < a.k.size(); ++s) worst = std::max(worst, (a.k[s] - b.k[s]).cwiseAbs().maxCoeff());
  return worst;
}

/// A run that converges and jumps back once, in two spin channels.
TEST(INCREMENTAL_JK, FollowsTheDensitiesOfARunLikeFullBuilds) {
  const MOLECULE_T molecule = TESTS::sample_molecule(TESTS::formaldehyde, "6-31G*");
  const INTEGRALS_2E::JK_BUILDER jk(molecule);
  INCREMENTAL_JK_T incremental(jk);
  std::mt19937 generator(7);
  const MATRIX limit = random_symmetric(molecule.n_basis, generator);
  for (int step = 0; step < 24; ++step) {
    const double distance = std::pow(10.0, -0.5 * (step % 17));
    SPIN_MATRICES_T densities;
    for (int s = 0; s < 2; ++s) densities.push_back(limit + distance * random_symmetric(molecule.n_basis, generator));
    const MATRIX total = densities[0] + densities[1];
    const auto whole = jk.build(std::span<const MATRIX>(&total, 1), densities);
    EXPECT_LT(largest_difference(incremental.build(densities, true), whole), 1e-10) << "step " << step;
  }
}

TEST(INCREMENTAL_JK, LeavesOutExchangeWhenNobodyAsks) {
  const MOLECULE_T molecule = TESTS::sample_molecule(TESTS::water, "STO-3G");
  const INTEGRALS_2E::JK_BUILDER jk(molecule);
  INCREMENTAL_JK_T incremental(jk);
  const MATRIX density = MATRIX::Identity(molecule.n_basis, molecule.n_basis);
  for (const double scale : {1.0, 1.001}) {
    const MATRIX scaled = scale * density;
    const auto& built = incremental.build({scaled}, false);
    EXPECT_TRUE(built.k.empty());
    const std::span<const MATRIX> for_j(&scaled, 1);
    EXPECT_LT((built.j[0] - jk.build(for_j, {}).j[0]).cwiseAbs().maxCoeff(), 1e-12);
  }
}

}  // namespace

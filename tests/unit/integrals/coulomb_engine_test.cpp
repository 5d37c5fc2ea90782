#include "integrals/coulomb_engine.hpp"

#include <gtest/gtest.h>

#include "integrals/boys.hpp"
#include "molecule/cartesian.hpp"
#include "two_electron_samples.hpp"

namespace zentrix::INTEGRALS_2E {
namespace {

using samples::atom;
using samples::ISA_GUARD;
using samples::random_symmetric;
using samples::shell;

/// Five centres, two of them at one place and one far away; tight, diffuse and shared exponents, s to g.
MOLECULE_T mixed_molecule() {
  MOLECULE_T m;
  m.atoms = {atom(0.0, 0.0, 0.0), atom(0.3, -0.4, 1.9), atom(0.0, 0.0, 0.0), atom(4.0, 3.0, -2.0), atom(0.0, 40.0, 0.0)};
  m.shells = {shell(0, 0, {5000.0, 80.0, 2.1, 0.4}, {0.05, 0.3, 0.8, 0.3}),
              shell(0, 0, {2.1, 0.4, 0.02}, {-0.4, 0.5, 0.2}),
              shell(0, 1, {2.1, 0.4}, {1.2, 0.3}),
              shell(1, 2, {1.3}, {1.0}),
              shell(1, 3, {0.9}, {1.0}),
              shell(2, 1, {11.0, 0.4}, {0.3, 0.9}),
              shell(3, 4, {0.7}, {1.0}),
              shell(3, 0, {0.01}, {1.0}),
              shell(4, 0, {2.0, 0.003}, {0.9, 0.1})};
  return samples::finish(std::move(m), false);
}

MATRIX build(const MOLECULE_T& m, const MATRIX& density, double threshold) {
  return COULOMB_ENGINE(m).build({&density, 1}, threshold).front();
}

double largest_difference(const MATRIX& a, const MATRIX& b) { return (a - b).cwiseAbs().maxCoeff(); }

TEST(coulomb_engine, agrees_with_reference_integrals_from_s_to_h_in_every_instruction_set) {
  for (const MOLECULE_T& m : {mixed_molecule(), samples::mixed_molecule(5, false)}) {
    const MATRIX d = random_symmetric(cartesian_offsets(m).back(), 11);
    const MATRIX expected = samples::brute_force(m, d).j[0];
    for (kernels::ISA isa : samples::available_isas()) {
      const ISA_GUARD guard(isa);
      EXPECT_LT(largest_difference(build(m, d, 1e-14), expected), 1e-11 * expected.cwiseAbs().maxCoeff())
          << kernels::isa_name(isa);
    }
  }
}

TEST(coulomb_engine, several_densities_share_a_build) {
  const MOLECULE_T m = mixed_molecule();
  const int n = cartesian_offsets(m).back();
  // Very different sizes: the small one must not lose to a screening made for the large one, nor the other way round.
  const std::vector<MATRIX> densities = {random_symmetric(n, 1), 1e-6 * random_symmetric(n, 2), MATRIX::Zero(n, n)};
  const std::vector<MATRIX> together = COULOMB_ENGINE(m).build(densities, 1e-13);
  ASSERT_EQ(together.size(), densities.size());
  for (std::size_t k = 0; k < densities.size(); ++k)
    EXPECT_LT(largest_difference(together[k], build(m, densities[k], 1e-15)), 1e-11) << k;
  EXPECT_TRUE(COULOMB_ENGINE(m).build({}, 1e-11).empty());
}

TEST(coulomb_engine, precise_boys_mode_reaches_the_kernels) {
  const MOLECULE_T m = mixed_molecule();
  const MATRIX d = random_symmetric(cartesian_offsets(m).back(), 4);
  const MATRIX ordinary = build(m, d, 1e-13);
  const BOYS::PRECISE_MODE_GUARD guard;
  const MATRIX precise = build(m, d, 1e-13);
  EXPECT_LT(largest_difference(precise, ordinary), 1e-12 * ordinary.cwiseAbs().maxCoeff());
  EXPECT_NE(precise, ordinary);
}

}  // namespace
}  // namespace zentrix::INTEGRALS_2E

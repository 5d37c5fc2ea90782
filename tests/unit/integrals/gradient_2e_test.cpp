#include "integrals/gradient_2e.hpp"

#include <gtest/gtest.h>

#include "integrals/integrals_2e.hpp"
#include "molecule/cartesian.hpp"
#include "report/stop.hpp"
#include "support/differences.hpp"
#include "two_electron_samples.hpp"

namespace zentrix::INTEGRALS_2E {
namespace {

using samples::atom;
using samples::ISA_GUARD;
using samples::random_symmetric;
using samples::shell;

constexpr double TIGHT = 1e-17;  // threshold: nothing is neglected

/// Four centres, two of them at one place; s to `lmax`, tight, diffuse and shared exponents.
MOLECULE_T gradient_molecule(int lmax, bool spherical) {
  MOLECULE_T m;
  m.atoms = {atom(0.0, 0.1, -0.2), atom(1.3, -0.7, 0.4), atom(1.3, -0.7, 0.4), atom(-0.9, 1.2, 1.5)};
  m.shells = {shell(0, 0, {71.6, 13.0, 3.5}, {0.15, 0.54, 0.44}),
              shell(1, 0, {0.4}, {1.0}),
              shell(0, 1, {2.9, 0.68}, {0.4, 0.7}),
              shell(2, 1, {0.09}, {1.0}),
              shell(3, 0, {2.9, 0.68}, {-0.4, 0.9}),
              shell(3, 1, {2.9, 0.68}, {0.3, 0.9})};
  if (lmax >= 2) m.shells.insert(m.shells.end(), {shell(1, 2, {1.1}, {1.0}), shell(3, 2, {1.9, 0.5}, {0.4, 0.8})});
  if (lmax >= 3) m.shells.push_back(shell(0, 3, {0.8}, {1.0}));
  return samples::finish(std::move(m), spherical);
}

/// One shell of every angular momentum, two of the highest, on four centres.
MOLECULE_T every_class_molecule() {
  MOLECULE_T m = gradient_molecule(1, false);
  m.shells = {shell(0, 0, {1.4}, {1.0}), shell(1, 1, {0.5}, {1.0}), shell(3, 2, {1.1}, {1.0}),
              shell(0, 3, {0.8}, {1.0}), shell(2, 4, {0.9}, {1.0}), shell(3, 4, {1.2}, {1.0})};
  return samples::finish(std::move(m), false);
}

double relative_difference(const VECTOR& a, const VECTOR& b) {
  return (a - b).cwiseAbs().maxCoeff() / std::max(1.0, b.cwiseAbs().maxCoeff());
}

/// The exchange gradient by brute force over the scalar derivative integrals.
VECTOR reference_exchange_gradient(const MOLECULE_T& m, std::span<const MATRIX> functions) {
  std::vector<MATRIX> densities;
  for (const MATRIX& d : functions) densities.push_back(to_cartesian(m, d));
  const std::vector<int> first = cartesian_offsets(m);
  const int n = static_cast<int>(m.shells.size());
  VECTOR gradient = VECTOR::Zero(3 * static_cast<int>(m.atoms.size()));
  std::vector<double> blocks;
  for (int a = 0; a < n; ++a)
    for (int b = 0; b <= a; ++b)
      for (int c = 0; c <= a; ++c)
        for (int d = 0; d <= (c == a ? b : c); ++d) {
          compute_deri_contracted(samples::centered(m, a), samples::centered(m, b), samples::centered(m, c),
                                  samples::centered(m, d), blocks);
          const double factor = 2.0 * (a == b ? 0.5 : 1.0) * (c == d ? 0.5 : 1.0) * (a == c && b == d ? 0.5 : 1.0);
          const int shell[4] = {a, b, c, d};
          const std::size_t size = blocks.size() / 12;
          std::size_t at = 0;
          for (int i = first[a]; i < first[a + 1]; ++i)
            for (int j = first[b]; j < first[b + 1]; ++j)
              for (int k = first[c]; k < first[c + 1]; ++k)
                for (int l = first[d]; l < first[d + 1]; ++l, ++at) {
                  double weight = 0.0;
                  for (const MATRIX& p : densities) weight += p(i, k) * p(j, l) + p(i, l) * p(j, k);
                  for (int x = 0; x < 12; ++x)
                    gradient[3 * m.shells[static_cast<std::size_t>(shell[x / 3])].atom + x % 3] +=
                        factor * weight * blocks[static_cast<std::size_t>(x) * size + at];
                }
        }
  return gradient;
}

TEST(gradient_2e, exchange_agrees_with_scalar_derivative_integrals) {
  for (const MOLECULE_T& m : {gradient_molecule(1, false), gradient_molecule(2, true), every_class_molecule()}) {
    const std::vector<MATRIX> d = {random_symmetric(m.n_basis, 31), random_symmetric(m.n_basis, 32)};
    const VECTOR expected = reference_exchange_gradient(m, d);
    for (kernels::ISA isa : samples::available_isas()) {
      const ISA_GUARD guard(isa);
      EXPECT_LT(relative_difference(exchange_gradient(m, d, TIGHT), expected), 1e-11)
          << m.shells.back().l << kernels::isa_name(isa);
      const VECTOR one_by_one = exchange_gradient(m, {&d[0], 1}, TIGHT) + exchange_gradient(m, {&d[1], 1}, TIGHT);
      EXPECT_LT(relative_difference(one_by_one, expected), 1e-11) << m.shells.back().l << kernels::isa_name(isa);
    }
  }
}

TEST(gradient_2e, coulomb_agrees_with_differences_of_its_energy) {
  for (bool spherical : {false, true}) {
    const MOLECULE_T m = gradient_molecule(spherical ? 3 : 2, spherical);
    const MATRIX d = random_symmetric(m.n_basis, 21);
    const VECTOR gradient = coulomb_gradient(m, d, TIGHT);
    VECTOR differences(gradient.size());
    for (int n = 0; n < gradient.size(); ++n) {
      const auto energy_at = [&](double step) {
        MOLECULE_T moved = m;
        moved.atoms[static_cast<std::size_t>(n / 3)].position[static_cast<std::size_t>(n % 3)] += step;
        return 0.5 * d.cwiseProduct(JK_BUILDER(moved).build({&d, 1}, {}, TIGHT).j.front()).sum();
      };
      differences[n] = TESTS::derivative(energy_at, 4e-3);
    }
    EXPECT_LT(relative_difference(gradient, differences), 1e-8);
  }
}

/// A chain, so that most quartets are neglected: whole vectors of kets, lists cut short, primitives left out.
TEST(gradient_2e, neglected_quartets_stay_below_the_threshold) {
  MOLECULE_T m;
  for (int n = 0; n < 9; ++n) {
    m.atoms.push_back(atom(0.3 * (n % 2), 0.2 * (n % 3), 3.1 * n));
    m.shells.push_back(shell(n, 0, {71.6, 13.0, 3.5}, {0.15, 0.54, 0.44}));
    m.shells.push_back(shell(n, 0, {0.7, 0.25}, {0.4, 0.7}));
    m.shells.push_back(shell(n, 1, {2.9, 0.68}, {0.4, 0.7}));
  }
  m = samples::finish(std::move(m), false);
  const std::vector<MATRIX> d = {random_symmetric(m.n_basis, 41)};
  const VECTOR exact = exchange_gradient(m, d, TIGHT);
  for (double threshold : {1e-8, 1e-11}) {
    const double error = (exchange_gradient(m, d, threshold) - exact).cwiseAbs().maxCoeff();
    EXPECT_LT(error, 1000.0 * threshold) << threshold;
    EXPECT_GT(error, 0.0) << threshold;
  }
  EXPECT_LT((exact.reshaped(3, exact.size() / 3).rowwise().sum()).norm(), 1e-9);
}

TEST(gradient_2e, stops_above_the_working_limit) {
  MOLECULE_T m = gradient_molecule(1, false);
  m.shells.push_back(shell(0, LMAX_GRAD + 1, {1.0}, {1.0}));
  m = samples::finish(std::move(m), false);
  const std::vector<MATRIX> d = {random_symmetric(m.n_basis, 51)};
  EXPECT_THROW((void)exchange_gradient(m, d), run_stopped);
  EXPECT_THROW((void)coulomb_gradient(m, d[0]), run_stopped);
}

}  // namespace
}  // namespace zentrix::INTEGRALS_2E

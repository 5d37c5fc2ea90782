#include "integrals/gradient_2e.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <functional>

#include "integrals/integrals_2e.hpp"
#include "report/stop.hpp"
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
  if (lmax >= 4) m.shells.push_back(shell(2, 4, {0.9}, {1.0}));
  return samples::finish(std::move(m), spherical);
}

using ENERGY = std::function<double(const MOLECULE_T&)>;

/// Derivatives by central differences of four points, error of fourth order in the step.
VECTOR differences(MOLECULE_T m, const ENERGY& energy) {
  constexpr double step = 4e-3;
  VECTOR gradient(3 * static_cast<int>(m.atoms.size()));
  for (int n = 0; n < gradient.size(); ++n) {
    double& x = m.atoms[static_cast<std::size_t>(n / 3)].position[static_cast<std::size_t>(n % 3)];
    const double at = x;
    const auto value = [&](double displacement) {
      x = at + displacement;
      return energy(m);
    };
    gradient[n] = (8.0 * (value(step) - value(-step)) - (value(2 * step) - value(-2 * step))) / (12.0 * step);
    x = at;
  }
  return gradient;
}

double coulomb_energy(const MOLECULE_T& m, const MATRIX& d) {
  const auto result = JK_BUILDER(m).build({&d, 1}, {}, TIGHT);
  return 0.5 * d.cwiseProduct(result.j.front()).sum();
}
double exchange_energy(const MOLECULE_T& m, std::span<const MATRIX> densities) {
  const auto result = JK_BUILDER(m).build({}, densities, TIGHT);
  double energy = 0.0;
  for (std::size_t s = 0; s < densities.size(); ++s) energy += 0.5 * densities[s].cwiseProduct(result.k[s]).sum();
  return energy;
}

double relative_difference(const VECTOR& a, const VECTOR& b) {
  return (a - b).cwiseAbs().maxCoeff() / std::max(1.0, b.cwiseAbs().maxCoeff());
}

TEST(gradient_2e, differences_of_the_energies) {
  for (bool spherical : {false, true}) {
    const MOLECULE_T m = gradient_molecule(spherical ? 3 : 2, spherical);
    const std::vector<MATRIX> d = {random_symmetric(m.n_basis, 21), random_symmetric(m.n_basis, 22)};
    EXPECT_LT(relative_difference(coulomb_gradient(m, d[0], TIGHT),
                                  differences(m, [&](const MOLECULE_T& x) { return coulomb_energy(x, d[0]); })),
              1e-8);
    EXPECT_LT(relative_difference(exchange_gradient(m, d, TIGHT),
                                  differences(m, [&](const MOLECULE_T& x) { return exchange_energy(x, d); })),
              1e-8);
  }
}

}  // namespace
}  // namespace zentrix::INTEGRALS_2E

#include <gtest/gtest.h>

#include <random>

#include "integrals/one_electron.hpp"
#include "support/molecules.hpp"

// The fused one-electron gradient against central differences of its own energy at fixed densities.

namespace {

using namespace zentrix;

MATRIX random_symmetric(Eigen::Index n, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  MATRIX m(n, n);
  for (Eigen::Index i = 0; i < n; ++i)
    for (Eigen::Index j = 0; j <= i; ++j) m(i, j) = m(j, i) = uniform(generator);
  return m;
}

double energy_of(const MOLECULE_T& molecule, const MATRIX& d, const MATRIX& w) {
  const auto one = INTEGRALS_1E::one_electron_matrices(molecule);
  return d.cwiseProduct(one.h_core).sum() - w.cwiseProduct(one.s).sum();
}

TEST(ONE_ELECTRON_GRADIENT, IsTheDerivativeOfItsEnergy) {
  struct CASE_T {
    std::string geometry, basis;
    TESTS::SAMPLE_OPTIONS_T options;
  };
  const std::vector<CASE_T> cases = {
      {"O 0.1 0.0 0.1173\nH 0.0 0.7572 -0.4692\nH 0.2 -0.7572 -0.4692\n", "cc-pVQZ", {0, 1, true}},
      {"O 0.1 0.0 0.1173\nH 0.0 0.7572 -0.4692\nH 0.2 -0.7572 -0.4692\n", "cc-pVTZ", {0, 1, false}},
      {"Cl 0 0 0\nH 0.3 0.2 1.2\n", "6-311++G(2d,2p)", {0, 1, false}},
  };
  const double h = 2e-4;
  for (const CASE_T& test : cases) {
    MOLECULE_T molecule = TESTS::sample_molecule(test.geometry, test.basis, test.options);
    molecule.atoms[1].charge = 1.5;  // charges need not be those of whole nuclei
    const MATRIX d = random_symmetric(molecule.n_basis, 1U);
    const MATRIX w = random_symmetric(molecule.n_basis, 2U);
    const VECTOR gradient = INTEGRALS_1E::one_electron_gradient(molecule, d, w);
    const double scale = gradient.cwiseAbs().maxCoeff();
    for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
      for (std::size_t k = 0; k < 3; ++k) {
        double slope = 0.0;  // five-point rule
        for (const auto& [step, weight] : {std::pair{-2, 1.0}, {-1, -8.0}, {1, 8.0}, {2, -1.0}}) {
          MOLECULE_T moved = molecule;
          moved.atoms[a].position[k] += step * h;
          slope += weight * energy_of(moved, d, w);
        }
        EXPECT_NEAR(gradient(static_cast<Eigen::Index>(3 * a + k)), slope / (12.0 * h), 1e-9 * scale) << a << " " << k;
      }
    }
    for (Eigen::Index k = 0; k < 3; ++k) {
      double sum = 0.0;
      for (Eigen::Index a = 0; a < gradient.size() / 3; ++a) sum += gradient(3 * a + k);
      EXPECT_NEAR(sum, 0.0, 1e-10 * scale);
    }
  }
  const MOLECULE_T atom = TESTS::sample_molecule("Ne 0.3 0.2 0.1\n", "cc-pVTZ", {0, 1, true});
  const MATRIX d = random_symmetric(atom.n_basis, 3U);
  EXPECT_LT(INTEGRALS_1E::one_electron_gradient(atom, d, d).cwiseAbs().maxCoeff(), 1e-10);
}

}  // namespace

#include <gtest/gtest.h>

#include "integrals/one_electron.hpp"
#include "support/differences.hpp"
#include "support/molecules.hpp"
#include "two_electron_samples.hpp"

// The fused one-electron gradient against central differences of its own energy at fixed densities.

namespace {

using namespace zentrix;
using samples::random_symmetric;

TEST(ONE_ELECTRON_GRADIENT, IsTheDerivativeOfItsEnergy) {
  const std::string bent = "O 0.1 0.0 0.1173\nH 0.0 0.7572 -0.4692\nH 0.2 -0.7572 -0.4692\n";
  std::vector<MOLECULE_T> molecules = {TESTS::sample_molecule(bent, "cc-pVQZ", {.spherical = true}),
                                       TESTS::sample_molecule(bent, "cc-pVTZ"),
                                       TESTS::sample_molecule("Cl 0 0 0\nH 0.3 0.2 1.2\n", "6-311++G(2d,2p)")};
  for (MOLECULE_T& molecule : molecules) {
    molecule.atoms[1].charge = 1.5;  // charges need not be those of whole nuclei
    const MATRIX d = random_symmetric(molecule.n_basis, 1U), w = random_symmetric(molecule.n_basis, 2U);
    const VECTOR gradient = INTEGRALS_1E::one_electron_gradient(molecule, d, w);
    const double scale = gradient.cwiseAbs().maxCoeff();
    for (std::size_t n = 0; n < 3 * molecule.atoms.size(); ++n) {
      const auto energy_at = [&](double step) {
        MOLECULE_T moved = molecule;
        moved.atoms[n / 3].position[n % 3] += step;
        const auto one = INTEGRALS_1E::one_electron_matrices(moved);
        return d.cwiseProduct(one.h_core).sum() - w.cwiseProduct(one.s).sum();
      };
      EXPECT_NEAR(gradient(static_cast<Eigen::Index>(n)), TESTS::derivative(energy_at, 2e-4), 1e-9 * scale) << n;
    }
    EXPECT_LT(gradient.reshaped(3, gradient.size() / 3).rowwise().sum().cwiseAbs().maxCoeff(), 1e-10 * scale);
  }
}

}  // namespace

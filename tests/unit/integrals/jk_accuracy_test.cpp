#include <gtest/gtest.h>

#include <Eigen/Eigenvalues>

#include "integrals/integrals_2e.hpp"
#include "integrals/one_electron.hpp"
#include "support/molecules.hpp"

namespace zentrix::INTEGRALS_2E {
namespace {

/// Closed-shell density of the core Hamiltonian.
MATRIX core_density(const MOLECULE_T& molecule) {
  const INTEGRALS_1E::ONE_ELECTRON_T one = INTEGRALS_1E::one_electron_matrices(molecule);
  const Eigen::GeneralizedSelfAdjointEigenSolver<MATRIX> solver(one.h_core, one.s);
  const MATRIX c = solver.eigenvectors().leftCols(molecule.n_alpha);
  return 2.0 * c * c.transpose();
}

MATRIX fock_part(const JK_RESULT_T& built) { return built.j[0] - 0.5 * built.k[0]; }

// Neglected contributions are to stay below 1e-10 in every element of every Fock matrix. They add up, the more the larger
// the molecule (docs/performance.md), so this small one is held to a fifth of that.
TEST(jk_accuracy, default_thresholds_leave_a_margin_in_the_fock_matrix) {
  const MOLECULE_T molecule = TESTS::sample_molecule(TESTS::caffeine, "STO-3G");
  const std::vector<MATRIX> density(1, core_density(molecule));
  JK_BUILDER builder(molecule);
  const MATRIX exact = fock_part(builder.build(density, density, 1e-16));
  const MATRIX direct = fock_part(builder.build(density, density));
  EXPECT_LT((direct - exact).cwiseAbs().maxCoeff(), 2e-11);
  builder.fill_store();
  const MATRIX stored = fock_part(builder.build(density, density));
  EXPECT_LT((stored - exact).cwiseAbs().maxCoeff(), 2e-11);
}

}  // namespace
}  // namespace zentrix::INTEGRALS_2E

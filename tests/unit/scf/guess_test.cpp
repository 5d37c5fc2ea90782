#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scf/atomic_states.hpp"
#include "scf_samples.hpp"

// Atomic ground states, the superposition of atomic densities and the rules that choose a guess.

namespace {

using namespace zentrix;
using namespace zentrix::SCF;
using namespace zentrix::SCF::samples;
using INPUT_PARSER::GUESS;
using ::testing::HasSubstr;

TEST(ATOMIC_STATES, HoldAllElectronsAndKnownMultiplicities) {
  for (int z = 1; z <= 86; ++z) {
    const ATOMIC_STATE_T state = atomic_ground_state(z);
    EXPECT_EQ(state.n_alpha + state.n_beta, z);
    double counted = 0.0;
    for (const SHELL_FILLING_T& spin : state.filling)
      for (std::size_t l = 0; l < spin.size(); ++l)
        for (const double fraction : spin[l]) counted += fraction * static_cast<double>(2 * l + 1);
    EXPECT_NEAR(counted, z, 1e-12);
  }
  // Term symbols of the ground states.
  const std::vector<std::pair<int, int>> known = {{1, 2},  {6, 3},  {7, 4},  {8, 3},  {24, 7}, {25, 6}, {26, 5}, {28, 3},
                                                  {29, 2}, {41, 6}, {42, 7}, {44, 5}, {45, 4}, {46, 1}, {57, 2}, {58, 1},
                                                  {63, 8}, {64, 9}, {70, 1}, {74, 5}, {78, 3}, {79, 2}, {82, 3}, {86, 1}};
  for (const auto& [z, expected] : known) EXPECT_EQ(atomic_ground_state(z).multiplicity(), expected) << "Z=" << z;
}

TEST(ATOMIC_STATES, LoseTheShellsOfACorePotential) {
  const ATOMIC_STATE_T iodine = atomic_ground_state(53, 28);  // 4s2 4p6 4d10 5s2 5p5
  EXPECT_EQ(iodine.n_alpha + iodine.n_beta, 25);
  const SHELL_FILLING_T beta = {{1.0, 1.0}, {1.0, 2.0 / 3.0}, {1.0}, {}};
  EXPECT_EQ(iodine.filling[1], beta);
  EXPECT_EQ(atomic_ground_state(79, 60).multiplicity(), 2);  // gold, 5s2 5p6 5d10 6s1
}

struct GUESS_T {
  MOLECULE_T molecule;
  MATRIX overlap;
  SCF_START_T start;
  std::string report;
};

GUESS_T guess_of(MOLECULE_T molecule, GUESS wish) {
  GUESS_T out{std::move(molecule), {}, {}, {}};
  out.overlap = INTEGRALS_1E::overlap(out.molecule);
  std::ostringstream report;
  GUESS_PRINTER_T printer(report);
  out.start = initial_guess(out.molecule, out.overlap, wish, 1000, printer);
  out.report = report.str();
  return out;
}

TEST(SAD_GUESS, DependsOnSpinTreatmentAndWish) {
  MOLECULE_T molecule = TESTS::sample_molecule(TESTS::water, "6-31G*");
  EXPECT_EQ(guess_of(molecule, GUESS::automatic).start.guess_name, "core Hamiltonian");
  EXPECT_EQ(guess_of(molecule, GUESS::core).report, "");
  const GUESS_T restricted = guess_of(molecule, GUESS::sad);
  EXPECT_EQ(restricted.start.densities.size(), 1U);
  EXPECT_NEAR(restricted.start.densities[0].cwiseProduct(restricted.overlap).sum(), 10.0, 1e-9);
  molecule.unrestricted = true;
  EXPECT_TRUE(guess_of(molecule, GUESS::core).start.densities.empty());
  const GUESS_T automatic = guess_of(molecule, GUESS::automatic);
  EXPECT_EQ(automatic.start.guess_name, "SAD (Superposition of Atomic Densities)");
  ASSERT_EQ(automatic.start.densities.size(), 2U);
  for (const MATRIX& density : automatic.start.densities)
    EXPECT_NEAR(density.cwiseProduct(automatic.overlap).sum(), 5.0, 1e-9);
}

TEST(SAD_GUESS, GivesAtomsTheirOwnEnergyAndASphericalDensity) {
  // A lone nitrogen atom: the guess is its converged density, so the first energy is the last one.
  for (const bool spherical : {true, false}) {
    const MOLECULE_T atom = TESTS::sample_molecule("N 0.3 -0.2 0.1\n", "cc-pVTZ", {0, 4, spherical});
    RUN_OPTIONS_T once;
    once.settings.max_iterations = 1;
    EXPECT_NEAR(run(atom, once).scf.energy.total(), run(atom).scf.energy.total(), spherical ? 1e-6 : 1e-3);
  }
  // Oxygen has an open p shell: the three p directions must look alike.
  const GUESS_T oxygen = guess_of(TESTS::sample_molecule("O 0 0 0\n", "6-31G", {0, 3, true}), GUESS::automatic);
  const MATRIX& beta = oxygen.start.densities[1];
  const SHELL_T* p = nullptr;
  for (const SHELL_T& shell : oxygen.molecule.shells)
    if (shell.l == 1) p = &shell;
  ASSERT_NE(p, nullptr);
  EXPECT_GT(beta(p->first, p->first), 0.01);
  EXPECT_NEAR(beta(p->first, p->first), beta(p->first + 1, p->first + 1), 1e-8);
  EXPECT_NEAR(beta(p->first, p->first), beta(p->first + 2, p->first + 2), 1e-8);
}

TEST(SAD_GUESS, ConvergesForEveryElementOfTheSmallBasis) {
  for (int z = 1; z <= 55; ++z) {
    const GUESS_T guess =
        guess_of(TESTS::sample_molecule(element_symbol(z) + " 0 0 0\n", "3-21G", {0, 1 + z % 2, true}), GUESS::sad);
    EXPECT_THAT(guess.report, HasSubstr("SAD guess assembled.")) << z;
    EXPECT_THAT(guess.report, ::testing::Not(HasSubstr("did not reach"))) << z;
  }
}

TEST(SAD_GUESS, FallsBackWithAReason) {
  // Two oxygens with different shells.
  MOLECULE_T mixed = TESTS::sample_molecule("O 0 0 0\nO 0 0 1.2\n", "6-31G*", {0, 3, false});
  mixed.shells[mixed.shells.size() - 1].alpha[0] *= 1.5;
  const GUESS_T mismatch = guess_of(mixed, GUESS::sad);
  EXPECT_THAT(mismatch.report,
              HasSubstr("   SAD: shell mismatch between atoms of element Z=8 (mixed basis?); falling back to core-H guess\n"
                        "   SAD unavailable; using core-Hamiltonian guess.\n"));
  EXPECT_EQ(mismatch.start.guess_name, "core Hamiltonian");
  // A basis without p functions cannot hold oxygen.
  MOLECULE_T poor = TESTS::sample_molecule("O 0 0 0\n", "6-31G", {0, 3, false});
  std::erase_if(poor.shells, [](const SHELL_T& shell) { return shell.l > 0; });
  count_basis_functions(poor);
  EXPECT_THAT(guess_of(poor, GUESS::sad).report,
              HasSubstr("   SAD: atomic UHF failed for Z=8; falling back to core-H guess overall\n"));
}

TEST(SAD_GUESS, LeavesGhostsEmptyAndFillsBothSpinsOfHydrogen) {
  MOLECULE_T molecule = TESTS::sample_molecule("H 0 0 0\nH 0 0 0.74\nHe 0 0 5\n", "6-31G", {});
  molecule.atoms[2].ghost = true;
  molecule.atoms[2].charge = 0.0;
  molecule.n_electrons = 2;
  molecule.n_alpha = molecule.n_beta = 1;
  molecule.unrestricted = true;
  const GUESS_T guess = guess_of(molecule, GUESS::automatic);
  ASSERT_EQ(guess.start.densities.size(), 2U);
  for (const MATRIX& density : guess.start.densities) {
    EXPECT_NEAR(density.cwiseProduct(guess.overlap).sum(), 1.0, 1e-9);
    EXPECT_EQ(density.bottomRightCorner(2, 2).norm(), 0.0);
  }
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "scf/convergence.hpp"
#include "scf/guess.hpp"
#include "scf/occupation.hpp"
#include "scf/scf_report.hpp"
#include "support/molecules.hpp"

// Occupation control of unrestricted runs, on orbitals made by hand, and the soft end of a run.

namespace {

using namespace zentrix;
using namespace zentrix::SCF;
using INPUT_PARSER::OCCUPATION;
using ::testing::HasSubstr;

struct CONTROL_T {
  std::ostringstream text;
  SCF_PRINTER_T printer{text};
  MATRIX overlap = MATRIX::Identity(4, 4);
  MOLECULE_T molecule;
  std::unique_ptr<OCCUPATION_RULE_T> rule;

  CONTROL_T(OCCUPATION mode, int n_alpha, int n_beta, bool restart = false) {
    molecule.unrestricted = true;
    molecule.n_alpha = n_alpha;
    molecule.n_beta = n_beta;
    SCF_SETTINGS_T settings;
    settings.occupation = mode;
    SCF_START_T start;
    start.from_converged_run = restart;
    rule = make_occupation_rule(molecule, settings, start, overlap, printer);
  }
};

/// Orbitals 1 to 4 in the order of the unit vectors; `swapped`: the second and third change places.
SPIN_CHANNEL_T unit_orbitals(int n_occupied, bool swapped) {
  SPIN_CHANNEL_T channel;
  channel.n_occupied = n_occupied;
  channel.orbitals = MATRIX::Identity(4, 4);
  if (swapped) channel.orbitals.col(1).swap(channel.orbitals.col(2));
  channel.energies = VECTOR::LinSpaced(4, -2.0, 1.0);
  return channel;
}

TEST(OCCUPATION_CONTROL, OverlapIsFollowedInItsIterationsOnly) {
  CONTROL_T automatic(OCCUPATION::automatic, 2, 1, true);
  SPIN_CHANNEL_T channel = unit_orbitals(2, false);
  EXPECT_FALSE(automatic.rule->occupy(1, 0, channel));
  EXPECT_EQ(automatic.text.str(), "");
  channel = unit_orbitals(2, true);  // the orbital occupied before is now the third
  EXPECT_FALSE(automatic.rule->occupy(5, 0, channel));
  EXPECT_EQ(channel.orbitals(1, 1), 1.0);
  EXPECT_EQ(channel.energies(1), 0.0);  // its energy has moved along
  EXPECT_EQ(automatic.text.str(), "   *** MOM reorder: 1 orbital(s) reassigned in alpha channel\n");
  channel = unit_orbitals(2, true);
  EXPECT_FALSE(automatic.rule->occupy(6, 0, channel));
  EXPECT_EQ(channel.orbitals(2, 1), 1.0);
  EXPECT_THAT(automatic.text.str(),
              HasSubstr("   *** Aufbau swap detected on alpha channel  (min max-overlap = 0.0000; following Aufbau)\n"));

  CONTROL_T mom(OCCUPATION::mom, 2, 2);  // from a guess: the first orbitals are not held on to
  channel = unit_orbitals(2, true);
  EXPECT_FALSE(mom.rule->occupy(1, 1, channel));
  channel = unit_orbitals(2, false);
  EXPECT_FALSE(mom.rule->occupy(2, 1, channel));
  EXPECT_EQ(mom.text.str(), "");
  channel = unit_orbitals(2, true);
  EXPECT_FALSE(mom.rule->occupy(40, 1, channel));
  EXPECT_EQ(channel.orbitals(1, 1), 1.0);
  EXPECT_EQ(mom.text.str(), "   *** MOM reorder: 1 orbital(s) reassigned in beta  channel\n");
}

TEST(OCCUPATION_CONTROL, MixTurnsTheFrontierOrbitalsAndAsksForAFreshHistory) {
  CONTROL_T mix(OCCUPATION::mix, 2, 2);
  SPIN_CHANNEL_T channel = unit_orbitals(2, false);
  EXPECT_FALSE(mix.rule->occupy(1, 0, channel));
  EXPECT_EQ(channel.orbitals(1, 1), 1.0);
  SPIN_CHANNEL_T beta = unit_orbitals(2, false);
  EXPECT_TRUE(mix.rule->occupy(1, 1, beta));  // the start of a singlet breaks the spin symmetry
  EXPECT_EQ(mix.text.str(), "   Applied HOMO-LUMO mixing to beta orbitals\n");
  EXPECT_NEAR(beta.orbitals(2, 1), std::sqrt(0.5), 1e-15);
  channel = unit_orbitals(2, true);
  EXPECT_FALSE(mix.rule->occupy(2, 0, channel));
  channel = unit_orbitals(2, false);
  EXPECT_TRUE(mix.rule->occupy(3, 0, channel));
  EXPECT_THAT(mix.text.str(), HasSubstr("   *** MIX: re-mixed HOMO-LUMO and reset DIIS after orbital swap\n"));
  EXPECT_NEAR((channel.orbitals.transpose() * channel.orbitals - MATRIX::Identity(4, 4)).norm(), 0.0, 1e-14);

  CONTROL_T again(OCCUPATION::mix, 2, 2, true);  // continues a finished run: left alone
  beta = unit_orbitals(2, false);
  EXPECT_FALSE(again.rule->occupy(1, 1, beta));
  EXPECT_EQ(again.text.str(), "");
}

// The first Fock matrix belongs to the symmetric guess and has no error: left in the history it undoes the mixing.
TEST(OCCUPATION_CONTROL, MixedStartBreaksTheSymmetryOfAStretchedBond) {
  MOLECULE_T molecule = TESTS::sample_molecule("H 0 0 0\nH 0 0 5\n", "STO-3G");
  molecule.unrestricted = true;
  GEOMETRY_DATA_T geometry(molecule, INTEGRALS_1E::one_electron_matrices(molecule));
  SCF_SETTINGS_T settings;
  settings.occupation = OCCUPATION::mix;
  GUESS_OBSERVER_T quiet;
  SCF_OBSERVER_T silent;
  const SCF_START_T start = initial_guess(molecule, geometry.one_electron.s, INPUT_PARSER::GUESS::automatic, quiet);
  const SCF_RESULT_T result = run_scf(geometry, hartree_fock_terms(geometry), settings, start, silent);
  EXPECT_TRUE(result.converged);
  EXPECT_NEAR(result.energy.total(), 2.0 * -0.46658185, 1e-5);  // two atoms of -0.46658185 hartree
  EXPECT_NEAR(result.s_squared, 1.0, 1e-4);
}

TEST(OCCUPATION_CONTROL, DegenerateFrontierOrbitalsAreTurnedToTheAxes) {
  SPIN_CHANNEL_T askew = unit_orbitals(2, false);
  const double c = std::cos(0.7);
  const double s = std::sin(0.7);
  askew.orbitals.block<2, 2>(1, 1) << c, -s, s, c;
  for (const bool equal : {true, false}) {
    askew.energies(2) = askew.energies(1) + (equal ? 1e-10 : 1e-5);
    for (const std::size_t spin : {0U, 1U}) {
      CONTROL_T control(OCCUPATION::strict, 2, 2);
      SPIN_CHANNEL_T channel = askew;
      EXPECT_FALSE(control.rule->occupy(1, spin, channel));
      // The spins take opposite ends of equal functions.
      const double expected = equal ? (spin == 0 ? 0.0 : 1.0) : c;
      EXPECT_NEAR(std::abs(channel.orbitals(1, 1)), expected, 1e-14);
      EXPECT_NEAR((channel.orbitals.transpose() * channel.orbitals - MATRIX::Identity(4, 4)).norm(), 0.0, 1e-14);
    }
  }
}

double guessed_energy(const std::string& geometry, bool unrestricted, const std::string& basis = "6-31G",
                      INPUT_PARSER::GUESS wish = INPUT_PARSER::GUESS::automatic) {
  MOLECULE_T molecule = TESTS::sample_molecule(geometry, basis, {0, 1, true});
  molecule.unrestricted = unrestricted;
  GEOMETRY_DATA_T data(molecule, INTEGRALS_1E::one_electron_matrices(molecule));
  GUESS_OBSERVER_T quiet;
  SCF_OBSERVER_T silent;
  const SCF_START_T start = initial_guess(molecule, data.one_electron.s, wish, quiet);
  const SCF_RESULT_T result = run_scf(data, hartree_fock_terms(data), {}, start, silent);
  EXPECT_TRUE(result.converged) << geometry;
  return result.energy.total();
}

// With the two electrons of a degenerate pair in one orbital each the energy is lower.
TEST(OCCUPATION_CONTROL, SpinsOfADegenerateSingletGetOrbitalsOfTheirOwn) {
  const std::string oxygen = "O 0 0 0\nO 0 0 1.2\n";
  EXPECT_LT(guessed_energy(oxygen, true), guessed_energy(oxygen, false) - 0.05);
  EXPECT_NEAR(guessed_energy("H 0 0 0\nH 0 0 40\n", true), 2.0 * -0.4982329, 1e-6);
  // Ethene twisted by a right angle, restricted: the pair spread over both carbon atoms is lower than the ion pair.
  const std::string ethene = "C 0 0 0.67\nC 0 0 -0.67\nH 0 0.92 1.24\nH 0 -0.92 1.24\nH 0.92 0 -1.24\nH -0.92 0 -1.24\n";
  EXPECT_NEAR(guessed_energy(ethene, false), -77.8262874, 1e-6);
}

// The core Hamiltonian of stretched N2 leaves one pair for two degenerate pi orbitals. Filling one of them breaks the
// symmetry for good, and the run ends 6e-3 hartree higher.
TEST(OCCUPATION_CONTROL, GuessFillsADegenerateShellEvenly) {
  const std::string nitrogen = "N 0 0 0\nN 0 0 2.0\n";
  EXPECT_NEAR(guessed_energy(nitrogen, false, "cc-pVDZ"),
              guessed_energy(nitrogen, false, "cc-pVDZ", INPUT_PARSER::GUESS::sad), 1e-7);
}

TEST(CONVERGENCE, EndsSoftlyWithTwoChannelsOnly) {
  std::ostringstream text;
  SCF_PRINTER_T printer(text);
  const SCF_SETTINGS_T settings;
  for (const bool soft : {true, false}) {
    CONVERGENCE_T test(soft);
    SCF_ROW_T row{.iteration = 0, .energy = -1.0, .energy_change = 5e-7, .density_change = 1e-4, .gradient = 5e-6};
    bool ended = false;
    while (!ended && row.iteration < 60) {
      ++row.iteration;
      ended = test.test(row, settings, printer);
    }
    EXPECT_EQ(ended, soft);
    EXPECT_EQ(row.iteration, soft ? settings.min_iterations + SOFT_ITERATIONS : 60);
  }
  EXPECT_THAT(text.str(), HasSubstr("   *** SOFT convergence at iter=17 (|dE|=5.000e-07, |g|=5.000e-06, dP=1.000e-04)\n"
                                    "   ***   Orbital gradient at tolerance for 12 iterations;\n"));
}

std::string failing_run(SCF_SETTINGS_T settings, const std::string& geometry, TESTS::SAMPLE_OPTIONS_T options) {
  MOLECULE_T molecule = TESTS::sample_molecule(geometry, "6-31G", options);
  molecule.unrestricted = true;
  GEOMETRY_DATA_T data(molecule, INTEGRALS_1E::one_electron_matrices(molecule));
  std::ostringstream text;
  SCF_PRINTER_T printer(text);
  EXPECT_FALSE(run_scf(data, hartree_fock_terms(data), settings, {}, printer).converged);
  return text.str();
}

TEST(SCF_LOOP, OpenShellRunsThatFailSayWhatMayHelp) {
  SCF_SETTINGS_T settings;
  settings.max_iterations = 2;
  EXPECT_THAT(failing_run(settings, "O 0 0 0\nO 0 0 1.2\n", {0, 3, false}),
              HasSubstr("   ***   indicates a qualitatively multi-reference state\n"));
  settings.max_iterations = 30;
  settings.density_tolerance = 0.0;
  settings.energy_tolerance = 0.0;
  EXPECT_THAT(failing_run(settings, "N 0 0 0\n", {0, 4, false}),
              HasSubstr("   *** Diagnostic: SCF is near convergence but dP keeps spiking\n"));
  settings.gradient_tolerance = 0.0;
  settings.level_shift_mode = INPUT_PARSER::LEVEL_SHIFT::off;
  EXPECT_THAT(failing_run(settings, "N 0 0 0\n", {0, 4, false}),
              HasSubstr("   ***     - %level_shift 0.2  (if not already set)\n"
                        "   ***     - %initial_guess sad  (already default for UKS)\n"));
}

}  // namespace

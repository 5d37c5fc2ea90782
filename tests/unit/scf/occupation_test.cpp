#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

#include "scf/occupation.hpp"
#include "scf_samples.hpp"

// Occupation control of unrestricted runs, on orbitals made by hand.

namespace {

using namespace zentrix;
using namespace zentrix::SCF;
using namespace zentrix::SCF::samples;
using INPUT_PARSER::OCCUPATION;
using ::testing::HasSubstr;

/// Orbitals 1 to 4, two of them occupied, in the order of the unit vectors; `swapped`: the second and third change places.
SPIN_CHANNEL_T unit_orbitals(bool swapped) {
  SPIN_CHANNEL_T channel;
  channel.n_occupied = 2;
  channel.orbitals = MATRIX::Identity(4, 4);
  if (swapped) channel.orbitals.col(1).swap(channel.orbitals.col(2));
  channel.energies = VECTOR::LinSpaced(4, -2.0, 1.0);
  return channel;
}

/// A rule and the orbitals of the channel that it occupied last.
struct CONTROL_T {
  std::ostringstream text;
  SCF_PRINTER_T printer{text};
  MATRIX overlap = MATRIX::Identity(4, 4);
  SPIN_CHANNEL_T channel;
  std::unique_ptr<OCCUPATION_RULE_T> rule;

  explicit CONTROL_T(OCCUPATION mode, bool restart = false) {
    MOLECULE_T molecule;
    molecule.unrestricted = true;
    molecule.n_alpha = molecule.n_beta = 2;
    SCF_SETTINGS_T settings;
    settings.occupation = mode;
    SCF_START_T start;
    start.from_converged_run = restart;
    start.densities.assign(restart ? 2 : 0,
                           MATRIX(VECTOR::Unit(4, 0).asDiagonal()) + MATRIX(VECTOR::Unit(4, 1).asDiagonal()));
    rule = make_occupation_rule(molecule, settings, start, overlap, printer);
  }
  bool occupy(int iteration, std::size_t spin, const SPIN_CHANNEL_T& orbitals) {
    channel = orbitals;
    const bool restart = rule->occupy(iteration, spin, channel);
    EXPECT_NEAR((channel.orbitals.transpose() * channel.orbitals - MATRIX::Identity(4, 4)).norm(), 0.0, 1e-14);
    return restart;
  }
};

TEST(OCCUPATION_CONTROL, OverlapIsFollowedInItsIterationsOnly) {
  const SPIN_CHANNEL_T plain = unit_orbitals(false), swapped = unit_orbitals(true);
  CONTROL_T automatic(OCCUPATION::automatic, true);
  EXPECT_FALSE(automatic.occupy(1, 0, plain));
  EXPECT_EQ(automatic.text.str(), "");
  EXPECT_FALSE(automatic.occupy(5, 0, swapped));  // the orbital occupied before is now the third
  EXPECT_EQ(automatic.channel.orbitals(1, 1), 1.0);
  EXPECT_EQ(automatic.channel.energies(1), 0.0);  // its energy has moved along
  EXPECT_EQ(automatic.text.str(), "   *** MOM reorder: 1 orbital(s) reassigned in alpha channel\n");
  EXPECT_FALSE(automatic.occupy(6, 0, swapped));
  EXPECT_EQ(automatic.channel.orbitals(2, 1), 1.0);
  EXPECT_THAT(automatic.text.str(),
              HasSubstr("   *** Aufbau swap detected on alpha channel  (min max-overlap = 0.0000; following Aufbau)\n"));

  CONTROL_T mom(OCCUPATION::mom);  // from a guess: the first orbitals are not held on to
  EXPECT_FALSE(mom.occupy(1, 1, swapped));
  EXPECT_FALSE(mom.occupy(2, 1, plain));
  EXPECT_EQ(mom.text.str(), "");
  EXPECT_FALSE(mom.occupy(40, 1, swapped));
  EXPECT_EQ(mom.channel.orbitals(1, 1), 1.0);
  EXPECT_EQ(mom.text.str(), "   *** MOM reorder: 1 orbital(s) reassigned in beta  channel\n");

  CONTROL_T continued(OCCUPATION::mom, true);  // from a finished run: its orbitals are followed from the first iteration
  EXPECT_FALSE(continued.occupy(1, 0, swapped));
  EXPECT_EQ(continued.channel.orbitals(1, 1), 1.0);
}

TEST(OCCUPATION_CONTROL, MixTurnsTheFrontierOrbitalsAndAsksForAFreshHistory) {
  const SPIN_CHANNEL_T plain = unit_orbitals(false), swapped = unit_orbitals(true);
  CONTROL_T mix(OCCUPATION::mix);
  EXPECT_FALSE(mix.occupy(1, 0, plain));
  EXPECT_EQ(mix.channel.orbitals(1, 1), 1.0);
  EXPECT_TRUE(mix.occupy(1, 1, plain));  // the start of a singlet breaks the spin symmetry
  EXPECT_EQ(mix.text.str(), "   Applied HOMO-LUMO mixing to beta orbitals\n");
  EXPECT_NEAR(mix.channel.orbitals(2, 1), std::sqrt(0.5), 1e-15);
  // The first iterations behind a mixing, and a fourth swap, are left to themselves: the run must not go in circles.
  std::string mixings;
  for (int iteration = 2; iteration < 40; ++iteration)
    if (mix.occupy(iteration, 0, iteration % 2 == 0 ? swapped : plain)) mixings += std::to_string(iteration) + " ";
  EXPECT_EQ(mixings, "7 13 19 ");
  EXPECT_THAT(mix.text.str(), HasSubstr("   *** MIX: re-mixed HOMO-LUMO and reset DIIS after orbital swap\n"));
  EXPECT_THAT(mix.text.str(),
              HasSubstr("   *** Aufbau swap detected on alpha channel  (min max-overlap = 0.0000; following Aufbau)\n"));

  CONTROL_T again(OCCUPATION::mix, true);  // continues a finished run: left alone
  EXPECT_FALSE(again.occupy(1, 1, plain));
  EXPECT_EQ(again.text.str(), "");
}

// The first Fock matrix belongs to the symmetric guess and has no error: left in the history it undoes the mixing.
TEST(OCCUPATION_CONTROL, MixedStartBreaksTheSymmetryOfAStretchedBond) {
  RUN_OPTIONS_T options;
  options.settings.occupation = OCCUPATION::mix;
  const SCF_RESULT_T result = run(open_molecule("H 0 0 0\nH 0 0 5\n", "STO-3G"), options).scf;
  EXPECT_TRUE(result.converged);
  EXPECT_NEAR(result.energy.total(), 2.0 * -0.46658185, 1e-5);  // two atoms of -0.46658185 hartree
  EXPECT_NEAR(result.s_squared, 1.0, 1e-4);

  // DIIS by itself comes back to the symmetric state of H2, 51 millihartree higher; mixing at every swap of N2's orbitals
  // never ends.
  options.grid = 4;
  for (const auto& [method, geometry, energy] :
       {std::tuple{"B3LYP", "H 0 0 0\nH 0 0 2.5\n", -0.99817}, {"SVWN", "N 0 0 0\nN 0 0 3.0\n", -108.22330}}) {
    options.method = method;
    const SCF_RESULT_T nearer = run(open_molecule(geometry, "6-31G"), options).scf;
    EXPECT_TRUE(nearer.converged);
    EXPECT_NEAR(nearer.energy.total(), energy, 1e-5) << geometry;
    EXPECT_GT(nearer.s_squared, 0.9);
  }
}

TEST(OCCUPATION_CONTROL, DegenerateFrontierOrbitalsAreTurnedToTheAxes) {
  SPIN_CHANNEL_T askew = unit_orbitals(false);
  const double c = std::cos(0.7);
  const double s = std::sin(0.7);
  askew.orbitals.block<2, 2>(1, 1) << c, -s, s, c;
  for (const bool equal : {true, false}) {
    askew.energies(2) = askew.energies(1) + (equal ? 1e-10 : 1e-5);
    for (const std::size_t spin : {0U, 1U}) {
      CONTROL_T control(OCCUPATION::strict);
      EXPECT_FALSE(control.occupy(1, spin, askew));
      // The spins take opposite ends of equal functions.
      const double expected = equal ? (spin == 0 ? 0.0 : 1.0) : c;
      EXPECT_NEAR(std::abs(control.channel.orbitals(1, 1)), expected, 1e-14);
    }
  }
}

double guessed_energy(const std::string& geometry, bool unrestricted, const std::string& basis = "6-31G",
                      INPUT_PARSER::GUESS wish = INPUT_PARSER::GUESS::automatic) {
  MOLECULE_T molecule = TESTS::sample_molecule(geometry, basis, {.spherical = true});
  molecule.unrestricted = unrestricted;
  RUN_OPTIONS_T options;
  options.guess = wish;
  const SCF_RESULT_T result = run(molecule, options).scf;
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
  // A level shift would hold on to the choice in triplet oxygen, 0.24 hartree higher.
  const MOLECULE_T oxygen = TESTS::sample_molecule("O 0 0 0\nO 0 0 1.21\n", "6-31G", {0, 3, false});
  RUN_OPTIONS_T options;
  options.guess = INPUT_PARSER::GUESS::core;
  options.settings.level_shift_mode = INPUT_PARSER::LEVEL_SHIFT::fixed;
  options.settings.level_shift = 0.5;
  EXPECT_NEAR(run(oxygen, options).scf.energy.total(), run(oxygen).scf.energy.total(), 1e-6);
}

}  // namespace

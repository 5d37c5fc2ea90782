#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "scf/convergence.hpp"
#include "scf/diis.hpp"
#include "scf_samples.hpp"

// DIIS subspace rules, the convergence test, and what a run of the loop must do with its settings.

namespace {

using namespace zentrix;
using namespace zentrix::SCF;
using namespace zentrix::SCF::samples;
using ::testing::HasSubstr;
using ::testing::Not;

MATRIX matrix_of(double a, double b, double c) {
  MATRIX m(2, 2);
  m << a, b, b, c;
  return m;
}

TEST(DIIS, FindsTheCombinationOfTheShortestErrorOfBothSpins) {
  // Errors of length 1 in the one spin, then 2 in the other: the weights 4/5 and 1/5 serve both.
  const MATRIX none = matrix_of(0, 0, 0);
  DIIS_T diis(1e10);
  diis.push({matrix_of(1, 0, 2), matrix_of(10, 0, 0)}, {none, none}, {matrix_of(1, 0, 0), none});
  SPIN_MATRICES_T fock = {matrix_of(5, 0, 6), matrix_of(20, 0, 0)};
  EXPECT_FALSE(diis.extrapolate(fock).extrapolated);
  EXPECT_EQ(fock[0](0, 0), 5.0);
  diis.push(fock, {none, none}, {none, matrix_of(0, 0, 2)});
  EXPECT_TRUE(diis.extrapolate(fock).extrapolated);
  EXPECT_NEAR(fock[0](0, 0), 0.8 * 1 + 0.2 * 5, 1e-12);
  EXPECT_NEAR(fock[0](1, 1), 0.8 * 2 + 0.2 * 6, 1e-12);
  EXPECT_NEAR(fock[1](0, 0), 0.8 * 10 + 0.2 * 20, 1e-12);
}

TEST(DIIS, KeepsEightEntriesAndPrunesAtMostSix) {
  DIIS_T diis(1.0000001);  // no subspace of two or more is as well conditioned as this
  for (int n = 0; n < 11; ++n) diis.push({matrix_of(n, 0, 1)}, {matrix_of(0, 0, 0)}, {matrix_of(1.0 + n, 0.3 * n, 2.0)});
  EXPECT_EQ(diis.size(), 8);
  EXPECT_NEAR(diis.bordered_matrix()(0, 0), 4.0 * 4.0 + 2 * 0.9 * 0.9 + 4.0, 1e-12);  // entry 3 is the oldest
  SPIN_MATRICES_T fock = {matrix_of(10, 0, 1)};
  const auto outcome = diis.extrapolate(fock);
  EXPECT_EQ(outcome.pruned, 6);
  EXPECT_EQ(diis.size(), 2);
  EXPECT_TRUE(outcome.extrapolated);

  // The squares of two errors at right angles are their eigenvalues: a ratio of 4, which a limit of 4 accepts.
  for (const double limit : {4.0, 3.99}) {
    DIIS_T two(limit);
    two.push({matrix_of(1, 0, 1)}, {matrix_of(0, 0, 0)}, {matrix_of(1, 0, 0)});
    two.push({matrix_of(2, 0, 1)}, {matrix_of(0, 0, 0)}, {matrix_of(0, 0, 2)});
    EXPECT_EQ(two.extrapolate(fock).pruned, limit < 4.0 ? 1 : 0);
  }
}

TEST(DIIS, ParallelErrorsLeaveTheNewestFockMatrixUnlessTheyAreOpposed) {
  // As in H2, where every error is a multiple of one matrix. With all of them kept the weights are rounding.
  for (const double last : {0.0013, -0.0013}) {
    DIIS_T diis(1e10);
    for (const double length : {0.57, -0.087, last})
      diis.push({matrix_of(length, 0, 1)}, {matrix_of(0, 0, 0)}, {matrix_of(length, 0.3 * length, 0)});
    SPIN_MATRICES_T fock = {matrix_of(7, 0, 1)};
    const auto outcome = diis.extrapolate(fock);
    EXPECT_EQ(outcome.pruned, 2);
    EXPECT_FALSE(outcome.extrapolated);
    EXPECT_NEAR(fock[0](0, 0), last > 0.0 ? 0.0 : 7.0, 1e-15);
  }
}

TEST(DIIS, InterpolationFindsTheLowestEnergyBetweenItsEntries) {
  // One electron in two functions with D = diag(x, 1 - x) and F = diag(4x, 0), i.e. E = 2 x^2 - const along the line between
  // x = 1 and x = -0.25: the minimum at x = 0 has the weights 1/5 and 4/5.
  const auto fock_at = [](double x) { return SPIN_MATRICES_T{matrix_of(4.0 * x, 0, 0)}; };
  const auto density_at = [](double x) { return SPIN_MATRICES_T{matrix_of(x, 0, 1.0 - x)}; };
  DIIS_T diis(1e10);
  SPIN_MATRICES_T fock = fock_at(1.0);
  diis.push(fock, density_at(1.0), {matrix_of(1, 0, 0)});
  EXPECT_FALSE(diis.interpolate(fock));
  diis.push(fock_at(-0.25), density_at(-0.25), {matrix_of(1, 0, 0)});
  ASSERT_TRUE(diis.interpolate(fock));
  EXPECT_NEAR(fock[0](0, 0), 0.0, 1e-12);
  // A third entry beyond the minimum does not lead outside the simplex.
  diis.push(fock_at(0.5), density_at(0.5), {matrix_of(1, 0, 0)});
  ASSERT_TRUE(diis.interpolate(fock));
  EXPECT_NEAR(fock[0](0, 0), 0.0, 1e-12);
  // With all entries on one side the nearest one is taken whole.
  DIIS_T one_side(1e10);
  for (const double x : {0.9, 0.2, 0.6}) one_side.push(fock_at(x), density_at(x), {matrix_of(1, 0, 0)});
  ASSERT_TRUE(one_side.interpolate(fock));
  EXPECT_NEAR(fock[0](0, 0), 0.8, 1e-12);
}

TEST(CONVERGENCE, CountsConsecutiveIterationsAfterTheFirstFew) {
  SCF_OBSERVER_T silent;
  const SCF_SETTINGS_T settings;
  for (const int interrupted_at : {0, 7}) {
    CONVERGENCE_T test(false);
    SCF_ROW_T row{.iteration = 0, .energy = -1.0, .energy_change = 1e-9, .density_change = 1e-7, .gradient = 1e-6};
    do {
      ++row.iteration;
      row.density_change = row.iteration == interrupted_at ? 1e-5 : 1e-7;
    } while (!test.test(row, settings, silent));
    EXPECT_EQ(row.iteration, interrupted_at == 0 ? 7 : 9);
  }
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

TEST(SCF_LOOP, ShiftAndDampingChangeTheRoadAndNotTheGoal) {
  const MOLECULE_T formaldehyde = TESTS::sample_molecule(TESTS::formaldehyde, "6-31G");
  const SCF_RESULT_T plain = run(formaldehyde).scf;
  RUN_OPTIONS_T options;
  options.settings.level_shift_mode = INPUT_PARSER::LEVEL_SHIFT::fixed;
  options.settings.level_shift = 0.3;
  const RUN_T shifted = run(formaldehyde, options);
  EXPECT_TRUE(shifted.scf.converged);
  EXPECT_NEAR(shifted.scf.energy.total(), plain.energy.total(), 1e-7);
  EXPECT_THAT(shifted.report, HasSubstr("   Level shift enabled: 0.3 Hartree (fixed)"));
  // The virtual energies are told without the shift.
  EXPECT_LT((shifted.scf.channels[0].energies - plain.channels[0].energies).cwiseAbs().maxCoeff(), 1e-4);
  options.settings.level_shift_mode = INPUT_PARSER::LEVEL_SHIFT::off;
  options.settings.diis = false;
  options.settings.damping = 0.9;  // a tenth of the way in every step: the last tenth of the error must go too
  options.settings.max_iterations = 400;
  const MOLECULE_T fluoride = TESTS::sample_molecule(TESTS::hydrogen_fluoride, "6-31G");
  const RUN_T damped = run(fluoride, options);
  EXPECT_TRUE(damped.scf.converged);
  EXPECT_THAT(damped.report, Not(HasSubstr("    yes\n")));
  EXPECT_NEAR(damped.scf.energy.total(), run(fluoride).scf.energy.total(), 2e-8);
}

TEST(SCF_LOOP, AutomaticShiftComesOnceAfterAHundredIterations) {
  RUN_OPTIONS_T options;
  options.settings.energy_tolerance = 0.0;  // never converges
  options.settings.max_iterations = 105;
  const RUN_T never = run(TESTS::sample_molecule(TESTS::hydrogen_fluoride, "STO-3G"), options);
  EXPECT_FALSE(never.scf.converged);
  const std::string line =
      "   *** AUTO level shift activated after 100 non-converged iterations: applying 0.2 Ha for remaining iters\n";
  const auto first = never.report.find(line);
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(never.report.find(line, first + 1), std::string::npos);
  EXPECT_EQ(never.report.compare(first + line.size(), 8, "     101"), 0);
  EXPECT_THAT(never.report, HasSubstr("   *** SCF NOT converged after 105 iter  (dE="));
  EXPECT_THAT(never.report, HasSubstr("   ***     - %level_shift 0.4  (AUTO already tried 0.2 Ha)\n"));
}

TEST(SCF_LOOP, OpenShellRunsThatFailSayWhatMayHelp) {
  RUN_OPTIONS_T options;
  options.guess = INPUT_PARSER::GUESS::core;
  const auto failing_run = [&](const std::string& geometry, int multiplicity) {
    const RUN_T failed = run(open_molecule(geometry, "6-31G", {0, multiplicity, false}), options);
    EXPECT_FALSE(failed.scf.converged);
    return failed.report;
  };
  options.settings.max_iterations = 2;
  EXPECT_THAT(failing_run("O 0 0 0\nO 0 0 1.2\n", 3),
              HasSubstr("   ***   indicates a qualitatively multi-reference state\n"));
  options.settings.max_iterations = 30;
  options.settings.density_tolerance = options.settings.energy_tolerance = 0.0;
  EXPECT_THAT(failing_run("N 0 0 0\n", 4), HasSubstr("   *** Diagnostic: SCF is near convergence but dP keeps spiking\n"));
  options.settings.gradient_tolerance = 0.0;
  options.settings.level_shift_mode = INPUT_PARSER::LEVEL_SHIFT::off;
  EXPECT_THAT(failing_run("N 0 0 0\n", 4), HasSubstr("   ***     - %level_shift 0.2  (if not already set)\n"
                                                     "   ***     - %initial_guess sad  (already default for UKS)\n"));
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Eigen/Eigenvalues>
#include <sstream>

#include "geometry/hessian_update.hpp"
#include "geometry/model_hessian.hpp"
#include "geometry/optimizer.hpp"
#include "geometry/optimizer_report.hpp"
#include "geometry/rfo_step.hpp"
#include "geometry/trust_radius.hpp"
#include "unit/geometry/function_surface.hpp"

// The optimisers on surfaces whose gradient is exact, and the pieces they are made of.

namespace {

using namespace zentrix;
using namespace zentrix::OPTIMIZER;
using namespace zentrix::TESTS;
using INPUT_PARSER::MODEL_HESSIAN;
using ::testing::HasSubstr;

/// An optimisation with what it told.
struct OPTIMIZING_T : OPTIMIZER_OBSERVER_T {
  OPTIMIZING_T(const STRUCTURE_T& atoms, const VECTOR& start, const FUNCTION_T& function,
               const OPTIMIZER_SETTINGS_T& settings = {}) {
    FUNCTION_SURFACE_T surface(atoms, start, function);
    result = optimize(surface, settings, *this);
  }
  void started(bool is_internal, MODEL_HESSIAN, const THRESHOLDS_T&) override { internal = is_internal; }
  void step_rejected(int, double) override { ++rejected; }
  void coordinates_remade() override { ++remade; }

  OPTIMIZATION_T result;
  bool internal = false;
  int rejected = 0;
  int remade = 0;
};

double largest(const VECTOR& v) { return v.lpNorm<Eigen::Infinity>(); }

TEST(Optimizer, BothCoordinateSystemsFindTheSameMinimum) {
  // The tolerance is what the thresholds leave on the flat bottom of a sum of pairs.
  for (const auto& [name, lines] : samples) {
    if (name == "XeF4") continue;  // several minima of this surface lie within reach
    const STRUCTURE_T reference = structure(lines);
    const VECTOR start = reference.x + random_vector(reference.x.size(), 0.12, 5);
    double energy[3] = {};
    for (int run = 0; run < 3; ++run) {
      OPTIMIZER_SETTINGS_T settings;
      settings.max_steps = 150;
      settings.initial_hessian = run == 1 ? MODEL_HESSIAN::diag : MODEL_HESSIAN::full;
      settings.force_cartesian = run == 2;
      const OPTIMIZING_T search(reference, start, strained_pairs(reference), settings);
      EXPECT_EQ(search.result.outcome, OUTCOME::converged) << name << " " << run;
      EXPECT_EQ(search.internal, run != 2);
      EXPECT_LT(largest(search.result.point.gradient), 2e-3) << name << " " << run;
      energy[run] = search.result.point.energy;
    }
    EXPECT_NEAR(energy[0], energy[1], 1e-4) << name;
    EXPECT_NEAR(energy[0], energy[2], 1e-4) << name;
  }
}

TEST(Optimizer, ConstraintsHoldAndOnlyTheirForcesRemain) {
  const STRUCTURE_T reference = sample("HOOH");
  const VECTOR start = reference.x + random_vector(reference.x.size(), 0.1, 9);
  OPTIMIZER_SETTINGS_T settings;
  settings.max_steps = 100;
  settings.constraints = {{'B', {2, 1}, {}}, {'D', {3, 1, 2, 4}, 1.2}, {'B', {3, 4}, {}}};
  const OPTIMIZATION_T result = OPTIMIZING_T(reference, start, strained_pairs(reference), settings).result;
  ASSERT_EQ(result.outcome, OUTCOME::converged);
  using INTERNAL_COORDS::KIND;
  INTERNAL_COORDS::COORDINATE_SET_T held;
  held.coordinates = {{KIND::bond, {1, 2, 0, 0}}, {KIND::dihedral, {3, 1, 2, 4}}, {KIND::bond, {3, 4, 0, 0}}};
  const VECTOR before = INTERNAL_COORDS::coordinate_values(held, start);
  const VECTOR after = INTERNAL_COORDS::coordinate_values(held, result.positions);
  EXPECT_NEAR(after(0), before(0), 1e-6);
  EXPECT_NEAR(after(1), 1.2, 1e-6);
  EXPECT_NEAR(after(2), before(2), 1e-6);
  // What is left of the gradient lies in the held directions.
  const MATRIX v = INTERNAL_COORDS::frame_of(INTERNAL_COORDS::wilson_b(held, result.positions)).v;
  const VECTOR& g = result.point.gradient;
  EXPECT_GT(largest(g), 5e-3);
  EXPECT_LT(largest(g - v * (v.transpose() * g)), 1e-3);
}

TEST(Optimizer, BentChainBecomesStraight) {
  // In this order of the atoms the strain of the surface keeps the oxygen atoms apart: the minimum is straight.
  const STRUCTURE_T straight = structure("O 0 0 1.16\nO 0 0 -1.16\nC 0 0 0\n");
  const VECTOR bent = structure("O 0.35 0 1.1\nO 0.35 0 -1.1\nC 0 0 0\n").x;
  const OPTIMIZING_T search(straight, bent, strained_pairs(straight));
  EXPECT_EQ(search.result.outcome, OUTCOME::converged);
  EXPECT_LT(largest(search.result.point.gradient), 2e-3);
  EXPECT_GT(search.remade, 0) << "no angle of the start is linear";
}

TEST(Optimizer, NeverConvergesOnTheFirstStep) {
  const STRUCTURE_T atom = structure("He 0 0 1\n");
  const OPTIMIZATION_T result = OPTIMIZING_T(atom, atom.x, [](const VECTOR&) { return -1.0; }).result;
  EXPECT_EQ(result.outcome, OUTCOME::converged);
  EXPECT_EQ(result.steps, 2);
  EXPECT_EQ(result.positions, atom.x);
}

TEST(Optimizer, RefusalsComeBeforeAnyWork) {
  OPTIMIZER_SETTINGS_T solvated;
  solvated.solvated = true;
  OPTIMIZER_SETTINGS_T constrained;
  constrained.constraints = {{'B', {1, 2}, {}}, {'D', {3, 1, 2, 7}, {}}};
  const auto expect_refusal = [](const std::string& lines, const OPTIMIZER_SETTINGS_T& settings, const char* message) {
    const STRUCTURE_T start = structure(lines);
    FUNCTION_SURFACE_T surface(start, start.x, strained_pairs(start));
    std::ostringstream report;
    OPTIMIZER_PRINTER_T printer(surface.molecule(), {}, report);
    EXPECT_EQ(optimize(surface, settings, printer).outcome, OUTCOME::refused);
    EXPECT_EQ(surface.evaluations, 0);
    EXPECT_THAT(report.str(), HasSubstr(message));
  };
  expect_refusal(hydrogen_fluoride, solvated,
                 " *** PCM ERROR: PCM with the Cartesian-BFGS optimizer is\n"
                 "     not supported in v0.74.x.  This path is taken only for\n"
                 "     molecules too small for internal coordinates (<= 2 atoms).\n"
                 "     Use a larger system, or remove %solvent / %eps / %pcm.\n");
  expect_refusal(water, constrained,
                 "   matched auto-generated bond #1\n *** ERROR: constraint 2: dihedral atom out of range.\n"
                 " *** ERROR: failed to apply geometry constraints; aborting optimization.\n");
}

TEST(Optimizer, AFailureKeepsTheGeometryItHappenedAt) {
  const STRUCTURE_T reference = sample("water");
  FUNCTION_SURFACE_T surface(reference, reference.x + random_vector(9, 0.2, 1), strained_pairs(reference));
  surface.failing_evaluation = 3;
  std::ostringstream report;
  OPTIMIZER_PRINTER_T printer(surface.molecule(), {}, report);
  EXPECT_EQ(optimize(surface, {}, printer).outcome, OUTCOME::scf_failed);
  EXPECT_EQ(surface.evaluations, 3);
  const std::string text = report.str(), title = "   Geometry of step 3 (Angstrom):\n";
  const std::size_t rows = text.find(title) + title.size();
  EXPECT_THAT(text, HasSubstr("   Last geometry (Angstrom):\n" + text.substr(rows, text.find("   ***", rows) - rows)));
}

TEST(Optimizer, StepsThatRaiseTheEnergyAreTakenBack) {
  // A narrow wall behind a gentle slope: the first steps run into it.
  STRUCTURE_T start = structure("H 0 0 0\nH 0 0 1\n");
  start.x(5) = 1.95;
  const OPTIMIZING_T search(start, start.x, [](const VECTOR& x) {
    const double over = std::max(distance(x, 0, 1) - 2.0, 0.0);
    return -0.05 * distance(x, 0, 1) + 50.0 * over * over;
  });
  EXPECT_EQ(search.result.outcome, OUTCOME::converged);
  EXPECT_GT(search.rejected, 0);
  EXPECT_NEAR(distance(search.result.positions, 0, 1), 2.0005, 1e-5);
}

TEST(TrustRadius, FollowsTheRatio) {
  const double rows[][3] = {{0.16, -0.1, 0.04}, {0.05, -0.1, 0.02}, {0.16, 0.0, 0.08}, {0.03, 0.2, 0.02},
                            {0.15, 0.25, 0.15}, {0.15, 0.75, 0.15}, {0.15, 0.8, 0.18}, {0.29, 1.0, 0.3}};
  for (const auto& [trust, ratio, next] : rows) EXPECT_NEAR(next_trust(trust, ratio), next, 1e-15) << trust << ' ' << ratio;
  EXPECT_EQ(energy_ratio(-1.0, 1e-16), 1.0);
  EXPECT_EQ(energy_ratio(-1.0, -2.0), 0.5);
}

TEST(RfoStep, IsTheMinimumOfTheModelWithinTheTrustRadius) {
  const MATRIX random = random_vector(36, 1.7, 4).reshaped(6, 6);
  const VECTOR gradient = random_vector(6, 0.5, 5);
  const MATRIX metric = MATRIX::Identity(6, 6) + 0.1 * random * random.transpose();
  for (const double lift : {0.0, 8.0}) {  // indefinite and positive definite
    const MATRIX hessian = random + random.transpose() + lift * MATRIX::Identity(6, 6);
    const RFO_STEP_T result = rfo_step(hessian, gradient, metric, 0.02);
    ASSERT_TRUE(result.limited);
    EXPECT_NEAR(result.step.dot(metric * result.step), 0.02 * 0.02, 1e-9);
    // Stationary on the ellipsoid, and of the stationary points the lowest.
    const MATRIX shifted = hessian - result.shift * metric;
    EXPECT_LT((shifted * result.step + gradient).norm(), 1e-9);
    EXPECT_GT(Eigen::SelfAdjointEigenSolver<MATRIX>(shifted).eigenvalues()(0), 0.0);
    const RFO_STEP_T free = rfo_step(hessian + 8.0 * metric, 0.05 * gradient, metric, 1.0);
    EXPECT_FALSE(free.limited);
    EXPECT_NEAR(0.05 * gradient.dot(free.step), free.shift, 1e-12);
  }
}

TEST(HessianUpdate, MeetsTheSecantConditionAndStaysPositive) {
  MATRIX hessian = MATRIX::Identity(3, 3) * 0.5;
  const VECTOR step{{0.1, -0.05, 0.02}};
  const VECTOR change{{0.04, -0.03, 0.01}};
  bfgs_update(hessian, step, change);
  EXPECT_LT((hessian * step - change).norm(), 1e-14);
  bfgs_update(hessian, step, -change);  // negative curvature
  EXPECT_GT(Eigen::SelfAdjointEigenSolver<MATRIX>(hessian).eigenvalues()(0), 0.0);
  const MATRIX before = hessian;
  bfgs_update(hessian, VECTOR::Zero(3), change);
  EXPECT_EQ(hessian, before);
}

TEST(ModelHessian, IsCoupledOnlyInTheFullModel) {
  const STRUCTURE_T molecule = sample("formaldehyde");
  const auto set = coordinates_of(molecule);
  EXPECT_TRUE(model_hessian(set, molecule.z, molecule.x, MODEL_HESSIAN::diag).isDiagonal());
  EXPECT_FALSE(model_hessian(set, molecule.z, molecule.x, MODEL_HESSIAN::full).isDiagonal());
}

}  // namespace

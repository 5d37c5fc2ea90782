#include <gtest/gtest.h>

#include <random>

#include "geometry/hessian_transform.hpp"
#include "geometry/hessian_update.hpp"
#include "geometry/prfo_step.hpp"
#include "geometry/saddle_search.hpp"
#include "geometry/vectors.hpp"
#include "unit/geometry/function_surface.hpp"

// The transition-state search and its pieces, on surfaces whose saddle points are known.

namespace {

using namespace zentrix;
using namespace zentrix::OPTIMIZER;
using namespace zentrix::TRANSITION_STATE;
using INTERNAL_COORDS::angle_at;
using namespace zentrix::TESTS;

MATRIX cartesian_hessian(GRADIENTS::ENERGY_SURFACE_T& surface, const VECTOR& x) {
  constexpr double h = 1e-3;
  MATRIX hessian(x.size(), x.size());
  VECTOR y = x;
  for (Eigen::Index i = 0; i < x.size(); ++i) {
    y(i) = x(i) + h;
    const VECTOR forward = surface.energy_and_gradient(y).gradient;
    y(i) = x(i) - h;
    hessian.col(i) = (forward - surface.energy_and_gradient(y).gradient) / (2.0 * h);
    y(i) = x(i);
  }
  return 0.5 * (hessian + hessian.transpose());
}

/// An atom that jumps between two others: a barrier of 0.02 hartree where both distances are 2.4 bohr, 0.25 bohr away
/// from either minimum in half the difference of the distances.
FUNCTION_T jumping_atom(double angle) {
  return [angle](const VECTOR& x) {
    const double first = distance(x, 0, 1);
    const double second = distance(x, 0, 2);
    const double u = (first - second) / 0.5;
    const double v = first + second - 4.8;
    const double bend = angle_at(x, 2, 1, 3) - angle;
    return 0.02 * (u * u - 1.0) * (u * u - 1.0) + v * v + 0.1 * bend * bend + 0.03 * u * v;
  };
}

struct RECORD_T : SADDLE_OBSERVER_T {
  std::vector<FOLLOWED_MODE_T> followed;
  bool internal = false;
  int refused_modes = 0;
  int turns = 0;
  void started(bool in_internals, const THRESHOLDS_T&) override { internal = in_internals; }
  void mode_refused(int, int n_modes) override { refused_modes = n_modes; }
  void evaluated(const STEP_ROW_T&, const FOLLOWED_MODE_T& mode) override { followed.push_back(mode); }
  void turned() override { ++turns; }
};

SADDLE_POINT_T search(GRADIENTS::ENERGY_SURFACE_T& surface, const SADDLE_SETTINGS_T& settings, SADDLE_OBSERVER_T& observer) {
  return find_saddle(surface, cartesian_hessian(surface, GRADIENTS::positions_of(surface.molecule())), settings, observer);
}

TEST(PRFO_STEP, ClimbsOneModeAndDescendsTheOthers) {
  const VECTOR eigenvalues{{-0.05, 0.02, 0.3, 0.8}};
  const VECTOR gradient{{0.004, -0.003, 0.01, 0.0}};
  for (const Eigen::Index followed : {0, 1}) {
    const PRFO_STEP_T free = prfo_step(eigenvalues, gradient, followed, 100.0);
    EXPECT_FALSE(free.limited);
    for (Eigen::Index k = 0; k < 3; ++k) {
      EXPECT_EQ(free.step(k) * gradient(k) > 0.0, k == followed) << k;
    }
    EXPECT_EQ(free.step(3), 0.0);
    const PRFO_STEP_T limited = prfo_step(eigenvalues, gradient, followed, 0.01);
    EXPECT_TRUE(limited.limited);
    EXPECT_NEAR(limited.step.norm(), 0.01, 1e-10);
    for (Eigen::Index k = 0; k < 3; ++k) EXPECT_GT(limited.step(k) * free.step(k), 0.0) << k;
  }
  // Small gradients in a Hessian of the right signs: the Newton step to the saddle point.
  const PRFO_STEP_T newton = prfo_step(eigenvalues, 1e-6 * gradient, 0, 1.0);
  for (Eigen::Index k = 0; k < 3; ++k) EXPECT_NEAR(newton.step(k), -1e-6 * gradient(k) / eigenvalues(k), 1e-10);
}

TEST(PRFO_STEP, LeavesAValleyThatShowsNoWayUp) {
  const VECTOR eigenvalues{{-0.05, 0.02, 0.3}};
  const VECTOR gradient{{0.0, 0.0, 0.01}};
  const PRFO_STEP_T valley = prfo_step(eigenvalues, gradient, 1, 0.2);
  EXPECT_NEAR(valley.step(1), 0.2, 1e-3);
  // On the top of the barrier there is nothing to climb.
  const PRFO_STEP_T top = prfo_step(eigenvalues, gradient, 0, 0.2);
  EXPECT_EQ(top.step(0), 0.0);
  EXPECT_NEAR(top.step(2), -0.01 / 0.3, 1e-3);
}

TEST(FOLLOW_MODE, StaysWithNegativeEigenvalues) {
  const VECTOR eigenvalues{{-0.2, -0.1, 0.3}};
  const MATRIX vectors = MATRIX::Identity(3, 3);
  const VECTOR before = VECTOR::LinSpaced(3, 1.0, 3.0).normalized();
  EXPECT_EQ(follow_mode(eigenvalues, vectors, before, 0.4).mode, 3);
  const FOLLOWED_MODE_T kept = follow_mode(eigenvalues, vectors, before, -0.4);
  EXPECT_EQ(kept.mode, 2);
  EXPECT_EQ(kept.eigenvalue, -0.1);
  EXPECT_NEAR(kept.overlap, before(1), 1e-15);
  EXPECT_EQ(follow_mode(eigenvalues.cwiseAbs(), vectors, before, -0.4).mode, 3);
}

TEST(BOFILL_UPDATE, FulfilsTheSecantConditionAndStaysSymmetric) {
  std::mt19937 generator(3);
  std::uniform_real_distribution<double> element(-1.0, 1.0);
  MATRIX hessian = MATRIX::NullaryExpr(6, 6, [&] { return element(generator); });
  hessian = (hessian + hessian.transpose()).eval();
  const MATRIX before = hessian;
  for (const double length : {1.0, 1e-3}) {
    const VECTOR step = length * VECTOR::NullaryExpr(6, [&] { return element(generator); });
    const VECTOR change = length * VECTOR::NullaryExpr(6, [&] { return element(generator); });
    bofill_update(hessian, step, change);
    EXPECT_LT((hessian * step - change).norm(), 1e-13 * length);
    EXPECT_LT((hessian - hessian.transpose()).norm(), 1e-13);
    // A change across the step leaves the rank-one update undefined; the mixture stays finite.
    MATRIX orthogonal = before;
    VECTOR across = VECTOR::NullaryExpr(6, [&] { return element(generator); });
    across -= across.dot(step) / step.squaredNorm() * step;
    bofill_update(orthogonal, step, before * step + across);
    EXPECT_LT((orthogonal * step - before * step - across).norm(), 1e-12);
  }
  MATRIX unchanged = before;
  bofill_update(unchanged, VECTOR::Zero(6), VECTOR::Ones(6));
  bofill_update(unchanged, VECTOR::Ones(6), before * VECTOR::Ones(6));
  EXPECT_EQ(unchanged, before);
}

/// The quadratic model in internal coordinates must follow a strained surface to third order: without the bend of the
/// coordinates it would only to second.
TEST(HESSIAN_TRANSFORM, KeepsTheQuadraticModelAwayFromStationaryPoints) {
  const STRUCTURE_T hydrogen_peroxide = sample("HOOH");
  const VECTOR x = 1.03 * hydrogen_peroxide.x;
  FUNCTION_SURFACE_T surface(hydrogen_peroxide, x, strained_pairs(hydrogen_peroxide));
  const MATRIX cartesian = cartesian_hessian(surface, x);
  INTERNAL_SYSTEM_T system(hydrogen_peroxide.z, INTERNAL_COORDS::generate_coordinates(hydrogen_peroxide.z, x), {});
  const GRADIENTS::SURFACE_POINT_T here = surface.energy_and_gradient(x);
  const COORDINATE_POINT_T point = point_in_coordinates(system, x, here.gradient);
  ASSERT_GT(point.gradient.norm(), 0.01);
  const MATRIX hessian = hessian_in_coordinates(system, point, cartesian);
  EXPECT_LT((hessian_in_cartesian(system, point, hessian) - cartesian).cwiseAbs().maxCoeff(), 1e-6);

  VECTOR dq = VECTOR::LinSpaced(point.values.size(), 1.0, -0.7);
  dq = point.frame.u * (point.frame.u.transpose() * dq);
  const auto miss = [&](double length) {
    const VECTOR there = system.displaced(x, length * dq.normalized());
    const VECTOR q = system.difference(system.values(there), point.values);
    return std::abs(surface.energy(there).energy - here.energy - point.gradient.dot(q) - 0.5 * q.dot(hessian * q));
  };
  EXPECT_NEAR(miss(0.04) / miss(0.02), 8.0, 1.5);
}

TEST(SADDLE_SEARCH, ClimbsFromEitherSideToTheBarrier) {
  // Beyond the turning point of the barrier (0.12) the bend is the softest mode; the jump is the second. The minimum is at
  // -0.594; beyond it the way up goes on away from the barrier, and the search has to turn round.
  for (const auto& [side, mode] : {std::pair{-0.25, 0}, {0.0, 0}, {0.12, 2}, {-0.58, 2}, {-0.61, 2}}) {
    const STRUCTURE_T start = structure("H 0 " + std::to_string(side * 0.4) + " 0.7\nC 0 -1.1 0\nC 0 1.0 0.1\n");
    FUNCTION_SURFACE_T surface(start, start.x, jumping_atom(2.0));
    RECORD_T record;
    SADDLE_SETTINGS_T settings;
    settings.mode = mode;
    const SADDLE_POINT_T found = search(surface, settings, record);
    ASSERT_EQ(found.outcome, OUTCOME::converged) << side;
    EXPECT_TRUE(record.internal);
    EXPECT_EQ(record.turns, side < -0.6 ? 1 : 0) << side;
    EXPECT_LE(found.steps, 12);
    EXPECT_NEAR(found.point.energy, 0.02, 1e-6);
    EXPECT_NEAR(distance(found.positions, 0, 1), 2.4, 1e-3);
    EXPECT_NEAR(distance(found.positions, 0, 2), 2.4, 1e-3);
    EXPECT_EQ(found.negative_eigenvalues, 1);
    for (const FOLLOWED_MODE_T& followed : record.followed) EXPECT_GT(followed.overlap, 0.7);
    // The final Hessian is handed out in Cartesian form: it bends the right way along the jump.
    const MATRIX exact = cartesian_hessian(surface, found.positions);
    Eigen::SelfAdjointEigenSolver<MATRIX> solver(exact);
    const VECTOR jump = solver.eigenvectors().col(0);
    EXPECT_NEAR(jump.dot(found.hessian * jump), solver.eigenvalues()(0), 0.1 * std::abs(solver.eigenvalues()(0)));
  }
}

TEST(SADDLE_SEARCH, UsesCartesianCoordinatesForAtomsOnALine) {
  const STRUCTURE_T start = structure("H 0 0 0.1\nF 0 0 -1.25\nF 0 0 1.3\n");
  FUNCTION_SURFACE_T surface(start, start.x, [](const VECTOR& x) {
    const double u = (distance(x, 0, 1) - distance(x, 0, 2)) / 0.5;
    const double v = distance(x, 0, 1) + distance(x, 0, 2) - 4.8;
    return 0.02 * (u * u - 1.0) * (u * u - 1.0) + 0.3 * v * v + 0.02 * x.segment<2>(0).squaredNorm();
  });
  RECORD_T record;
  const SADDLE_POINT_T found = search(surface, {}, record);
  ASSERT_EQ(found.outcome, OUTCOME::converged);
  EXPECT_FALSE(record.internal);
  EXPECT_NEAR(found.point.energy, 0.02, 1e-6);
}

TEST(SADDLE_SEARCH, FollowsTheModeAskedForAndRefusesOthers) {
  // Two barriers cross in one structure: along the jump and along the angle.
  const auto two_barriers = [](const VECTOR& x) {
    const double u = (distance(x, 0, 1) - distance(x, 0, 2)) / 0.5;
    const double v = distance(x, 0, 1) + distance(x, 0, 2) - 4.8;
    const double w = (angle_at(x, 2, 1, 3) - 2.0) / 0.3;
    return 0.02 * (u * u - 1.0) * (u * u - 1.0) + 0.3 * v * v + 0.01 * (w * w - 1.0) * (w * w - 1.0);
  };
  const STRUCTURE_T start = structure("H 0 -0.03 0.75\nC 0 -1.1 0\nC 0 1.0 0.1\n");
  std::vector<VECTOR> ends;
  for (const int mode : {1, 2}) {
    FUNCTION_SURFACE_T surface(start, start.x, two_barriers);
    RECORD_T record;
    SADDLE_SETTINGS_T settings;
    settings.mode = mode;
    const SADDLE_POINT_T found = search(surface, settings, record);
    ASSERT_EQ(found.outcome, OUTCOME::converged) << mode;
    EXPECT_EQ(record.followed.front().mode, mode);
    EXPECT_EQ(found.negative_eigenvalues, 1) << mode;
    ends.push_back(found.positions);
  }
  EXPECT_GT(std::abs(angle_at(ends[0], 2, 1, 3) - angle_at(ends[1], 2, 1, 3)), 0.2);

  FUNCTION_SURFACE_T surface(start, start.x, two_barriers);
  RECORD_T record;
  SADDLE_SETTINGS_T settings;
  settings.mode = 4;
  EXPECT_EQ(search(surface, settings, record).outcome, OUTCOME::refused);
  EXPECT_EQ(record.refused_modes, 3);
}

TEST(SADDLE_SEARCH, EndsWithTheLastGeometryWhenAnEnergyFails) {
  const STRUCTURE_T start = structure("H 0 0.1 0.7\nC 0 -1.1 0\nC 0 1.0 0.1\n");
  FUNCTION_SURFACE_T surface(start, start.x, jumping_atom(2.0));
  const MATRIX hessian = cartesian_hessian(surface, start.x);
  surface.failing_evaluation = surface.evaluations + 3;
  RECORD_T record;
  const SADDLE_POINT_T failed = find_saddle(surface, hessian, {}, record);
  EXPECT_EQ(failed.outcome, OUTCOME::scf_failed);
  EXPECT_EQ(failed.steps, 3);
  EXPECT_EQ(failed.positions.size(), 9);
  SADDLE_SETTINGS_T short_settings;
  short_settings.max_steps = 2;
  const SADDLE_POINT_T cut = find_saddle(surface, hessian, short_settings, record);
  EXPECT_EQ(cut.outcome, OUTCOME::step_limit);
  EXPECT_EQ(cut.steps, 2);
}

}  // namespace

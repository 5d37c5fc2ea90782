#include <gtest/gtest.h>

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

/// An atom (1) between two others (2, 3): the difference of its distances from them, and the excess of their sum. Minima at
/// a difference of -1 and 1, a barrier of 0.02 hartree between them where both distances are 2.4 bohr.
double jump(const VECTOR& x) { return (distance(x, 0, 1) - distance(x, 0, 2)) / 0.5; }
double excess(const VECTOR& x) { return distance(x, 0, 1) + distance(x, 0, 2) - 4.8; }
double barrier(double u) { return 0.02 * (u * u - 1.0) * (u * u - 1.0); }

double jumping_atom(const VECTOR& x) {
  const double bend = angle_at(x, 2, 1, 3) - 2.0;
  return barrier(jump(x)) + excess(x) * excess(x) + 0.1 * bend * bend + 0.03 * jump(x) * excess(x);
}

/// A search with what it told.
struct SEARCH_T : SADDLE_OBSERVER_T {
  SEARCH_T(const std::string& start, const FUNCTION_T& function, int mode = 0, int failing_evaluation = 0)
      : surface(structure(start), structure(start).x, function) {
    const MATRIX hessian = cartesian_hessian(surface, GRADIENTS::positions_of(surface.molecule()));
    surface.evaluations = 0;
    surface.failing_evaluation = failing_evaluation;
    SADDLE_SETTINGS_T settings;
    settings.mode = mode;
    found = find_saddle(surface, hessian, settings, *this);
  }
  void started(bool in_internals, const THRESHOLDS_T&) override { internal = in_internals; }
  void evaluated(const STEP_ROW_T&, const FOLLOWED_MODE_T& mode) override { followed.push_back(mode); }
  void turned() override { ++turns; }

  FUNCTION_SURFACE_T surface;
  SADDLE_POINT_T found;
  std::vector<FOLLOWED_MODE_T> followed;
  bool internal = false;
  int turns = 0;
};

TEST(PRFO_STEP, ClimbsOneModeAndDescendsTheOthers) {
  const VECTOR eigenvalues{{-0.05, 0.02, 0.3, 0.8}};
  const VECTOR gradient{{0.004, -0.003, 0.01, 0.0}};
  for (const Eigen::Index followed : {0, 1}) {
    const PRFO_STEP_T free = prfo_step(eigenvalues, gradient, followed, 100.0);
    EXPECT_FALSE(free.limited);
    for (Eigen::Index k = 0; k < 3; ++k) EXPECT_EQ(free.step(k) * gradient(k) > 0.0, k == followed) << k;
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
  const MATRIX random = random_vector(36, 1.0, 3).reshaped(6, 6), before = random + random.transpose();
  MATRIX hessian = before;
  for (const double length : {1.0, 1e-3}) {
    const VECTOR step = random_vector(6, length, 4), change = random_vector(6, length, 5);
    bofill_update(hessian, step, change);
    EXPECT_LT((hessian * step - change).norm(), 1e-13 * length);
    EXPECT_LT((hessian - hessian.transpose()).norm(), 1e-13);
    // A change across the step leaves the rank-one update undefined; the mixture stays finite.
    MATRIX orthogonal = before;
    VECTOR across = random_vector(6, 1.0, 6);
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
    SCOPED_TRACE(side);
    SEARCH_T search("H 0 " + std::to_string(side * 0.4) + " 0.7\nC 0 -1.1 0\nC 0 1.0 0.1\n", jumping_atom, mode);
    const SADDLE_POINT_T& found = search.found;
    ASSERT_EQ(found.outcome, OUTCOME::converged);
    EXPECT_TRUE(search.internal);
    EXPECT_EQ(search.turns, side < -0.6 ? 1 : 0);
    EXPECT_LE(found.steps, 12);
    EXPECT_NEAR(found.point.energy, 0.02, 1e-6);
    EXPECT_NEAR(distance(found.positions, 0, 1), 2.4, 1e-3);
    EXPECT_NEAR(distance(found.positions, 0, 2), 2.4, 1e-3);
    EXPECT_EQ(found.negative_eigenvalues, 1);
    for (const FOLLOWED_MODE_T& followed : search.followed) EXPECT_GT(followed.overlap, 0.7);
  }
}

TEST(SADDLE_SEARCH, UsesCartesianCoordinatesForAtomsOnALine) {
  const SEARCH_T search("H 0 0 0.1\nF 0 0 -1.25\nF 0 0 1.3\n", [](const VECTOR& x) {
    return barrier(jump(x)) + 0.3 * excess(x) * excess(x) + 0.02 * x.segment<2>(0).squaredNorm();
  });
  ASSERT_EQ(search.found.outcome, OUTCOME::converged);
  EXPECT_FALSE(search.internal);
  EXPECT_NEAR(search.found.point.energy, 0.02, 1e-6);
}

TEST(SADDLE_SEARCH, FollowsTheModeAskedFor) {
  // Two barriers cross in one structure: along the jump and along the angle.
  const auto two_barriers = [](const VECTOR& x) {
    return barrier(jump(x)) + 0.3 * excess(x) * excess(x) + 0.5 * barrier((angle_at(x, 2, 1, 3) - 2.0) / 0.3);
  };
  std::vector<double> angles;
  for (const int mode : {1, 2}) {
    const SEARCH_T search("H 0 -0.03 0.75\nC 0 -1.1 0\nC 0 1.0 0.1\n", two_barriers, mode);
    ASSERT_EQ(search.found.outcome, OUTCOME::converged) << mode;
    EXPECT_EQ(search.followed.front().mode, mode);
    EXPECT_EQ(search.found.negative_eigenvalues, 1) << mode;
    angles.push_back(angle_at(search.found.positions, 2, 1, 3));
  }
  EXPECT_GT(std::abs(angles[0] - angles[1]), 0.2);
}

TEST(SADDLE_SEARCH, EndsWithTheLastGeometryWhenAnEnergyFails) {
  const SEARCH_T search("H 0 0.1 0.7\nC 0 -1.1 0\nC 0 1.0 0.1\n", jumping_atom, 0, 3);
  EXPECT_EQ(search.found.outcome, OUTCOME::scf_failed);
  EXPECT_EQ(search.found.steps, 3);
  EXPECT_EQ(search.found.positions.size(), 9);
}

}  // namespace

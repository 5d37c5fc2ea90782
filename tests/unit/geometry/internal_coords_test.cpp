#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

#include "geometry/covalent_radii.hpp"
#include "geometry/internal_coords.hpp"
#include "geometry/internal_coords_report.hpp"
#include "support/printed.hpp"
#include "unit/geometry/samples.hpp"

// Generation, values, B matrix, back-transformation and constraints of redundant internal coordinates.

namespace {

using namespace zentrix;
using namespace zentrix::INTERNAL_COORDS;
using namespace zentrix::TESTS;
using ::testing::HasSubstr;

int count(const COORDINATE_SET_T& set, KIND kind) {
  return static_cast<int>(
      std::count_if(set.coordinates.begin(), set.coordinates.end(), [kind](const INTCOORD_T& c) { return c.kind == kind; }));
}

TEST(InternalCoords, BondLimitsAreStrict) {
  const auto bonded = [](int z1, int z2, double d) {
    const COORDINATE_SET_T set = generate_coordinates({z1, z2}, d * VECTOR::Unit(6, 5));
    return !set.coordinates.empty() && !set.coordinates[0].through_space;
  };
  EXPECT_TRUE(bonded(6, 1, 2.6));
  EXPECT_FALSE(bonded(6, 1, 2.7));
  EXPECT_FALSE(bonded(6, 1, 0.1));
  EXPECT_TRUE(bonded(6, 1, 0.100001));
  EXPECT_NEAR(covalent_radius(10), 0.58 * BOHR_PER_ANGSTROM, 1e-12);
  for (const int z : {0, 86, 87}) EXPECT_NEAR(covalent_radius(z), 1.5 * BOHR_PER_ANGSTROM, 1e-12) << z;
}

TEST(InternalCoords, CoordinatesSpanAllVibrations) {
  for (const auto& [name, lines] : samples) {
    const STRUCTURE_T molecule = structure(lines);
    const COORDINATE_SET_T set = coordinates_of(molecule);
    const Eigen::Index vibrations = molecule.x.size() - rigid_motions(molecule.x).cols();
    EXPECT_EQ(frame_of(wilson_b(set, molecule.x)).v.cols(), vibrations) << name;
    EXPECT_EQ(set.n_bonds + set.n_angles + set.n_dihedrals, static_cast<int>(set.coordinates.size())) << name;
  }
}

TEST(InternalCoords, LongChainsKeepTheirSoftestVibrations) {
  // The bending of a zigzag chain as a whole changes every coordinate only a little.
  std::string lines = "H -0.9 -1.03 0\n";
  for (int i = 0; i < 40; ++i) {
    const double side = i % 2 == 0 ? -1.0 : 1.0;
    lines += fmt::format("C {0} {1} 0\nH {0} {2} 0.89\nH {0} {2} -0.89\n", 1.27 * i, 0.43 * side, 1.05 * side);
  }
  const STRUCTURE_T molecule = structure(lines);
  EXPECT_EQ(frame_of(wilson_b(coordinates_of(molecule), molecule.x)).v.cols(), molecule.x.size() - 6);
}

TEST(InternalCoords, KnownSetsAreFound) {
  const auto counts = [](const char* name) {
    const COORDINATE_SET_T set = coordinates_of(sample(name));
    return std::array<int, 4>{set.n_bonds, count(set, KIND::angle), count(set, KIND::linear_bend), set.n_dihedrals};
  };
  EXPECT_EQ(counts("water"), (std::array<int, 4>{2, 1, 0, 0}));
  EXPECT_EQ(counts("CO2"), (std::array<int, 4>{2, 0, 2, 0}));
  EXPECT_EQ(counts("acetylene"), (std::array<int, 4>{3, 0, 4, 0}));
  EXPECT_EQ(counts("allene"), (std::array<int, 4>{6, 6, 2, 4}));  // torsion of the ends against each other
  EXPECT_EQ(counts("BF3"), (std::array<int, 4>{3, 3, 0, 1}));     // out of plane
  EXPECT_EQ(counts("HOOH"), (std::array<int, 4>{3, 2, 0, 1}));
  EXPECT_EQ(counts("benzene"), (std::array<int, 4>{12, 18, 0, 24}));
  EXPECT_EQ(counts("three neon atoms"), (std::array<int, 4>{2, 1, 0, 0}));
  EXPECT_TRUE(coordinates_of(structure("He 0 0 0\n")).coordinates.empty());
}

/// Two ethenes face to face, their carbon atoms 4.2 bohr apart and two hydrogen atoms bent in to 3.4 bohr: the search for
/// the cycloaddition needs both carbon links and not that of the hydrogen atoms.
TEST(InternalCoords, FormingBondsJoinFragmentsByTheirRadii) {
  const STRUCTURE_T pair = structure(
      "C 0 0.69 0\nC 0 -0.69 0\nH 0.9 1.2 0.2\nH -0.9 1.2 -0.1\nH 0.9 -1.2 -0.1\nH -0.9 -1.2 -0.1\n"
      "C 0 0.69 2.2\nC 0 -0.69 2.2\nH 0.9 1.2 2.0\nH -0.9 1.2 2.3\nH 0.9 -1.2 2.3\nH -0.9 -1.2 2.3\n");
  const auto links = [&](FRAGMENT_LINKS wanted) {
    std::vector<std::array<int, 2>> found;
    for (const INTCOORD_T& c : generate_coordinates(pair.z, pair.x, wanted).coordinates)
      if (c.kind == KIND::bond && c.through_space) found.push_back({c.atoms[0], c.atoms[1]});
    return found;
  };
  EXPECT_EQ(links(FRAGMENT_LINKS::nearest), (std::vector<std::array<int, 2>>{{3, 9}}));
  EXPECT_EQ(links(FRAGMENT_LINKS::forming_bonds), (std::vector<std::array<int, 2>>{{1, 7}, {2, 8}}));
}

TEST(InternalCoords, ValuesAtTheirLimits) {
  const STRUCTURE_T chain = sample("acetylene");
  for (const INTCOORD_T& c : coordinates_of(chain).coordinates) {
    if (c.kind != KIND::linear_bend) continue;
    EXPECT_NEAR(c.value, PI, 1e-12);
  }
  VECTOR coincident = chain.x;
  coincident.segment<3>(6) = coincident.segment<3>(0);
  EXPECT_EQ(coordinate_value({KIND::angle, {3, 1, 2, 0}}, coincident), PI);
  // Seen along the central bond, the far atom is turned clockwise from the near one when the dihedral is positive.
  const STRUCTURE_T four = structure("H 1 0 0\nC 0 0 0\nC 0 0 1\nH 0 1 1\n");
  EXPECT_NEAR(coordinate_value({KIND::dihedral, {1, 2, 3, 4}}, four.x), PI / 2, 1e-12);
  EXPECT_NEAR(wrapped(3.5 * PI), -0.5 * PI, 1e-12);
  EXPECT_EQ(wrapped(-PI), PI);
}

TEST(InternalCoords, BMatrixIsTheDerivativeOfTheValues) {
  for (const auto& [name, lines] : samples) {
    const STRUCTURE_T molecule = structure(lines);
    const VECTOR x = molecule.x + random_vector(molecule.x.size(), 0.05, 7);
    const COORDINATE_SET_T set = coordinates_of(molecule);
    MATRIX numerical(set.coordinates.size(), x.size());
    constexpr double h = 1e-5;
    for (Eigen::Index k = 0; k < x.size(); ++k) {
      const VECTOR step = h * VECTOR::Unit(x.size(), k);
      numerical.col(k) =
          value_difference(set, coordinate_values(set, x + step), coordinate_values(set, x - step)) / (2.0 * h);
    }
    const MATRIX rigid = rigid_motions(x);
    for (Eigen::Index n = 0; n < numerical.rows(); ++n) {
      if (set.coordinates[static_cast<std::size_t>(n)].kind == KIND::linear_bend)
        numerical.row(n) -= (numerical.row(n) * rigid * rigid.transpose()).eval();
    }
    const MATRIX b = wilson_b(set, x);
    EXPECT_LT((b - numerical).cwiseAbs().maxCoeff(), 1e-7) << name;
    EXPECT_LT((b * rigid).cwiseAbs().maxCoeff(), 1e-10) << name;
  }
}

TEST(InternalCoords, StepsGoThereAndBack) {
  for (const auto& [name, lines] : samples) {
    const STRUCTURE_T molecule = structure(lines);
    const COORDINATE_SET_T set = coordinates_of(molecule);
    const VECTOR there = molecule.x + random_vector(molecule.x.size(), 0.12, 11);
    // The fixed axes of linear bends see a rotation of the bent chain in second order.
    const double tolerance = count(set, KIND::linear_bend) > 0 ? 2e-3 : 1e-6;
    const VECTOR q0 = coordinate_values(set, molecule.x);
    const VECTOR q1 = coordinate_values(set, there);
    const auto forth = back_transform(set, molecule.x, value_difference(set, q1, q0));
    EXPECT_TRUE(forth.converged) << name;
    EXPECT_LT(value_difference(set, q1, coordinate_values(set, forth.positions)).norm(), tolerance) << name;
    const auto back = back_transform(set, forth.positions, value_difference(set, q0, q1));
    EXPECT_TRUE(back.converged) << name;
    EXPECT_LT(value_difference(set, q0, coordinate_values(set, back.positions)).norm(), tolerance) << name;
  }
}

TEST(InternalCoords, BackTransformationCrossesTheDihedralSeam) {
  const STRUCTURE_T molecule = sample("HOOH");
  const COORDINATE_SET_T set = coordinates_of(molecule);
  VECTOR dq = VECTOR::Zero(static_cast<Eigen::Index>(set.coordinates.size()));
  VECTOR x = molecule.x;
  for (int turn = 0; turn < 9; ++turn) {
    dq(dq.size() - 1) = 40.0 * RADIAN_PER_DEGREE;
    const auto step = back_transform(set, x, dq);
    ASSERT_TRUE(step.converged) << turn;
    x = step.positions;
  }
  const VECTOR error = value_difference(set, coordinate_values(set, x), coordinate_values(set, molecule.x));
  EXPECT_LT(error.norm(), 1e-6);
}

TEST(InternalCoords, DriftOverALimitIsNoticed) {
  const auto bent = [](double degrees) {
    const double a = degrees * RADIAN_PER_DEGREE;
    return structure("C 0 0 0\nO 0 0 1.16\nO 0 " + std::to_string(1.16 * std::sin(a)) + " " +
                     std::to_string(1.16 * std::cos(a)) + "\n");
  };
  const auto suited = [](const STRUCTURE_T& from, const STRUCTURE_T& to) {
    return still_suited(coordinates_of(from), to.x);
  };
  EXPECT_TRUE(suited(bent(170), bent(176)));
  EXPECT_FALSE(suited(bent(170), bent(179)));
  EXPECT_TRUE(suited(bent(178), bent(170)));  // two linear bends
  EXPECT_FALSE(suited(bent(178), bent(160)));
  // Angles alone do not see a pyramid become flat and turn over; the linear bends of a T do.
  const auto pyramid = [](const std::string& height) {
    return structure("N 0 0 " + height + "\nH 0.96 0 0\nH -0.48 0.8314 0\nH -0.48 -0.8314 0\n");
  };
  EXPECT_TRUE(suited(pyramid("0.3"), pyramid("0.25")));
  EXPECT_FALSE(suited(pyramid("0.3"), pyramid("0.1")));
  EXPECT_TRUE(suited(pyramid("0.1"), pyramid("-0.3")));
  const STRUCTURE_T t_shape = structure("Cl 0 0 0\nF 0 0 1.7\nF 0 0 -1.7\nF 1.6 0 0\n");
  EXPECT_TRUE(suited(t_shape, t_shape));
}

TEST(InternalCoords, LimitsHold) {
  // A grid of hydrogen atoms 1.2 bohr apart: far more bonds, angles and dihedrals than the tables hold.
  std::vector<int> z;
  VECTOR x(3 * 216);
  for (int n = 0; n < 216; ++n) {
    z.push_back(1);
    x.segment<3>(3 * n) = 1.2 * Eigen::Vector3d(n % 6, n / 6 % 6, n / 36);
  }
  const COORDINATE_SET_T set = generate_coordinates(z, x);
  EXPECT_TRUE(set.bonds_truncated);
  EXPECT_EQ(set.n_bonds, MAX_BONDS);
  EXPECT_EQ(set.n_angles, MAX_ANGLES);
  EXPECT_EQ(set.n_dihedrals, MAX_TORSIONS);
  EXPECT_EQ(set.bonded.sum(), 2 * MAX_BONDS);
}

TEST(Constraints, AreMatchedInEitherDirectionOrAdded) {
  const STRUCTURE_T molecule = sample("HOOH");
  COORDINATE_SET_T set = coordinates_of(molecule);
  std::vector<CONSTRAINT_MATCH_T> matches;
  ASSERT_EQ(apply_constraints({{'B', {3, 1}, {}}, {'D', {4, 2, 1, 3}, 2.0}, {'A', {3, 2, 4}, {}}, {'B', {3, 4}, 4.5}},
                              molecule.x, set, matches),
            0);
  const std::string matching = printed(print_constraint_matching, matches, set);
  EXPECT_THAT(matching, HasSubstr("   Constraint matching:\n   --------------------\n"
                                  "   matched auto-generated bond #2\n"
                                  "   matched auto-generated torsion #1\n"));
  EXPECT_THAT(matching, HasSubstr("   ADDED (theta = "));
  EXPECT_THAT(matching, HasSubstr("   ADDED (R = 4.500000 bohr)\n"
                                  "   4 coordinate(s) frozen out of 8 total.\n"
                                  "     (2 new coordinate(s) added by extension)\n"));
  EXPECT_THAT(printed(print_summary, set), HasSubstr("   Total internal coordinates: 8\n   Bonds:                      4\n"
                                                     "   Angles:                     3\n   Dihedrals:                  1\n"
                                                     "   Frozen (constrained):       4\n"));
}

// Of an angle near the straight line the size alone is held; only the line itself has no direction to leave free.
TEST(Constraints, NearlyStraightAnglesStayFreeToTurn) {
  for (const auto& [target, frozen, kind] : {std::tuple{3.07, 1, KIND::angle}, std::tuple{3.1415, 2, KIND::linear_bend}}) {
    const STRUCTURE_T molecule = sample("acetylene");
    COORDINATE_SET_T set = coordinates_of(molecule);
    std::vector<CONSTRAINT_MATCH_T> matches;
    ASSERT_EQ(apply_constraints({{'A', {3, 1, 2}, target}}, molecule.x, set, matches), 0);
    EXPECT_EQ(set.n_frozen, frozen);
    for (const INTCOORD_T& c : set.coordinates) EXPECT_TRUE(!c.frozen || c.kind == kind);
    EXPECT_TRUE(still_suited(set, molecule.x));
  }
}

TEST(Constraints, BadEntriesAreRefused) {
  const std::tuple<std::string, INTERNAL_COORDS::CONSTRAINT_T, std::string> cases[] = {
      {"HOOH", {'X', {1, 2}, {}}, "constraint 2: unknown kind 'X' (expected B / A / D)."},
      {"HOOH", {'B', {1, 5}, {}}, "constraint 2: atom index out of range."},
      {"HOOH", {'A', {1, 2, 0}, {}}, "constraint 2: angle wing atom out of range."},
      {"HOOH", {'D', {1, 2, 3, 9}, {}}, "constraint 2: dihedral atom out of range."},
      {"acetylene", {'D', {3, 1, 2, 4}, {}}, "constraint 2: the dihedral has no value, three of its atoms lie on a line."},
      {"HOOH", {'B', {3, 4}, {}}, "cannot extend internal-coordinate set: MAX_BONDS reached."}};
  for (const auto& [geometry, constraint, line] : cases) {
    const STRUCTURE_T molecule = sample(geometry);
    COORDINATE_SET_T set = coordinates_of(molecule);
    if (line.find("MAX_BONDS") != std::string::npos) set.n_bonds = MAX_BONDS;
    std::vector<CONSTRAINT_MATCH_T> matches;
    EXPECT_NE(apply_constraints({{'B', {1, 2}, {}}, constraint}, molecule.x, set, matches), 0);
    const std::string text = printed(print_constraint_matching, matches, set);
    EXPECT_THAT(text, HasSubstr("   matched auto-generated bond #1\n *** ERROR: " + line + "\n"));
    EXPECT_THAT(text, ::testing::Not(HasSubstr("frozen out of")));
  }
}

TEST(Constraints, BackTransformationEndsOnTheTargets) {
  const STRUCTURE_T molecule = sample("benzene");
  COORDINATE_SET_T set = coordinates_of(molecule);
  std::vector<CONSTRAINT_MATCH_T> matches;
  ASSERT_EQ(
      apply_constraints({{'B', {1, 2}, 2.75}, {'B', {1, 4}, 5.0}, {'D', {1, 2, 3, 4}, 0.05}}, molecule.x, set, matches), 0);
  const VECTOR dq = random_vector(static_cast<Eigen::Index>(set.coordinates.size()), 0.05, 3);
  const VECTOR x = back_transform(set, molecule.x, dq).positions;
  for (const INTCOORD_T& c : set.coordinates) {
    if (!c.frozen) continue;
    EXPECT_NEAR(coordinate_value(c, x), c.target, 1e-9);
  }
}

}  // namespace

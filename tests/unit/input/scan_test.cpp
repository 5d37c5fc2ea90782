#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

#include "parsing.hpp"

namespace zentrix {
namespace {

using namespace INPUT_PARSER;
using TESTS::expect_refusals;
using TESTS::parse;
using TESTS::peroxide;

const std::string scan = "%job scan\n" + peroxide + "%scan\n";
const std::string constrained = "%job opt\n" + peroxide + "%constrain\n";

TEST(Scan, LinesInAllTheirForms) {
  const std::tuple<const char*, char, double, double, double, int> cases[] = {
      {"R 2 1.0 2.0 0.1", 'R', 1.0, 2.0, 0.1, 11},
      {"r 2 from 1.0 to 2.0 step 0.1", 'R', 1.0, 2.0, 0.1, 11},
      {"R 2 From 1.0 2.0 STEP 0.1", 'R', 1.0, 2.0, 0.1, 11},
      {"D 4 0 110 30", 'D', 0.0, 110.0, 27.5, 5},     // the nearest whole number of steps, both ends kept
      {"A 3 120 90 10", 'A', 120.0, 90.0, -10.0, 4},  // the sign of the step follows the direction
      {"A 3 90 120 -10", 'A', 90.0, 120.0, 10.0, 4},
      {"A 3 90 91 50", 'A', 90.0, 91.0, 1.0, 2},
      {"A 3 90 90 0", 'A', 90.0, 90.0, 0.0, 1},
  };
  for (const auto& [line, kind, from, to, step, points] : cases) {
    const auto result = parse(scan + line + "\n*end\n");
    ASSERT_EQ(result.error, 0) << line << "\n" << result.report;
    const SCAN_VARIABLE_T& v = result.input.scan.at(0);
    EXPECT_EQ(std::tie(v.kind, v.from, v.to, v.points), std::tie(kind, from, to, points)) << line;
    EXPECT_NEAR(v.step, step, 1e-14) << line;
  }
}

TEST(Scan, MalformedLines) {
  const std::string form =
      "\n            Expected: <kind> <row> [from] <val_from> [to] <val_to> [step] <val_step>\n"
      "              <kind>  = R | A | D\n              <row>   = z-matrix row index (1-based)\n";
  for (const std::string line : {"R 2 1.0 2.0", "B 2 1 2 0.1", "R x 1 2 0.1", "R 2 1 2 0", "R 2 1 2 nan", "RR 2 1 2 0.1",
                                 "R 2 to 1 from 2 0.1", "R 2 -1e308 1e308 1", "R"})
    expect_refusals({{line, " *** ERROR: malformed %scan line:\n              " + line + form}}, scan, "\n*end\n");
}

TEST(Scan, ChecksAgainstTheZmatrix) {
  const std::string fine = "R 2 1 2 0.001\nR 3 1 2 0.001\n";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"R 5 1 2 0.1\n", " *** ERROR: %scan: row 5 is out of range (z-matrix has 4 atoms).\n"},
      {"R 0 1 2 0.1\n", " *** ERROR: %scan: row 0 is out of range (z-matrix has 4 atoms).\n"},
      {"R 1 1 2 0.1\n", " *** ERROR: %scan: bond R can only be swept on row >= 2 (got row 1).\n"},
      {"A 2 90 120 5\n", " *** ERROR: %scan: angle A can only be swept on row >= 3 (got row 2).\n"},
      {"D 3 0 90 5\n", " *** ERROR: %scan: dihedral D can only be swept on row >= 4 (got row 3).\n"},
      {"R 2 1 2 0.1\nr 2 2 3 0.1\n", " *** ERROR: %scan: duplicate sweep variable R 2\n"},
      {"R 2 0 2 0.1\n", " *** ERROR: %scan: bond lengths of R 2 must be positive.\n"},
      {fine, " *** ERROR: %scan: the grid has more than 1000000 points.\n"},
      {"R 2 1 2 1e-300\n", " *** ERROR: %scan: the grid has more than 1000000 points.\n"},
      {"R 2 1 2 .1\nR 3 1 2 .1\nR 4 1 2 .1\nA 3 90 99 1\nA 4 90 99 1\n",
       " *** ERROR: %scan block has more than 4 sweep variables.\n"},
      {"",
       " *** ERROR: %job scan / scanopt requires a \"%scan ... *end\" block\n"
       "            with at least one sweep variable.\n"},
  };
  expect_refusals(cases, scan, "*end\n");
  expect_refusals({{"%job relaxed_scan\n" + TESTS::helium + "%scan\nR 2 1 2 0.1\n*end\n",
                    " *** ERROR: %job scan / scanopt requires a %gz (Z-matrix) geometry block.\n"
                    "            The scan sweeps z-matrix coordinates, so\n            a connectivity is required.\n"}});
}

TEST(Constraints, AreReadInEitherCaseAndKeepTheirOrder) {
  const auto result = parse(constrained + "b 2 1\nA 1 2 3\nD 4 3 2 1 # torsion\n*end\n");
  ASSERT_EQ(result.error, 0) << result.report;
  ASSERT_EQ(result.input.constraints.size(), 3u);
  EXPECT_EQ(result.input.constraints[0].kind, 'B');
  EXPECT_THAT(result.input.constraints[2].atoms, testing::ElementsAre(4, 3, 2, 1));
}

TEST(Constraints, FaultyLinesAndEntries) {
  const std::string form =
      "\n            Expected: <kind> <i> <j> [<k> [<l>]]\n              <kind> = B (bond, 2 atoms)\n"
      "                     | A (angle, 3 atoms)\n                     | D (dihedral, 4 atoms)\n";
  for (const std::string line : {"B 1", "A 1 2", "D 1 2 3", "B 1 2 3", "B 1 x", "BB 1 2", "B 1 2.0"})
    expect_refusals({{line, " *** ERROR: malformed %constrain line:\n              " + line + form}}, constrained,
                    "\n*end\n");
  std::string many;
  for (int i = 0; i < 33; ++i) many += "B 1 2\n";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {many, " *** ERROR: %constrain block has more than 32 entries.\n"},
      {"R 1 2\n", " *** ERROR: %constrain: unknown kind 'R'.\n"},
      {"B 1 5\n", " *** ERROR: %constrain: atom index 5 is out of range (natom = 4).\n"},
      {"A 0 1 2\n", " *** ERROR: %constrain: atom index 0 is out of range (natom = 4).\n"},
      {"B 1 2\nA 1 2 1\n", " *** ERROR: %constrain: entry 2 names atom 1 twice.\n"},
      {"B 1 2\nB 1 2\n", " *** ERROR: %constrain: entries 1 and 2 refer to the same coordinate.\n"},
      {"A 1 2 3\nB 1 2\nB 2 1\n", " *** ERROR: %constrain: entries 2 and 3 refer to the same coordinate.\n"},
      {"D 1 2 3 4\nD 4 3 2 1\n", " *** ERROR: %constrain: entries 1 and 2 refer to the same coordinate.\n"},
  };
  expect_refusals(cases, constrained, "*end\n");
  // Another bond order of the same atoms is another coordinate.
  EXPECT_EQ(parse(constrained + "A 1 2 3\nA 2 1 3\nD 1 2 3 4\nD 1 3 2 4\n*end\n").error, 0);
  // A relaxed scan holds what it sweeps already; an entry may not be swept as well.
  const std::string swept = "%job scanopt\n" + peroxide + "%scan\nD 4 0 90 30\nR 2 1.4 1.5 0.1\n*end\n%constrain\n";
  EXPECT_EQ(parse(swept + "B 1 3\nA 1 2 3\n*end\n").error, 0);
  expect_refusals(
      {{swept + "B 1 3\nB 1 2\n*end\n", " *** ERROR: %constrain: entry 2 is the coordinate that sweep variable 2 moves.\n"},
       {"%job ts\n" + peroxide + "%constrain\n*end\n",
        " *** ERROR: %constrain block requires %job opt or %job opt+freq.\n"}});
}

}  // namespace
}  // namespace zentrix

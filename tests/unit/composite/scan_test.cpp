#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "composite/scan_report.hpp"
#include "support/printed.hpp"

namespace {

using namespace zentrix;
using namespace zentrix::COMPOSITE;
using TESTS::printed;

SCAN_VARIABLES_T variables_of(const std::vector<int>& points) {
  SCAN_VARIABLES_T variables;
  for (const int n : points) variables.push_back({'R', 2, 1.0, 2.0, 0.1, n});
  return variables;
}

TEST(SCAN, LastVariableVariesFastestAndEndsAreExact) {
  const SCAN_VARIABLES_T two = variables_of({3, 4});
  ASSERT_EQ(grid_point_count(two), 12);
  EXPECT_EQ(grid_point_indices(two, 1), (std::vector<int>{1, 1}));
  EXPECT_EQ(grid_point_indices(two, 4), (std::vector<int>{1, 4}));
  EXPECT_EQ(grid_point_indices(two, 5), (std::vector<int>{2, 1}));
  EXPECT_EQ(grid_point_indices(two, 12), (std::vector<int>{3, 4}));
  EXPECT_EQ(grid_point_indices(variables_of({2, 1, 3, 2}), 8), (std::vector<int>{2, 1, 1, 2}));
  const auto line = variables_of({11})[0];
  EXPECT_EQ(scan_value(line, 1), 1.0);
  EXPECT_NEAR(scan_value(line, 4), 1.3, 1e-15);
  EXPECT_EQ(scan_value(line, 11), 2.0);
  EXPECT_EQ(scan_value(variables_of({1})[0], 1), 1.0);
}

TEST(SCAN, TablesMarkMinimumAndFailures) {
  SCAN_VARIABLES_T variables = {{'D', 4, 0.0, 90.0, 90.0, 2}, {'R', 3, 1.4, 1.6, 0.1, 3}};
  SCAN_RESULT_T result;
  for (int p = 0; p < 6; ++p) {
    const auto indices = grid_point_indices(variables, p + 1);
    result.points.push_back(
        {{scan_value(variables[0], indices[0]), scan_value(variables[1], indices[1])}, -1.0 - 0.01 * p, p != 5, 0});
  }
  const std::string two = printed(print_scan_summary, variables, result, false);
  // The failed point is lower, but no minimum.
  for (const char* text :
       {"   E (Ha) -- rows: var 1, columns: var 2\n", "   dE (kcal/mol relative to minimum)\n", "      0.0*          **\n",
        "   Minimum energy:  -1.0400000000\n     at var 1 (D) = 90.0000 deg\n     at var 2 (R) = 1.5000 Ang\n",
        "   ** = SCF did not converge at this point.\n"})
    EXPECT_THAT(two, testing::HasSubstr(text));
  variables = {{'R', 2, 1.0, 1.5, 0.1, 6}};
  for (SCAN_POINT_T& point : result.points) point.values.resize(1);
  const std::string one = printed(print_scan_summary, variables, result, true);
  for (const char* text : {"-6.2751  **\n", "   ** = optimization did not converge at this point.\n"})
    EXPECT_THAT(one, testing::HasSubstr(text));
}

TEST(SCAN, ReasonsForAnEarlyEnd) {
  const auto message = [](SCAN_STATUS status, bool relaxed) {
    const SCAN_VARIABLES_T variables = {{'R', 2, 1.0, 1.5, 0.1, 6}, {'X', 3, 1.0, 1.5, 0.1, 6}};
    return printed(print_scan_failure, variables, SCAN_RESULT_T{status, 4, {}}, relaxed);
  };
  const std::string refused = " *** ERROR: scanopt: cannot build geometry / constraints at point 4\n";
  EXPECT_EQ(message(SCAN_STATUS::no_geometry, false), " *** ERROR: scan: cannot build geometry at point 4\n");
  EXPECT_EQ(message(SCAN_STATUS::no_geometry, true), refused);
  EXPECT_EQ(message(SCAN_STATUS::refused, true), refused);
  EXPECT_EQ(message(SCAN_STATUS::too_many_held, true),
            "   Sweep variables and constraints together are more than 32 coordinates to hold.\n" + refused);
  EXPECT_EQ(message(SCAN_STATUS::unknown_kind, false), " *** ERROR (scan): unknown sweep kind: X\n");
  EXPECT_EQ(message(SCAN_STATUS::unknown_kind, true), " *** ERROR (scanopt): unknown sweep kind: X\n");
}

}  // namespace

#include <gtest/gtest.h>

#include <sstream>

#include "composite/scan_report.hpp"
#include "input/input_parser.hpp"
#include "molecule/molecule.hpp"

namespace {

using namespace zentrix;
using namespace zentrix::COMPOSITE;

/// Input, molecule and surface of a scan, as a run sets them up.
struct SCAN_RUN_T {
  INPUT_PARSER::INPUT_DATA_T input;
  DFT::FUNCTIONAL_T functional;
  MOLECULE_T molecule;
  std::unique_ptr<GRADIENTS::SCF_SURFACE_T> surface;

  explicit SCAN_RUN_T(const std::string& text) {
    std::istringstream file(text);
    std::ostringstream report;
    EXPECT_EQ(INPUT_PARSER::parse_input_stream(file, input, report), 0) << report.str();
    EXPECT_EQ(DFT::set_up_functional(input.method, functional, report), 0);
    EXPECT_EQ(build_molecule(input, molecule, report), 0) << report.str();
    surface = std::make_unique<GRADIENTS::SCF_SURFACE_T>(input, functional, molecule, nullptr);
  }
};

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

// Whatever density a point starts from, its energy is that of the point alone; the whole surface is symmetric in the two
// bonds.
TEST(SCAN, PointsDoNotDependOnTheirNeighbours) {
  SCAN_RUN_T run(
      "%job scan\n%scf_ptol 1e-8\n%scf_gtol 1e-7\n%gz\nO\nH 1 0.96\nH 1 0.96 2 104.5\n*end\n"
      "%scan\nR 2 0.9 1.1 0.1\nR 3 0.9 1.1 0.1\n*end\n");
  SCAN_OBSERVER_T silent;
  std::ostringstream report;
  const SCAN_RESULT_T result = rigid_scan(run.input, *run.surface, silent, report);
  ASSERT_EQ(result.status, SCAN_STATUS::done) << report.str();
  ASSERT_EQ(result.points.size(), 9U);
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < r; ++c) EXPECT_NEAR(result.points[3 * r + c].energy, result.points[3 * c + r].energy, 1e-9);
  for (const std::size_t p : {std::size_t{0}, std::size_t{5}}) {
    auto rows = run.input.zmatrix;
    rows[1].bond = result.points[p].values[0];
    rows[2].bond = result.points[p].values[1];
    std::vector<double> x(9);
    ASSERT_EQ(INPUT_PARSER::zmatrix_to_cartesian(rows, x, report), 0);
    GRADIENTS::SCF_SURFACE_T fresh(run.input, run.functional, run.molecule, nullptr);
    EXPECT_NEAR(fresh.energy(Eigen::Map<VECTOR>(x.data(), 9)).energy, result.points[p].energy, 1e-9);
  }
}

TEST(SCAN, AGeometryThatCannotBeBuiltEndsTheJobThere) {
  SCAN_RUN_T run("%job scan\n%gz\nO\nH 1 0.96\nH 1 0.96 2 104.5\n*end\n%scan\nA 3 90 0 45\n*end\n");
  SCAN_OBSERVER_T silent;
  std::ostringstream report;
  const SCAN_RESULT_T result = rigid_scan(run.input, *run.surface, silent, report);
  EXPECT_EQ(result.status, SCAN_STATUS::no_geometry);
  EXPECT_EQ(result.failed_at, 3);
  EXPECT_EQ(result.points.size(), 2U);
}

TEST(SCAN, TablesMarkMinimumAndFailures) {
  SCAN_VARIABLES_T variables = {{'D', 4, 0.0, 90.0, 90.0, 2}, {'R', 3, 1.4, 1.6, 0.1, 3}};
  SCAN_RESULT_T result;
  for (int p = 0; p < 6; ++p) {
    const auto indices = grid_point_indices(variables, p + 1);
    result.points.push_back(
        {{scan_value(variables[0], indices[0]), scan_value(variables[1], indices[1])}, -1.0 - 0.01 * p, p != 5, 0});
  }
  std::ostringstream two;
  print_scan_summary(variables, result, false, two);
  const std::string table = two.str();
  EXPECT_NE(table.find("   E (Ha) -- rows: var 1, columns: var 2\n"), std::string::npos) << table;
  EXPECT_NE(table.find("   dE (kcal/mol relative to minimum)\n"), std::string::npos);
  EXPECT_NE(table.find("      0.0*          **\n"), std::string::npos) << table;  // the failed point is lower, but no minimum
  EXPECT_NE(
      table.find("   Minimum energy:  -1.0400000000\n     at var 1 (D) = 90.0000 deg\n     at var 2 (R) = 1.5000 Ang\n"),
      std::string::npos)
      << table;
  EXPECT_NE(table.find("   ** = SCF did not converge at this point.\n"), std::string::npos);
  variables = {{'R', 2, 1.0, 1.5, 0.1, 6}};
  std::ostringstream one;
  for (SCAN_POINT_T& point : result.points) point.values.resize(1);
  print_scan_summary(variables, result, true, one);
  EXPECT_NE(one.str().find("  Relaxed PES scan -- summary\n"), std::string::npos);
  EXPECT_NE(one.str().find("   Point      R(Ang)         E(Ha)       dE(kcal/mol)\n"
                           "   -----   ----------   ----------------   ------------\n"),
            std::string::npos);
  EXPECT_NE(one.str().find("-6.2751  **\n"), std::string::npos) << one.str();
  EXPECT_NE(one.str().find("   ** = optimization did not converge at this point.\n"), std::string::npos);
}

}  // namespace

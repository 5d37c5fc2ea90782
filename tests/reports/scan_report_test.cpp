#include <cmath>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "support/program_run.hpp"
#include "support/reference.hpp"

using namespace zentrix;

namespace {

std::string water(const std::string& angle) { return "%gz\nO\nH 1 0.96\nH 1 0.96 2 " + angle + "\n*end\n"; }
const std::string bending = "%scan\nA 3 from 95 to 125 step 10\n*end\n";
const std::string peroxide = "%gz\nO\nO 1 1.45\nH 1 0.97 2 100\nH 2 0.97 1 100 3 115\n*end\n";

/// A run with the columns of its side file: values of the variables, energy, energy above the minimum, convergence.
struct SCAN_RUN_T {
  PROGRAM_RUN_T program;
  std::vector<std::vector<double>> rows;
};
SCAN_RUN_T run_scan(const std::string& input) {
  SCAN_RUN_T run{run_program_in_folder(input, "PROGRAM run.inp; status=$?; cat run.scan; exit $status"), {}};
  std::istringstream lines(run.program.report.substr(run.program.report.rfind("\n# ") + 1));
  std::string line;
  for (std::getline(lines, line); std::getline(lines, line);) {
    std::istringstream words(line);
    run.rows.emplace_back(std::istream_iterator<double>(words), std::istream_iterator<double>());
  }
  return run;
}

}  // namespace

TEST(ScanReport, WaterBendingOnTheMp2Surface) {
  const std::string rule(55, '='), line(61, '-');
  const PROGRAM_RUN_T run = expect_report(
      "%job scan\n%method mp2\n%basis 6-31G*\n" + water("104.5") + bending,
      {" " + rule + "\n  Rigid PES scan\n " + rule + "\n", "   Sweep variables: 1,   total grid points: 4\n",
       "     var 1: angle A, row 3, from 95.0000 to 125.0000 deg  (4 points)\n",
       " " + line + "\n Scan point 1\n " + line + "\n", "   SCF converged in ", "   MP2 correlation:    ",
       "   MP2 total:          ", "   --- scan point 1: E = ", "         var 1 (A): 95.0000 deg\n", " Scan point 2\n",
       "   Initial Fock matrix:       previous density\n", "   --- scan point 4: E = ", "  Rigid PES scan -- summary\n",
       "   Point      A(deg)         E(Ha)       dE(kcal/mol)\n   -----   ----------   ----------------   ------------\n",
       "       4     125.0000   ", "   Minimum energy:  ", "     at var 1 (A) = 105.0000 deg\n",
       "   Scan points written to: run.scan\n", "  Zentrix run completed.\n"});
  const PROGRAM_RUN_T single = run_program_in_folder("%method mp2\n%basis 6-31G*\n" + water("115"));
  EXPECT_NEAR(run.number("   --- scan point 3: E = "), single.number("     Total energy:      "), 1e-7);
}

// tests/reference/make_scan_references.py: every point of a bending, of a torsion with a stretch, of a relaxed torsion.
TEST(ScanReport, EveryPointOfAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("scans");
  ASSERT_EQ(cases.size(), 3U);
  for (const auto& entry : cases) {
    std::string input = entry["input"];
    const bool relaxed = input.find("scanopt") != std::string::npos;
    // Minima and barriers of the torsion lie at every other point.
    const std::size_t stride = relaxed && std::getenv("ZENTRIX_LONG_TESTS") == nullptr ? 2 : 1;
    if (stride == 2) input.replace(input.rfind("-30"), 3, "-60");
    const SCAN_RUN_T run = run_scan(input);
    ASSERT_EQ(run.program.status, 0) << run.program.report;
    ASSERT_EQ(run.rows.size(), (entry["points"].size() + stride - 1) / stride);
    for (std::size_t p = 0; p < run.rows.size(); ++p) {
      const std::vector<double> expected = entry["points"][stride * p];
      ASSERT_EQ(run.rows[p].size(), expected.size() + 2);
      for (std::size_t v = 0; v < expected.size(); ++v)
        EXPECT_NEAR(run.rows[p][v], expected[v], relaxed ? 1e-6 : 2e-8) << entry["scan"] << " " << p;
    }
  }
}

TEST(ScanReport, FailuresAreMarkedOrEndTheJob) {
  expect_report("%job scan\n%scf_maxiter 2\n" + water("104.5") + bending,
                {"  **\n", "   Minimum energy:  none (no point converged)\n",
                 "   ** = SCF did not converge at this point.\n", "  Zentrix run completed.\n"},
                3);
  // Completed points stand in the report and in the side file.
  const SCAN_RUN_T coincident = run_scan("%job scan\n" + water("104.5") + "%scan\nA 3 from 60 to 0 step 30\n*end\n");
  EXPECT_EQ(coincident.program.status, 1);
  expect_in_order(coincident.program.report,
                  {"   --- scan point 2: E = ", " Scan point 3\n", "   Scan points written to: run.scan\n",
                   " *** ERROR: scan: cannot build geometry at point 3\n"});
  EXPECT_EQ(coincident.rows.size(), 2U);
}

// The two functions of H2 leave DIIS nothing to extrapolate with, and plain iterations diverge where the bond is long.
TEST(ScanReport, StretchedBondOfTwoFunctions) {
  const auto rows = run_scan("%job scan\n%basis STO-3G\n%gz\nH\nH 1 3\n*end\n%scan\nR 2 3 6 1\n*end\n").rows;
  ASSERT_EQ(rows.size(), 4U);
  const double expected[] = {-0.65604825, -0.61486998, -0.59902487, -0.58997142};
  for (std::size_t p = 0; p < 4; ++p) EXPECT_NEAR(rows[p][1], expected[p], 1e-7);
}

// Spin symmetry breaks at every point where that lowers the energy, also behind a neighbour that has not broken it.
TEST(ScanReport, MixedStartsDoNotDependOnTheDirection) {
  const auto scan = [](const std::string& values) {
    return run_scan("%job scan\n%spin uhf\n%uks_occupation mix\n%gz\nH\nH 1 0.75\n*end\n%scan\nR 2 " + values + "\n*end\n")
        .rows;
  };
  const auto up = scan("0.75 2.75 1.0"), down = scan("2.75 0.75 1.0");
  ASSERT_EQ(up.size(), 3U);
  ASSERT_EQ(down.size(), 3U);
  for (std::size_t p = 0; p < 3; ++p) EXPECT_NEAR(up[p][1], down[2 - p][1], 1e-7);
}

// An angle past the straight line is its mirror image with the dihedral half a turn on: both ways of writing a structure
// scan alike, and the nitrogen of an imine is inverted through it.
TEST(ScanReport, AnglesPastTheStraightLine) {
  const auto scan = [](const std::string& row, const std::string& block) {
    return run_scan("%job scanopt\n%gz\n" + row + "\n*end\n%scan\n" + block + "\n*end\n");
  };
  const std::string hoo = "H\nO 1 1.0\nO 2 1.4 1 101\nH 3 1.0 2 ";
  const SCAN_RUN_T turned = scan(hoo + "-101 1 60", "D 4 60 80 20"), plain = scan(hoo + "101 1 240", "D 4 240 260 20");
  const SCAN_RUN_T imine = scan("C\nN 1 1.27\nH 1 1.09 2 120\nH 1 1.09 2 120 3 180\nH 2 1.02 1 130 3 0", "A 5 160 200 20");
  for (const SCAN_RUN_T* run : {&turned, &plain, &imine}) ASSERT_EQ(run->program.status, 0) << run->program.report;
  for (std::size_t p = 0; p < 2; ++p) EXPECT_NEAR(turned.rows[p][1], plain.rows[p][1], 1e-6);
  EXPECT_NEAR(imine.rows[2][1], imine.rows[0][1], 1e-6);  // its mirror image
  EXPECT_GT(imine.rows[1][1], imine.rows[0][1] + 1e-3);
}

// Nuclei 0.0006 angstrom apart: the functions of one are those of the other, and the overlap has no inverse root.
TEST(ScanReport, AFaultInsideAPointIsItsFailure) {
  const SCAN_RUN_T run = run_scan(
      "%job scan\n%basis 6-311++G(3df,3pd)\n%charge 1\n%scf_maxiter 5\n%gz\nH\nH 1 0.74\nH 1 0.0006 2 180\n*end\n"
      "%scan\nR 2 0.74 0.0006 0.7394\n*end\n");
  EXPECT_EQ(run.program.status, 3);
  expect_in_order(run.program.report, {"  MOLECULE SUMMARY\n", " Scan point 1\n", "  MOLECULE SUMMARY\n", " Scan point 2\n",
                                       " *** ERROR: S eigenvalue 1 is ", "   --- scan point 2: E = none\n",
                                       "       2       0.0006               none           none  **\n",
                                       "   Scan points written to: run.scan\n"});
  EXPECT_EQ(run.rows.size(), 2U);
  expect_report("%job scan\n%method mp2\n%gz\nHe\nHe 1 3\n*end\n%scan\nR 2 3 4 1\n*end\n",
                {"   *** MP2 ERROR: no virtual orbitals\n", "       2       4.0000               none           none  **\n"},
                1);
}

// The distance of the hydrogen atoms is no Z-matrix value: the torsion would carry it along.
TEST(ScanReport, ConstraintsOfARelaxedScan) {
  const std::string added = "   ADDED (R = 4.546859 bohr)\n";
  const PROGRAM_RUN_T held =
      expect_report("%job scanopt\n" + peroxide + "%scan\nD 4 100 120 10\n*end\n%constrain\nB 3 4\nB 2 1\n*end\n",
                    {"  Relaxed PES scan\n", " Scanopt point 1\n", "   (constrained optimization)\n", "  MOLECULE SUMMARY\n",
                     added, "   --- scanopt point 1: E = ", " opt steps)\n         var 1 (D): 100.0000 deg\n",
                     " Scanopt point 2\n", added, "   --- scanopt point 2: E = ", added, "  Relaxed PES scan -- summary\n"});
  for (std::size_t at = held.report.find(added); at != std::string::npos; at = held.report.find(added, at + 1)) {
    // The coordinates of atoms 3 and 4 in the last geometry before the end of the point.
    std::istringstream rows(
        held.report.substr(held.report.rfind("      3  H ", held.report.find("   --- scanopt point", at))));
    double x[2][3];
    std::string number, symbol;
    for (auto& atom : x) rows >> number >> symbol >> atom[0] >> atom[1] >> atom[2];
    EXPECT_NEAR(std::hypot(x[0][0] - x[1][0], x[0][1] - x[1][1], x[0][2] - x[1][2]), 4.546859 / 1.8897261246, 2e-5);
  }
}

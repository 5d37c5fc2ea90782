#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/program_run.hpp"

using namespace zentrix;

namespace {

std::string water(const std::string& angle) { return "%gz\nO\nH 1 0.96\nH 1 0.96 2 " + angle + "\n*end\n"; }
const std::string bending = "%scan\nA 3 from 95 to 125 step 10\n*end\n";

}  // namespace

TEST(ScanReport, WaterBendingOnTheMp2Surface) {
  const PROGRAM_RUN_T run = run_program_in_folder("%job scan\n%method mp2\n%basis 6-31G*\n" + water("104.5") + bending);
  ASSERT_EQ(run.status, 0) << run.report;
  const std::string rule(55, '='), line(61, '-');
  expect_in_order(
      run, {" " + rule + "\n  Rigid PES scan\n " + rule + "\n", "   Sweep variables: 1,   total grid points: 4\n",
            "     var 1: angle A, row 3, from 95.0000 to 125.0000 deg  (4 points)\n",
            " " + line + "\n Scan point 1\n " + line + "\n", "   SCF converged in ", "   MP2 correlation:    ",
            "   MP2 total:          ", "   --- scan point 1: E = ", "         var 1 (A): 95.0000 deg\n", " Scan point 2\n",
            "   Initial Fock matrix:       previous density\n", "   --- scan point 4: E = ", "  Rigid PES scan -- summary\n",
            "   Point      A(deg)         E(Ha)       dE(kcal/mol)\n", "       4     125.0000   ", "   Minimum energy:  ",
            "     at var 1 (A) = 105.0000 deg\n", "   Scan points written to: run.scan\n", "  Zentrix run completed.\n"});
  EXPECT_TRUE(std::count(run.files.begin(), run.files.end(), "run.scan") == 1);
  const PROGRAM_RUN_T single = run_program_in_folder("%method mp2\n%basis 6-31G*\n" + water("115"));
  EXPECT_NEAR(run.number("   --- scan point 3: E = "), single.number("     Total energy:      "), 1e-7);
}

TEST(ScanReport, PeroxideTorsionAndStretch) {
  const PROGRAM_RUN_T run = run_program_in_folder(
      "%job scan\n%gz\nO\nO 1 1.45\nH 1 0.97 2 100\nH 2 0.97 1 100 3 115\n*end\n%scan\nD 4 60 180 60\nR 2 1.4 1.5 "
      "0.1\n*end\n");
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(
      run,
      {"total grid points: 6\n", "     var 1: dihedral D, row 4, from 60.0000 to 180.0000 deg  (3 points)\n",
       "     var 2: bond R, row 2, from 1.4000 to 1.5000 Ang  (2 points)\n", " Scan point 6\n",
       "         var 1 (D): 180.0000 deg\n         var 2 (R): 1.5000 Ang\n", "   E (Ha) -- rows: var 1, columns: var 2\n",
       "   dE (kcal/mol relative to minimum)\n", "      0.0*", "   Minimum energy:  "});
}

TEST(ScanReport, FailuresAreMarkedOrEndTheJob) {
  const PROGRAM_RUN_T unconverged = run_program_in_folder("%job scan\n%scf_maxiter 2\n" + water("104.5") + bending);
  EXPECT_EQ(unconverged.status, 3) << unconverged.report;
  expect_in_order(unconverged, {"  **\n", "   Minimum energy:  none (no point converged)\n",
                                "   ** = SCF did not converge at this point.\n", "  Zentrix run completed.\n"});
  const PROGRAM_RUN_T coincident =
      run_program_in_folder("%job scan\n" + water("104.5") + "%scan\nA 3 from 60 to 0 step 30\n*end\n");
  EXPECT_EQ(coincident.status, 1);
  expect_in_order(coincident, {"   --- scan point 2: E = ", " Scan point 3\n"});
  EXPECT_TRUE(coincident.ends_with(" *** ERROR: scan: cannot build geometry at point 3\n")) << coincident.report;
}

// Every point is the minimum that a constrained optimisation finds.
TEST(ScanReport, RelaxedScanOfTheWaterAngle) {
  const PROGRAM_RUN_T run =
      run_program_in_folder("%job scanopt\n" + water("104.5") + "%scan\nA 3 from 95 to 105 step 10\n*end\n");
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(run,
                  {"  Relaxed PES scan\n", " Scanopt point 1\n", "   (constrained optimization)\n", "  MOLECULE SUMMARY\n",
                   "   --- scanopt point 1: E = ", " opt steps)\n         var 1 (A): 95.0000 deg\n", " Scanopt point 2\n",
                   "   --- scanopt point 2: E = ", "  Relaxed PES scan -- summary\n"});
  const PROGRAM_RUN_T single = run_program_in_folder("%job opt\n" + water("105") + "%constrain\nA 2 1 3\n*end\n");
  ASSERT_EQ(single.status, 0) << single.report;
  EXPECT_NEAR(run.number("   --- scanopt point 2: E = "), single.number("     Total energy:      "), 1e-6);
}

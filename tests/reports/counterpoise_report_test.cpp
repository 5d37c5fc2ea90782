#include <gtest/gtest.h>

#include <string>

#include "support/program_run.hpp"

using namespace zentrix;

namespace {

const std::string helium = "%job bsse\n%basis 6-31G**\n%geo\nHe 0 0 0 1\nHe 0 0 2.5 2\n*end\n";

}  // namespace

TEST(CounterpoiseReport, AllStepsAndTheSummary) {
  const PROGRAM_RUN_T run = run_program_in_folder(helium);
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(run, {"   BSSE: 2 fragments detected:\n", "Boys-Bernardi counterpoise BSSE analysis  (2 fragments)\n",
                        " --- BSSE step 1: full complex (full basis) ---\n",
                        " --- BSSE step 2a: fragment 1 (isolated, fragment basis) ---\n",
                        " --- BSSE step 2b: fragment 1 (with ghost basis on other fragments) ---\n",
                        " --- BSSE step 2a: fragment 2 (isolated, fragment basis) ---\n",
                        " --- BSSE step 2b: fragment 2 (with ghost basis on other fragments) ---\n",
                        "  BSSE / Counterpoise Summary\n", "  Zentrix run completed.\n"});
  for (const char* text : {"Section 2", "Section 3", "Section 7"}) EXPECT_FALSE(run.says(text)) << text;
  const double uncorrected = run.number("   Uncorrected:   Delta_E    = ");
  const double corrected = run.number("   Counterpoise:  Delta_E_CP = ");
  EXPECT_NEAR(run.number("   BSSE total                = "), uncorrected - corrected, 2e-10);
  EXPECT_LT(uncorrected, corrected);
}

TEST(CounterpoiseReport, DispersionIsLeftOut) {
  const PROGRAM_RUN_T bare = run_program_in_folder(helium);
  const PROGRAM_RUN_T with = run_program_in_folder("%dispersion d3\n" + helium);
  ASSERT_EQ(with.status, 0) << with.report;
  EXPECT_TRUE(
      with.says("  Note: dispersion (D3) is currently NOT applied to BSSE sub-energies.\n"
                "        D3/D4 contributions cancel almost exactly in the counterpoise difference.\n"))
      << with.report;
  for (const char* label :
       {"   E(complex)               = ", "   SUM E_f(isolated)        = ", "   SUM E_f(in complex bas.) = "}) {
    EXPECT_EQ(with.number(label), bare.number(label)) << label;
  }
}

TEST(CounterpoiseReport, AStepThatFailsEndsTheJob) {
  const PROGRAM_RUN_T run = run_program_in_folder("%scf_maxiter 2\n" + helium);
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(run.ends_with(" *** ERROR: BSSE: full-complex SCF failed.\n")) << run.report;
  // The complex has an orbital to correlate, a fragment has not.
  const PROGRAM_RUN_T frozen = run_program_in_folder("%method mp2\n%frozen_core 1\n" + helium);
  EXPECT_EQ(frozen.status, 1);
  EXPECT_TRUE(frozen.says("   *** WARNING: %frozen_core 1 freezes as many orbitals in every fragment as in the complex;\n"));
  EXPECT_TRUE(
      frozen.ends_with("   *** MP2 ERROR: no correlated occupied orbitals\n"
                       " *** ERROR: BSSE: SCF failed for isolated fragment 1\n"))
      << frozen.report;
}

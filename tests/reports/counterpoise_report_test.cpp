#include "support/program_run.hpp"

using namespace zentrix;

namespace {

const std::string helium_pair = "%job bsse\n%basis 6-31G**\n%geo\nHe 0 0 0 1\nHe 0 0 2.5 2\n*end\n";

}  // namespace

TEST(CounterpoiseReport, AllStepsAndTheSummary) {
  const PROGRAM_RUN_T run = expect_report(
      helium_pair,
      {"   BSSE: 2 fragments detected:\n", "Boys-Bernardi counterpoise BSSE analysis  (2 fragments)\n",
       " --- BSSE step 1: full complex (full basis) ---\n", " --- BSSE step 2a: fragment 1 (isolated, fragment basis) ---\n",
       " --- BSSE step 2b: fragment 1 (with ghost basis on other fragments) ---\n",
       " --- BSSE step 2a: fragment 2 (isolated, fragment basis) ---\n",
       " --- BSSE step 2b: fragment 2 (with ghost basis on other fragments) ---\n", "  BSSE / Counterpoise Summary\n",
       "  Zentrix run completed.\n"});
  for (const char* text : {"Section 2", "Section 3", "Section 7"}) EXPECT_FALSE(run.says(text)) << text;
  const double uncorrected = run.number("   Uncorrected:   Delta_E    = ");
  const double corrected = run.number("   Counterpoise:  Delta_E_CP = ");
  EXPECT_NEAR(run.number("   BSSE total                = "), uncorrected - corrected, 2e-10);
  EXPECT_LT(uncorrected, corrected);
}

TEST(CounterpoiseReport, AStepThatFailsEndsTheJob) {
  expect_stop("%scf_maxiter 2\n" + helium_pair, " *** ERROR: BSSE: full-complex SCF failed.\n");
  // The complex has an orbital to correlate, a fragment has not.
  const std::string warning =
      "   *** WARNING: %frozen_core 1 freezes as many orbitals in every fragment as in the complex;\n";
  const std::string ending =
      "   *** MP2 ERROR: no correlated occupied orbitals\n *** ERROR: BSSE: SCF failed for isolated fragment 1\n";
  EXPECT_TRUE(expect_report("%method mp2\n%frozen_core 1\n" + helium_pair, {warning, ending}, 1).ends_with(ending));
}

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "parsing.hpp"
#include "support/printed.hpp"

namespace zentrix {
namespace {

using testing::HasSubstr;
using testing::Not;
using TESTS::helium;
using TESTS::parse;
using TESTS::peroxide;

std::string summary(const std::string& text) { return TESTS::printed(INPUT_PARSER::print_job_summary, parse(text).input); }

TEST(JobSummary, PlainRun) {
  EXPECT_EQ(summary("%geo\nO 0 0 -0.1173\nH 0 0.7572 0.4692\n*end\n"),
            "   Job type:         energy\n"
            "   Method:           HF\n"
            "   Basis set:        STO-3G\n"
            "   Spin treatment:   Restricted\n"
            "   ECP:              automatic\n"
            "   ECP integrals:    analytical (McMurchie-Davidson)\n"
            "   Charge:           0\n"
            "   Multiplicity:     1\n"
            "   Atoms:            2\n"
            "   Angular functions: Cartesian\n"
            "   SCF converger:    DIIS\n"
            "   SCF max iter:     150\n"
            "   SCF level shift:  AUTO  (activates 0.2 Ha after 100 non-converged iters)\n"
            "\n"
            "   -----------------------------------------------\n"
            "   Molecular Geometry (Angstroems):\n"
            "   -----------------------------------------------\n"
            "    Atom      X            Y            Z\n"
            "    O      0.0000000    0.0000000   -0.1173000\n"
            "    H      0.0000000    0.7572000    0.4692000\n"
            "   -----------------------------------------------\n");
}

TEST(JobSummary, SettingsShowInTheirLines) {
  const std::pair<std::string, const char*> cases[] = {
      {"%job ts", "   Job type:         TS Search (P-RFO)\n"},
      {"%job tsfreq", "   Job type:         TS Search (P-RFO) + Freq\n"},
      {"%job opt", "   Geom max iter:    50\n   Initial Hessian:  full  (coupled Almloef/Lindh model)\n"},
      {"%job opt\n%init_hess lindh", "   Initial Hessian:  diag  (Lindh diagonal model)\n"},
      {"%dispersion d3bj", "   Dispersion:       D3BJ\n"},
      {"%solvent Water", "   PCM solvent:      Water\n"},
      {"%solvent water\n%eps 4.5", "   PCM (custom eps): 4.5\n"},
      {"%spin u", "   Spin treatment:   Unrestricted\n"},
      {"%basis 6-31G*\n%basis He=STO-3G\n%basis Br=LANL2DZ", "   Basis set:        mixed\n     He -> STO-3G\n   Spin"},
      {"%ecp He=SDD\n%ecp_method num",
       "   ECP:              mixed\n     He -> SDD\n   ECP integrals:    numerical (quadrature)\n"},
      {"%ecp none", "   ECP:              none\n   Charge:"},
      {"%spherical", "   Angular functions: Spherical\n"},
      {"%level_shift off", "   SCF level shift:  OFF\n"},
      {"%level_shift 0.25", "   SCF level shift:  0.25 Ha (fixed, applied from iter 1)\n"},
  };
  for (const auto& [lines, text] : cases) EXPECT_THAT(summary(lines + "\n" + helium), HasSubstr(text)) << lines;
  EXPECT_THAT(summary("%job freq\n" + helium), Not(HasSubstr("Geom max iter")));
  EXPECT_THAT(summary("%job ts\n" + helium), Not(HasSubstr("Initial Hessian")));  // it is computed
  EXPECT_THAT(summary(peroxide + "%scan\nR 2 1 2 0.1\n*end\n"), Not(HasSubstr("PES scan")));
  // Columns stay apart whatever the coordinates are.
  EXPECT_THAT(summary("%geo\nHe -1500.25 20000 0\n*end\n"), HasSubstr("    He  -1500.2500000 20000.0000000    0.0000000\n"));
}

TEST(JobSummary, ZmatrixAndScanGrid) {
  const std::string text = peroxide + "%scan\nR 2 0.9 1.1 0.1\nD 4 0 180 60\n*end\n";
  const std::string rigid = summary("%job scan\n" + text);
  EXPECT_THAT(rigid, HasSubstr("   Job type:         Rigid PES Scan\n"));
  EXPECT_THAT(rigid,
              HasSubstr("   Input Z-matrix:\n     H\n     O 1 0.95\n     O 2 1.45 1 102\n     H 3 0.95 2 102 1 116\n"));
  EXPECT_THAT(rigid, HasSubstr("   --------------------------------------------------------\n"
                               "   Rigid PES scan grid:\n"
                               "   --------------------------------------------------------\n"
                               "    Var  Row     From       To        Step     Pts  Unit\n"
                               "    R      2     0.9000     1.1000     0.1000     3  Ang\n"
                               "    D      4     0.0000   180.0000    60.0000     4  deg\n"
                               "   --------------------------------------------------------\n"
                               "   Total grid points: 12   (each = one independent SCF)\n"));
  EXPECT_THAT(summary("%job scanopt\n" + text),
              HasSubstr("   Total grid points: 12   (each = one constrained optimization)\n"));
}

TEST(JobSummary, ConstraintsAndFragments) {
  EXPECT_THAT(summary("%job opt\n" + peroxide + "%constrain\nB 1 2\nA 1 2 3\nD 1 2 3 4\n*end\n"),
              HasSubstr("   Geometry constraints (held fixed):\n   ----------------------------------\n"
                        "     bond     1:  atoms  1 2\n     angle    2:  atoms  1 2 3\n     dihedral 3:  atoms  1 2 3 4\n"));
  const std::string complex = summary("%job cp\n%geo\nHe 0 0 0 1\nHe 0 0 3 2\n*end\n");
  EXPECT_THAT(complex, HasSubstr("   Job type:         BSSE / CP\n"));
  EXPECT_THAT(complex, HasSubstr("    He     0.0000000    0.0000000    3.0000000   fragment 2\n"));
}

}  // namespace
}  // namespace zentrix

#include "support/program_run.hpp"

using namespace zentrix;

namespace {

// The minimum of the reference (tests/reference/vibrations.json, water HF).
const std::string water = "%basis 6-31G*\n%geo\nO 0 0 0.108572\nH 0 0.754065 -0.464836\nH 0 -0.754065 -0.464836\n*end\n";
const std::string hydrogen = "%geo\nH 0 0 0\nH 0 0 0.71\n*end\n";

}  // namespace

TEST(FrequencyReport, WalksTheSectionsOfAFrequencyRun) {
  const PROGRAM_RUN_T run = expect_report(
      "%job freq\n%print_time\n" + water,
      {" --- Section 3: SCF ---\n", "   SCF converged in ",
       " --- Section 6: Hessian & Frequencies ---\n   Method: Numerical Hessian (gradient FD)\n"
       "   Computing numerical Hessian (gradient FD)...\n   Hessian dimension:      9\n"
       "   Gradient evaluations:   18\n   Displacement (bohr):    0.005\n   Running reference SCF...\n"
       "   Reference energy:       -76.01074651",
       "     coord 1/9 done (", "     coord 9/9 done (",
       "     Numerical Hessian complete.\n\n   Cartesian Hessian (Ha/Bohr^2):\n", "     Projected out 6 TR modes.\n",
       "   Vibrational Frequency Analysis\n", "   Mode   Freq (cm^-1)   Type\n",
       "   Vibrational modes: 3\n   TR modes:          6\n", "   ZPVE:  ", "   Normal Modes (Cartesian displacements):\n",
       "\n   Thermochemistry (298.15 K, 1 atm)\n", "   Rotational symmetry number:               2\n",
       "   Gibbs energy G = H - T*S:  ",
       "   Hessian written to: run.hess\n   Molden file written to: run.molden\n   Section 6 time: ",
       " --- Section 7: Output & Properties ---\n", "     Total energy:      ", "  Hessian total (**) "});
  EXPECT_EQ(run.files, (std::vector<std::string>{"run.hess", "run.inp", "run.molden"}));
  EXPECT_TRUE(run.says("\n      7     182")) << "the row of the table";
  EXPECT_FALSE(run.says("km/mol")) << "no dipole derivatives";
  // Peer: 1826.4362, 4070.2324, 4188.4577 cm^-1, G = -76.0053682 hartree.
  EXPECT_NEAR(run.number("   Mode 7:"), 1826.44, 0.5);
  EXPECT_NEAR(run.number("   Mode 8:"), 4070.23, 0.5);
  EXPECT_NEAR(run.number("   Mode 9:"), 4188.46, 0.5);
  EXPECT_NEAR(run.number("Gibbs energy G = H - T*S:"), -76.0053682, 1e-6);
}

TEST(FrequencyReport, ACachedHessianReplacesTheComputation) {
  const std::string again =
      "PROGRAM run.inp > first && sed 's/%job.*/%job freq\\n%disp d3\\n%read_hess run.hess/' run.inp > again.inp && ";
  const PROGRAM_RUN_T run = expect_report("%job freq\n" + hydrogen,
                                          {" --- Section 3: SCF ---\n", " --- Section 6: Hessian & Frequencies ---\n",
                                           "   Reading cached Hessian from: run.hess\n   Hessian read from: run.hess\n"
                                           "   Geometry match: max dx = 0.00000000 bohr (within tolerance).\n",
                                           "     Projected out 5 TR modes (linear molecule).\n", "   Vibrational modes: 1\n",
                                           "   Molden file written to: again.molden\n", "     Dispersion (D3):"},
                                          0, again + "PROGRAM again.inp");
  EXPECT_FALSE(run.says("Computing numerical Hessian"));
  // The energy is that of this run, dispersion included.
  EXPECT_NEAR(run.number("Electronic energy E:"), run.number("     Total energy:"), 1e-9);
  EXPECT_EQ(run.files,
            (std::vector<std::string>{"again.inp", "again.molden", "first", "run.hess", "run.inp", "run.molden"}));
  expect_report("%job freq\n" + hydrogen,
                {" *** ERROR: hess_file method mismatch:\n              file:    HF\n              input:   pbE\n"
                 "              Run aborted; the cached Hessian is inconsistent with the current run.\n"
                 " *** FATAL: %read_hess validation failed (ierr=11).  Aborting frequency analysis.\n"},
                1, again + "echo '%method pbE' >> again.inp && PROGRAM again.inp");
}

TEST(FrequencyReport, OptimisationThenFrequencies) {
  const PROGRAM_RUN_T run =
      expect_report("%job opt+freq\n%export_mo\n" + hydrogen,
                    {" --- Section 5: Geometry Optimization ---\n", " --- Section 6: Hessian & Frequencies ---\n",
                     "   Vibrational modes: 1\n", "   Reusing SCF from last optimization step.\n",
                     "   Molden MO file written to: run_mo.molden\n"});
  EXPECT_FALSE(run.says("NOTE: the largest gradient component"));
  EXPECT_EQ(run.files, (std::vector<std::string>{"run.hess", "run.inp", "run.molden", "run_mo.molden"}));
}

TEST(FrequencyReport, DoubtfulHessiansAreMarked) {
  // Straight water stays straight.
  expect_report("%job opt+freq\n%basis STO-3G\n%geo\nO 0 0 0\nH 0 0 0.93\nH 0 0 -0.93\n*end\n",
                {"   *** WARNING: 2 imaginary modes; a minimum has none.\n"});
  expect_report("%job freq\n%geo\nH 0 0 0\nH 0 0 0.9\n*end\n",
                {"     Numerical Hessian complete.\n   NOTE: the largest gradient component is "});
  expect_report("%job freq\n%scf_maxiter 2\n%geo\nLi 0 0 0\nH 0 0 1.6\n*end\n",
                {"   *** WARNING: ", " of the 13 SCF runs did not converge; their gradients were used as they are.\n"}, 3);
}

TEST(FrequencyReport, SideFilesThatCannotBeWrittenDoNotStopTheRun) {
  // Folders under the names that the files are first written as.
  expect_report(
      "%job freq\n%export_mo\n" + hydrogen,
      {" *** WARNING: could not open Hessian file for writing: run.hess\n",
       " *** WARNING: could not open Molden file for writing: run.molden\n",
       " *** WARNING: %export_mo: could not open orbital file for writing: run_mo.molden\n", "  Zentrix run completed.\n"},
      0, "mkdir run.hess.part run.molden.part run_mo.molden.part; PROGRAM run.inp");
}

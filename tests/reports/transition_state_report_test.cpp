#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/program_run.hpp"
#include "support/reference.hpp"

using namespace zentrix;

namespace {

// Start of the search set of J. Baker and F. Chan, J. Comput. Chem. 17 (1996) 888; their HF/3-21G energy is -92.24604.
const std::string isomerisation = "%basis 3-21G\n%geo\nC 0 0 0\nN 0 0 1.14838\nH 1.58536 0 1.14838\n*end\n";

}  // namespace

TEST(TransitionStateReport, FindsAndValidatesThePublishedSaddlePoint) {
  const PROGRAM_RUN_T run = run_program_in_folder("%job ts+freq\n" + isomerisation);
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(run, {" --- Section 5/6: Transition-State Search (P-RFO) ---\n",
                        "   No %read_hess supplied -- computing Hessian at input geometry.\n"
                        "   Method: Numerical Hessian (gradient FD)\n",
                        "   Hessian written to: run.hess\n", "   Transition-State Search (P-RFO / Internal Coordinates)\n",
                        "   Geometry of step 1 (Angstrom):\n", "   Initial Fock matrix:       previous density\n",
                        "     mode   1:    -0.112599  followed\n", "   Transition-state search converged in ",
                        "   Negative eigenvalues of the updated Hessian: 1\n", "   TS search time: ",
                        " --- Section 6 (validation): Freq at located TS ---\n   Method: Numerical Hessian (gradient FD)\n",
                        "   Vibrational modes: 2\n   TR modes:          7\n", "   Imaginary modes: 1 (1215.7",
                        "i cm^-1).  Transition state confirmed.\n",
                        " --- Section 7: Output & Properties ---\n   Reusing SCF from last optimization step.\n"});
  EXPECT_NEAR(run.number("     Total energy:      "), -92.24604, 1e-5);
  EXPECT_LE(run.number("search converged in "), 10);
  EXPECT_EQ(run.files, (std::vector<std::string>{"run.hess", "run.inp", "run.molden", "run_2.hess"}));
}

/// Where symmetry takes every force from the way over the barrier, on the top of it and in the valley: energies of the peer
/// for the flat and for the eclipsed molecule.
TEST(TransitionStateReport, SymmetricStartsEndOnTheBarrier) {
  const nlohmann::json references = TESTS::reference("transition_states");
  for (const nlohmann::json& reference : references["symmetric"]) {
    std::string lines = reference["atoms"];
    std::replace(lines.begin(), lines.end(), ';', '\n');
    const std::string method = reference["method"];
    const std::string basis = reference["basis"];
    const PROGRAM_RUN_T run =
        run_program_in_folder("%job ts+freq\n%method " + method + "\n%basis " + basis + "\n%geo\n" + lines + "\n*end\n");
    SCOPED_TRACE(reference["name"].get<std::string>() + " " + method);
    ASSERT_EQ(run.status, 0) << run.report;
    EXPECT_NEAR(run.number("     Total energy:      "), reference["energy"].get<double>(), 1e-5);
    EXPECT_EQ(run.number("   Negative eigenvalues of the updated Hessian: "), 1);
    EXPECT_EQ(run.number("   TR modes:          "), 7);
    EXPECT_LE(run.number("search converged in "), reference["steps"].get<int>());
  }
}

TEST(TransitionStateReport, StartsFromACachedHessian) {
  const std::string second = "sed 's/%job.*/%job ts\\n%read_hess run.hess/' run.inp > ts.inp && PROGRAM ts.inp";
  const PROGRAM_RUN_T run = run_program_in_folder("%job freq\n" + isomerisation, "PROGRAM run.inp > first && " + second);
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(run, {"   Reading cached Hessian from: run.hess\n   Hessian read from: run.hess\n",
                        "   Transition-state search converged in "});
  EXPECT_FALSE(run.says("computing Hessian"));
  EXPECT_NEAR(run.number("     Total energy:      "), -92.24604, 1e-5);

  const PROGRAM_RUN_T missing = run_program_in_folder("%job ts\n%read_hess nowhere.hess\n" + isomerisation);
  EXPECT_EQ(missing.status, 1);
  EXPECT_TRUE(missing.ends_with(" *** FATAL: %read_hess validation failed (ierr=1).  Aborting TS search.\n"))
      << missing.report;
}

TEST(TransitionStateReport, TellsWhatItCannotDo) {
  const PROGRAM_RUN_T no_mode = run_program_in_folder("%job ts\n%ts_mode 4\n" + isomerisation);
  EXPECT_EQ(no_mode.status, 1);
  EXPECT_TRUE(no_mode.ends_with(" *** ERROR: %ts_mode 4 does not exist; the molecule has 3 mode(s).\n")) << no_mode.report;
  EXPECT_FALSE(no_mode.says("computing Hessian"));
  const PROGRAM_RUN_T early = run_program_in_folder("%job ts\n%geom_maxiter 2\n%print_grad\n" + isomerisation);
  EXPECT_EQ(early.status, 3);
  EXPECT_TRUE(early.says("   *** Transition-state search NOT converged after 2 steps!\n"));
  EXPECT_TRUE(early.says("   Last geometry (Angstrom):\n"));
  EXPECT_TRUE(early.says("   %print_grad  (Hartree/Bohr)\n")) << "of every step";
}

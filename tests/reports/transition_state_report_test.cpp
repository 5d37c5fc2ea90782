#include <algorithm>

#include "support/program_run.hpp"
#include "support/reference.hpp"

using namespace zentrix;

namespace {

// Start of the search set of J. Baker and F. Chan, J. Comput. Chem. 17 (1996) 888; their HF/3-21G energy is -92.24604.
const std::string isomerisation = "%basis 3-21G\n%geo\nC 0 0 0\nN 0 0 1.14838\nH 1.58536 0 1.14838\n*end\n";

}  // namespace

TEST(TransitionStateReport, FindsAndValidatesThePublishedSaddlePoint) {
  const PROGRAM_RUN_T run = expect_report(
      "%job ts+freq\n" + isomerisation,
      {" --- Section 5/6: Transition-State Search (P-RFO) ---\n",
       "   No %read_hess supplied -- computing Hessian at input geometry.\n   Method: Numerical Hessian (gradient FD)\n",
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
    const std::string method = reference["method"], basis = reference["basis"];
    SCOPED_TRACE(reference["name"].get<std::string>() + " " + method);
    const PROGRAM_RUN_T run =
        expect_report("%job ts+freq\n%method " + method + "\n%basis " + basis + "\n%geo\n" + lines + "\n*end\n", {});
    EXPECT_NEAR(run.number("     Total energy:      "), reference["energy"].get<double>(), 1e-5);
    EXPECT_EQ(run.number("   Negative eigenvalues of the updated Hessian: "), 1);
    EXPECT_EQ(run.number("   TR modes:          "), 7);
    EXPECT_LE(run.number("search converged in "), reference["steps"].get<int>());
  }
}

TEST(TransitionStateReport, StartsFromACachedHessian) {
  const PROGRAM_RUN_T run = expect_report(
      "%job freq\n" + isomerisation,
      {"   Reading cached Hessian from: run.hess\n   Hessian read from: run.hess\n",
       "   Transition-state search converged in "},
      0, "PROGRAM run.inp > first && sed 's/%job.*/%job ts\\n%read_hess run.hess/' run.inp > ts.inp && PROGRAM ts.inp");
  EXPECT_FALSE(run.says("computing Hessian"));
  EXPECT_NEAR(run.number("     Total energy:      "), -92.24604, 1e-5);
  expect_stop("%job ts\n%read_hess nowhere.hess\n" + isomerisation,
              " *** FATAL: %read_hess validation failed (ierr=1).  Aborting TS search.\n");
}

TEST(TransitionStateReport, TellsWhatItCannotDo) {
  const std::string no_mode = " *** ERROR: %ts_mode 4 does not exist; the molecule has 3 mode(s).\n";
  const PROGRAM_RUN_T refused = expect_report("%job ts\n%ts_mode 4\n" + isomerisation, {no_mode}, 1);
  EXPECT_TRUE(refused.ends_with(no_mode)) << refused.report;
  EXPECT_FALSE(refused.says("computing Hessian"));
  // %print_grad speaks of every step.
  expect_report("%job ts\n%geom_maxiter 2\n%print_grad\n" + isomerisation,
                {"\n%print_grad  (Hartree/Bohr)\n", "   *** Transition-state search NOT converged after 2 steps!\n",
                 "   Last geometry (Angstrom):\n"},
                3);
}

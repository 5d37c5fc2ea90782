#include "support/program_run.hpp"

using namespace zentrix;

namespace {

const std::string water_zmatrix = "%gz\nO\nH 1 0.96\nH 1 0.96 2 104.5\n*end\n";

}  // namespace

TEST(OptimizationReport, EndsInSectionSevenWithTheLastScf) {
  const PROGRAM_RUN_T run = expect_report(
      "%job opt\n%print_grad\n%print_time\n" + water_zmatrix,
      {" --- Section 2: One-Electron Integrals ---\n",
       " --- Section 5: Geometry Optimization ---\n\n   Internal Coordinates Summary\n",
       "   Geometry Optimization (RFO / Internal Coordinates)\n",
       "   Initial Hessian: Almloef coupled model (off-diagonal force constants)\n", "   Geometry of step 1 (Angstrom):\n",
       "   Running SCF for gradient...\n", "   Initial Fock matrix:       core Hamiltonian\n",
       "%print_grad  (Hartree/Bohr)\n",
       "   Max gradient component: ", "   Step        Energy       dE       max|g|    rms(g)    max|dx|   rms(dx)\n      1",
       "   Geometry of step 2 (Angstrom):\n", "   Initial Fock matrix:       previous density\n",
       "   Optimization converged in ", "   Final energy:     -74.965901", "   Optimized geometry (Angstrom):\n",
       "   Optimized Z-matrix:\n     O    \n     H        1   0.989",
       "   Optimization time: ", " --- Section 7: Output & Properties ---\n   Reusing SCF from last optimization step.\n",
       "     Total energy:            -74.965901"});
  EXPECT_NEAR(run.number("   |mu|    (Debye): "), 1.7092, 5e-4);
  EXPECT_TRUE(run.says("  Optimizer work")) << run.report;
  EXPECT_FALSE(run.says("--- Section 3")) << run.report;
}

TEST(OptimizationReport, CartesianCoordinatesOnRequestAndForDiatomics) {
  expect_report("%job opt\n%opt_coord cart\n" + water_zmatrix,
                {"   %opt_coord cart: forcing Cartesian-BFGS optimizer (skipping internals).\n",
                 "   Geometry Optimization (BFGS / Cartesian Coordinates)\n", "   Final energy:     -74.965901"});
  expect_report("%job opt\n%geo\nH 0 0 0\nH 0 0 0.9\n*end\n",
                {"   Geometry Optimization (BFGS / Cartesian Coordinates)\n", "   Final energy:      -1.117505"});
}

TEST(OptimizationReport, WhatDoesNotConvergeKeepsTheLastGeometry) {
  expect_report("%job opt\n%scf_maxiter 3\n" + water_zmatrix,
                {"   *** SCF did not converge at step 1\n\n   *** Optimization NOT converged after 1 steps!\n",
                 "   Final energy: ", "   Last geometry (Angstrom):\n", "   Optimized Z-matrix:\n",
                 " --- Section 7: Output & Properties ---\n", "  Zentrix run completed.\n"},
                3);
  // The values of the Z-matrix are read from the positions: after one step they are those of the input.
  expect_report("%job opt\n%geom_maxiter 1\n%gz\nO\nO 1 1.45\nH 1 0.97 2 99.5\nH 2 0.96 1 101 3 -112\n*end\n",
                {"   *** Optimization NOT converged after 1 steps!\n",
                 "   Optimized Z-matrix:\n     O    \n     O        1   1.45000000\n"
                 "     H        1   0.97000000    2    99.500000\n"
                 "     H        2   0.96000000    1   101.000000    3  -112.000000\n"},
                3);
}

TEST(OptimizationReport, ConstraintsHoldOrStopTheRun) {
  expect_report("%job opt\n%constrain\nB 2 1\nB 2 3\n*end\n" + water_zmatrix,
                {"   Constraint matching:\n   --------------------\n   matched auto-generated bond #1\n   ADDED (R = 2.86",
                 "   2 coordinate(s) frozen out of 4 total.\n     (1 new coordinate(s) added by extension)\n",
                 "   Optimized Z-matrix:\n", "   0.96000000\n"});
  expect_stop("%job opt\n%constrain\nB 1 2\n*end\n%geo\nH 0 0 0\nH 0 0 0.9\n*end\n",
              " *** ERROR: %constrain is only supported on the internal-coordinate optimizer.\n"
              "            For diatomics or systems too small for redundant internals,\n"
              "            use a Z-matrix scan instead (%job scan).\n");
}

TEST(OptimizationReport, InterruptionKeepsTheGeometry) {
  const std::string command =
      "mkfifo pipe; PROGRAM run.inp > pipe & program=$!; while read -r line; do echo \"$line\"; case \"$line\" in "
      "Geometry\\ of\\ step\\ 2*) kill -s INT $program;; esac; done < pipe; wait $program";
  const std::string stop = "*** Run stopped by SIGINT during Section 5 (geometry optimization).\n";
  const PROGRAM_RUN_T run =
      expect_report("%job opt\n%basis cc-pVTZ\n" + water_zmatrix, {stop}, 130, "bash -c '" + command + "'");
  // The lines of the step's own table come back below the stop (the shell's `read` drops leading blanks).
  const std::size_t table = run.report.find("1  O ", run.report.find("Geometry of step 2"));
  const std::string first_atom = run.report.substr(table, run.report.find('\n', table) - table);
  const std::size_t at = run.report.find("Last geometry (Angstrom):\n" + first_atom, run.report.find(stop));
  EXPECT_NE(at, std::string::npos) << run.report;
}

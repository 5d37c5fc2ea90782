#include <cmath>

#include "support/program_run.hpp"

using namespace zentrix;

TEST(DispersionReport, EnergyAndGradientWithD3) {
  constexpr double water_b3lyp_d3 = -0.0005738756569867;  // tests/reference/d3.json
  const PROGRAM_RUN_T run = expect_report(
      "%job gradient\n%method b3lyp\n%dispersion d3bj\n" + water_block,
      {"   Dispersion correction:\n     Model:          D3(BJ)\n     Fit-to:         B3LYP\n"
       "     s6:             1\n     s8:             1.9889\n     a1:             0.3981\n     a2:             4.4211\n",
       "   Adding D3 dispersion gradient...\n\n   Cartesian gradient (Hartree/Bohr):\n"});
  EXPECT_NEAR(run.number("     Dispersion (D3):   "), water_b3lyp_d3, 1e-10);
  const PROGRAM_RUN_T bare = run_program_in_folder("%method b3lyp\n" + water_block);
  EXPECT_FALSE(bare.says("Dispersion"));
  EXPECT_NEAR(run.number("     Total energy:      ") - bare.number("     Total energy:      "), water_b3lyp_d3, 1e-9);
}

// What dispersion adds to the square of the only frequency is the curvature of what it adds to the points of a scan: the
// gradients that the frequency is made of have it too.
TEST(DispersionReport, ScansAndFrequenciesFeelTheDispersion) {
  const std::string helium = "%basis 6-31G**\n%gz\nHe\nHe 1 2.9\n*end\n%dispersion ";
  const std::string stretch = "\n%scan\nR 2 2.85 2.95 0.05\n*end\n";
  const PROGRAM_RUN_T with = run_program_in_folder("%job scan\n" + helium + "d3" + stretch);
  const PROGRAM_RUN_T bare = run_program_in_folder("%job scan\n" + helium + "none" + stretch);
  const auto dispersion = [&](const std::string& number) {
    const std::string label = "   --- scan point " + number + ": E = ";
    return with.number(label) - bare.number(label);
  };
  EXPECT_NEAR(with.number("     Dispersion (D3):   "), dispersion("3"), 1e-8);
  const auto square = [&](const std::string& word) {
    const double frequency = run_program_in_folder("%job freq\n" + helium + word + "\n").number("   Mode 6: ") / 219474.63;
    return frequency * std::abs(frequency);
  };
  const double h = 0.05 * 1.8897261246, reduced_mass = 4.002602 / 2.0 * 1822.888486;
  const double curvature = (dispersion("1") - 2.0 * dispersion("2") + dispersion("3")) / (h * h);
  EXPECT_LT(curvature, -1e-5);
  EXPECT_NEAR(reduced_mass * (square("d3") - square("none")), curvature, 0.01 * std::abs(curvature));
}

TEST(DispersionReport, WordsAndFunctionalsWithoutParameters) {
  expect_stop("%dispersion d3(0)\n" + water_block,
              "     Use D3BJ (default, recommended) instead.\n *** FATAL: dispersion setup failed\n");
  expect_stop("%dispersion d4\n%method r2scan\n" + water_block, " *** FATAL: no D4 parameters for R2SCAN\n");
}

// In a library folder with dispersion files of its own.
TEST(DispersionReport, DamagedOrMissingData) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "/d3_atomic.dat\n *** FATAL: cannot load D3 atomic data\n"},
      {"echo 1 0.8 2.0 > basis_data/d3_atomic.dat; ", "/d3_c6ref.dat\n *** FATAL: cannot load D3 reference database\n"},
      {"echo 1 0.8 2.0 > basis_data/d3_atomic.dat; echo 8 1 0. > basis_data/d3_c6ref.dat; ",
       " *** ERROR: malformed D3 data line: 8 1 0.\n *** FATAL: cannot load D3 reference database\n"},
      {"echo 1 0.8 2.0 > basis_data/d3_atomic.dat; echo '# none' > basis_data/d3_c6ref.dat; ",
       " *** WARNING: D3 reference database is empty (0 entries).\n *** ERROR: D3 reference database not loaded\n"},
  };
  for (const auto& [files, ending] : cases) {
    const std::string folder = "mkdir basis_data; cp $ZENTRIX/basis_data/sto-3g.dat basis_data; ";
    const PROGRAM_RUN_T run =
        run_program_in_folder("%dispersion d3\n" + water_block, folder + files + "ZENTRIX=$PWD PROGRAM run.inp");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.ends_with(ending)) << run.report;
  }
}

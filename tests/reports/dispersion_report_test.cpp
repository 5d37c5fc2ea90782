#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/program_run.hpp"
#include "support/temporary_folder.hpp"

using namespace zentrix;

namespace {

const std::string water = "%geo\nO 0 0 0.1173\nH 0 0.7572 -0.4692\nH 0 -0.7572 -0.4692\n*end\n";
/// D3(BJ) with the parameters of B3LYP, from tests/reference/d3.json.
constexpr double water_b3lyp_d3 = -0.0005738756569867;

/// A library folder like the program's own but with dispersion files of its own; an empty text leaves the file out.
class LIBRARY {
 public:
  LIBRARY(const std::string& atomic, const std::string& reference) {
    std::filesystem::create_directory(folder_.path() / "basis_data");
    std::filesystem::copy_file(std::filesystem::path(ZENTRIX_SOURCE_DIR) / "basis_data/sto-3g.dat", file("sto-3g.dat"));
    if (!atomic.empty()) std::ofstream(file("d3_atomic.dat")) << atomic;
    if (!reference.empty()) std::ofstream(file("d3_c6ref.dat")) << reference;
  }
  std::string root() const { return folder_.path().string(); }
  std::string file(const std::string& name) const { return (folder_.path() / "basis_data" / name).string(); }

 private:
  TEMPORARY_FOLDER folder_;
};

}  // namespace

TEST(DispersionReport, EnergyWithD3) {
  const PROGRAM_RUN_T run = run_program_in_folder("%method b3lyp\n%dispersion d3bj\n" + water);
  ASSERT_EQ(run.status, 0) << run.report;
  EXPECT_TRUE(
      run.says("   Dispersion correction:\n     Model:          D3(BJ)\n     Fit-to:         B3LYP\n"
               "     s6:             1\n     s8:             1.9889\n     a1:             0.3981\n"
               "     a2:             4.4211\n"))
      << run.report;
  EXPECT_NEAR(run.number("     Dispersion (D3):   "), water_b3lyp_d3, 1e-10);
  const PROGRAM_RUN_T bare = run_program_in_folder("%method b3lyp\n" + water);
  EXPECT_FALSE(bare.says("Dispersion"));
  EXPECT_NEAR(run.number("     Total energy:      ") - bare.number("     Total energy:      "), water_b3lyp_d3, 1e-9);
}

TEST(DispersionReport, GradientAndOptimisationFeelTheDispersion) {
  // Two helium atoms that Hartree-Fock drives apart and dispersion holds together.
  const std::string helium = "%basis 6-31G**\n%dispersion d3\n%geo\nHe 0 0 0\nHe 0 0 3.0\n*end\n";
  const PROGRAM_RUN_T gradient = run_program_in_folder("%job gradient\n" + helium);
  ASSERT_EQ(gradient.status, 0) << gradient.report;
  EXPECT_TRUE(gradient.says("   Adding D3 dispersion gradient...\n\n   Cartesian gradient (Hartree/Bohr):\n"))
      << gradient.report;
  // The printed gradient is the derivative of the printed total energy.
  const auto total = [](const std::string& z) {
    return run_program_in_folder("%basis 6-31G**\n%dispersion d3\n%scf_etol 1e-11\n%geo bohr\nHe 0 0 0\nHe 0 0 " + z +
                                 "\n*end\n")
        .number("     Total energy:      ");
  };
  const double difference = (total("5.689178") - total("5.649178")) / 0.04;  // 3 angstrom = 5.669178 bohr
  const std::size_t row = gradient.report.find("      2 He");
  ASSERT_NE(row, std::string::npos);
  const std::string line = gradient.report.substr(row, gradient.report.find('\n', row) - row);
  EXPECT_NEAR(std::stod(line.substr(line.rfind(' '))), difference, 3e-8) << line;
  const PROGRAM_RUN_T optimum = run_program_in_folder("%job opt\n" + helium);
  EXPECT_EQ(optimum.status, 0) << optimum.report;
  EXPECT_LT(optimum.number("     Total energy:      "), total("5.669178"));
  EXPECT_LT(optimum.number("     Dispersion (D3):   "), -1e-6);
}

// What dispersion adds to the square of the only frequency is the curvature of what it adds to the points of a scan.
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
  struct CASE_T {
    std::string input, last_lines;
  };
  const std::string setup = " *** FATAL: dispersion setup failed\n";
  const std::vector<CASE_T> cases = {
      {"%dispersion d3(0)\n",
       " *** ERROR: D3(zero) damping is not yet implemented.\n     Use D3BJ (default, recommended) instead.\n" + setup},
      {"%dispersion d3\n%method r2scan\n",
       " *** ERROR: no D3(BJ) parameters for R2SCAN\n"
       "     Built-in: HF, BLYP, BP86, BPW91, B3LYP, PBE, PBE0, TPSS\n" +
           setup},
      {"%dispersion d4\n%method r2scan\n", " *** FATAL: no D4 parameters for R2SCAN\n"},
      {"%dispersion d4\n%method pbe\n", " *** ERROR: Not available in this version: %dispersion D4.\n"},
  };
  for (const CASE_T& entry : cases) {
    const PROGRAM_RUN_T run = run_program_in_folder(entry.input + water);
    EXPECT_EQ(run.status, 1) << run.report;
    EXPECT_TRUE(run.ends_with(entry.last_lines)) << run.report;
  }
}

TEST(DispersionReport, DamagedOrMissingData) {
  struct CASE_T {
    std::string atomic, reference, last_lines;
  };
  const std::string atomic = "1 0.8 2.0\n8 1.6 2.6\n";
  const std::string no_atomic = " *** FATAL: cannot load D3 atomic data\n";
  const std::string no_reference = " *** FATAL: cannot load D3 reference database\n";
  const std::vector<CASE_T> cases = {
      {"", "1 1 0 0 5\n", no_atomic},
      {atomic, "", no_reference},
      {atomic, "8 1 0.0 0.9 5.0\n8 1 0.", " *** ERROR: malformed D3 data line: 8 1 0.\n" + no_reference},
      {atomic, "# nothing\n",
       " *** WARNING: D3 reference database is empty (0 entries).\n *** ERROR: D3 reference database not loaded\n"},
  };
  for (const CASE_T& entry : cases) {
    const LIBRARY library(entry.atomic, entry.reference);
    const PROGRAM_RUN_T run =
        run_program_in_folder("%dispersion d3\n" + water, "ZENTRIX='" + library.root() + "' PROGRAM run.inp");
    EXPECT_EQ(run.status, 1) << run.report;
    EXPECT_TRUE(run.ends_with(entry.last_lines)) << run.report;
    if (entry.atomic.empty()) {
      EXPECT_TRUE(run.says(" *** ERROR: cannot open D3 atomic data file: " + library.file("d3_atomic.dat") + "\n"))
          << run.report;
    }
    if (entry.reference.empty()) {
      EXPECT_TRUE(run.says(" *** ERROR: cannot open D3 reference C6 database: " + library.file("d3_c6ref.dat") + "\n"))
          << run.report;
    }
  }
}

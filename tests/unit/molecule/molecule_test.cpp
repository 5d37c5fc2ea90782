#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>

#include "molecule/shell_validation.hpp"
#include "report/stop.hpp"
#include "support/molecules.hpp"
#include "support/printed.hpp"
#include "support/temporary_folder.hpp"

// From the input record to the molecule: counts and messages.

namespace {

using namespace zentrix;
using ::testing::HasSubstr;

struct BUILT_T {
  int error = 0;
  MOLECULE_T molecule;
  std::string report;
};

BUILT_T build(const INPUT_PARSER::INPUT_DATA_T& input) {
  BUILT_T result;
  std::ostringstream report;
  result.error = build_molecule(input, result.molecule, report);
  result.report = report.str();
  return result;
}

TEST(MOLECULE, ElectronCountsAndTheirMessages) {
  const std::tuple<int, int, const char*> cases[] = {
      {2, 1, " *** ERROR: Non-positive electron count: 0\n     Check charge and atomic numbers.\n"},
      {0, 2,
       "     nelec = 2,  multiplicity = 2\n     Even electrons require odd multiplicity (singlet=1, triplet=3, ...).\n"},
      {1, 3,
       "     nelec = 1,  multiplicity = 3\n     Odd electrons require even multiplicity (doublet=2, quartet=4, ...).\n"},
      {0, 5, " *** ERROR: Multiplicity too high for this electron count.\n     nelec = 2,  mult = 5,  nbeta = -1\n"},
      {0, -1, " *** ERROR: Multiplicity must be >= 1, got: -1\n"},
      {-2147483647, 1, " *** ERROR: "},
  };
  for (const auto& [charge, multiplicity, message] : cases) {
    const BUILT_T built = build(TESTS::sample_input("H 0 0 0\nH 0 0 0.74\n", "STO-3G", {charge, multiplicity, false}));
    EXPECT_NE(built.error, 0) << message;
    EXPECT_THAT(built.report, HasSubstr(message));
  }
}

TEST(MOLECULE, BasisFailuresNameFileAndReason) {
  EXPECT_THAT(build(TESTS::sample_input(TESTS::water, "no-such")).report,
              HasSubstr(" *** ERROR: Cannot load basis for Z=8 from basis_data/no-such.dat\n     File not found.\n"));
  EXPECT_THAT(build(TESTS::sample_input("Au 0 0 0\n", "6-31G*", {0, 2, false})).report,
              HasSubstr(" from basis_data/6-31gd.dat\n     Element not in basis file.\n"));
  EXPECT_THAT(
      build(TESTS::sample_input("Zn 0 0 0\n", "aug-cc-pVQZ")).report,
      HasSubstr(" *** ERROR: basis-set angular momentum exceeds the supported limit.\n     Element Zn: shell type \"H\" has "
                "L = 5\n     but Zentrix is compiled for L_max = 4 (g-functions).\n"));
}

TEST(MOLECULE, DamagedDataStopsTheBuildWithItsReason) {
  const TEMPORARY_FOLDER folder;
  std::filesystem::create_directory(folder.path() / "basis_data");
  const auto write = [&folder](const char* name, const std::string& text) {
    std::ofstream(folder.path() / "basis_data" / name) << text;
  };
  write("torn.dat", "****\nH 0\nS 3 1.00\n 1.0 1.0\n");
  write("opposite.dat", "****\nH 0\nS 2 1.00\n 1.0 1.0\n 1.0 -1.0\n****\n");
  write("sound.dat", "****\nNa 0\nS 1 1.00\n 1.0 1.0\n****\n");
  write("sound_ecp.dat", "****\nNa 0\nNA-ECP 1 10\np potential\n 1\n1 2.0\n****\n");
  std::filesystem::create_directory(folder.path() / "basis_data" / "folder.dat");
  setenv("ZENTRIX", folder.path().c_str(), 1);
  const std::string root = folder.path().string() + "/basis_data/";
  const auto report = [](const char* element, const char* basis) {
    const BUILT_T built = build(TESTS::sample_input(std::string(element) + " 0 0 0\n", basis, {0, 2, false}));
    EXPECT_NE(built.error, 0);
    return built.report;
  };
  EXPECT_EQ(report("H", "Torn"),
            " *** ERROR: Cannot load basis for Z=1 from " + root + "torn.dat\n     Parse error in basis file.\n");
  EXPECT_THAT(report("H", "folder"), HasSubstr("folder.dat\n     File not found.\n"));
  EXPECT_THAT(report("H", "opposite"), ::testing::StartsWith("FATAL [normalize_shell]: "));
  EXPECT_EQ(report("Na", "sound"), " *** ERROR loading ECP for Z=11 from " + root + "sound_ecp.dat\n");
  unsetenv("ZENTRIX");
}

TEST(MOLECULE, PotentialsReduceChargesAndCanBeSwitchedOff) {
  const auto input = TESTS::sample_input("I 0 0 0\nH 0 0 1.6\n", "def2-SVP");
  const BUILT_T automatic = build(input);
  ASSERT_EQ(automatic.error, 0) << automatic.report;
  EXPECT_THAT(automatic.report, HasSubstr("   Auto-detected ECP for Z=53 from basis_data/def2-svp_ecp.dat\n"));
  EXPECT_DOUBLE_EQ(automatic.molecule.atoms[0].charge, 25.0);
  EXPECT_EQ(automatic.molecule.n_electrons, 26);
  EXPECT_EQ(automatic_frozen_core(automatic.molecule), 0);
  auto without = input;
  without.ecp = without.default_ecp = "none";
  const BUILT_T all_electron = build(without);
  EXPECT_EQ(all_electron.molecule.n_electrons, 54);
  EXPECT_EQ(automatic_frozen_core(all_electron.molecule), 18);
  auto global = input;  // a name for all covers the elements it holds: not hydrogen
  global.ecp = global.default_ecp = "def2-SVP";
  EXPECT_EQ(build(global).molecule.n_electrons, 26);
  for (const auto& [z, name, file] : {std::tuple{53, "6-31G*", "6-31gd"}, {1, "def2-SVP", "def2-svp"}}) {
    auto wrong = input;  // no such potentials; none of that element
    wrong.element_ecp[z] = name;
    EXPECT_THAT(build(wrong).report,
                HasSubstr(fmt::format(" *** ERROR loading ECP for Z={} from basis_data/{}_ecp.dat", z, file)));
  }
}

TEST(MOLECULE, MixedBasisSetsGoToTheirElements) {
  auto input = TESTS::sample_input(TESTS::water, "STO-3G");
  input.basis = "mixed";
  input.element_basis[8] = "6-31G*";
  EXPECT_EQ(build(input).molecule.n_basis, 15 + 2);
}

TEST(MOLECULE, DataFilesFollowTheEnvironment) {
  EXPECT_EQ(data_file_path("x.dat"), "basis_data/x.dat");
  const std::pair<const char*, const char*> cases[] = {{"/a/b", "/a/b/basis_data/x.dat"},
                                                       {"/a/b/", "/a/b/basis_data/x.dat"},
                                                       {"c:\\b\\", "c:\\b\\basis_data/x.dat"},
                                                       {"", "basis_data/x.dat"}};
  for (const auto& [root, path] : cases) {
    setenv("ZENTRIX", root, 1);
    EXPECT_EQ(data_file_path("x.dat"), path);
  }
  unsetenv("ZENTRIX");
}

TEST(SHELL_VALIDATION, ExaminesInOrderAndNamesTheRoutine) {
  SHELL_T shell;
  shell.l = 6;
  shell.nprim = 0;
  const auto message = [&shell] {
    try {
      validate_shell("compute_eri_contracted", shell);
    } catch (const run_stopped& stop) {
      return std::string(stop.what());
    }
    return std::string();
  };
  EXPECT_EQ(message(), "FATAL [compute_eri_contracted]: l exceeds LMAX = 5\nangular momentum exceeds LMAX");
  shell.l = -1;
  EXPECT_EQ(message(), "FATAL [compute_eri_contracted]: negative angular momentum\nnegative angular momentum");
  shell.l = 5;
  EXPECT_EQ(message(), "FATAL [compute_eri_contracted]: nprim must be > 0, got 0\ninvalid nprim");
  shell.nprim = 2;
  EXPECT_THAT(message(), HasSubstr("alpha/coeff not allocated"));
  shell.alpha = {1.0, -2.0};
  shell.coeff = {1.0, 1.0};
  EXPECT_EQ(message(), "FATAL [compute_eri_contracted]: alpha(2) <= 0: -2\nnon-positive exponent");
  shell.alpha[1] = 2.0;
  EXPECT_EQ(message(), "");
}

TEST(MOLECULE, FrozenCoreChangesAtTheNobleGases) {
  const int counts[][2] = {{2, 0},  {3, 1},   {10, 1},  {11, 5},  {18, 5}, {19, 9},
                           {36, 9}, {37, 18}, {54, 18}, {55, 27}, {87, 43}};
  for (const auto& [z, expected] : counts) {
    MOLECULE_T molecule;
    molecule.atoms.resize(2);
    molecule.atoms[0].z = z;
    molecule.atoms[1].z = z;
    EXPECT_EQ(automatic_frozen_core(molecule), 2 * expected) << z;
    molecule.atoms[1].ghost = true;
    EXPECT_EQ(automatic_frozen_core(molecule), expected) << z;
  }
}

TEST(MOLECULE, SummaryNumbersShellsAndFunctionsFromOne) {
  const std::string text =
      TESTS::printed(print_molecule_summary, TESTS::sample_molecule(TESTS::water, "6-31G*", {.spherical = true}));
  EXPECT_THAT(text, HasSubstr("   Number of shells:          10\n   Number of basis fns:       18\n"));
  EXPECT_THAT(text, HasSubstr("   Primitive Gaussians:       36\n   Spherical basis fns:       18\n"));
  EXPECT_THAT(text, HasSubstr("       6     1  d      1    5         10\n"));
  EXPECT_THAT(text, HasSubstr("      10     3  s      1    1         18\n"));
}

}  // namespace

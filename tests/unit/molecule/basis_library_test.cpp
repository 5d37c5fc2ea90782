#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "constants/elements.hpp"
#include "constants/limits.hpp"
#include "molecule/basis_file.hpp"
#include "molecule/molecule.hpp"
#include "support/reference.hpp"

// The basis library on disk and its readers.

namespace {

using namespace zentrix;

bool is_ecp_file(const std::filesystem::path& path) { return path.string().ends_with("_ecp.dat"); }

/// Self-overlap of x^l with the shell's final coefficients, summed here once more.
double self_overlap(const SHELL_T& shell) {
  double sum = 0.0;
  for (std::size_t i = 0; i < shell.alpha.size(); ++i) {
    for (std::size_t j = 0; j < shell.alpha.size(); ++j) {
      const double p = shell.alpha[i] + shell.alpha[j];
      double value = std::pow(M_PI / p, 1.5);
      for (int k = 1; k <= shell.l; ++k) value *= (2 * k - 1) / (2.0 * p);
      sum += shell.coeff[i] * shell.coeff[j] * value;
    }
  }
  return sum;
}

TEST(BASIS_LIBRARY, EveryShippedFileIsReadAndEveryShellNormalises) {
  int files = 0;
  int elements = 0;
  for (const auto& entry : std::filesystem::directory_iterator("basis_data")) {
    if (entry.path().extension() != ".dat" || is_ecp_file(entry.path()) ||
        entry.path().filename().string().starts_with("d3_") || entry.path().filename().string().starts_with("d4_")) {
      continue;
    }
    ++files;
    SCOPED_TRACE(entry.path().filename().string());
    int held = 0;
    for (int z = 1; z <= MAX_BASIS_Z; ++z) {
      ELEMENT_BASIS_T basis;
      const DATA_STATUS status = read_basis_file(entry.path().string(), z, basis);
      if (status == DATA_STATUS::no_element) continue;
      ++held;
      if (status == DATA_STATUS::angular_momentum) {
        EXPECT_GT(basis.refused_l, LMAX_BASIS);
        continue;
      }
      ASSERT_EQ(status, DATA_STATUS::ok) << element_symbol(z);
      for (SHELL_T& shell : basis.shells) {
        std::ostringstream report;
        ASSERT_EQ(normalize_shell(shell, report), 0) << element_symbol(z) << report.str();
        ASSERT_NEAR(self_overlap(shell), 1.0, 1e-12) << element_symbol(z);
      }
    }
    EXPECT_GT(held, 0);
    elements += held;
  }
  EXPECT_GT(files, 250);
  EXPECT_GT(elements, 4000);
}

/// Published counts of one element: Cartesian and spherical functions, highest angular momentum, core electrons.
void expect_sizes(const nlohmann::json& sizes, int z, const std::string& name) {
  ELEMENT_BASIS_T basis;
  const DATA_STATUS status = read_basis_file(basis_path(name), z, basis);
  if (sizes[2].get<int>() > LMAX_BASIS) {
    EXPECT_EQ(status, DATA_STATUS::angular_momentum);
    return;
  }
  ASSERT_EQ(status, DATA_STATUS::ok);
  int cartesian = 0;
  int spherical = 0;
  for (const SHELL_T& shell : basis.shells) {
    cartesian += n_cartesian(shell.l);
    spherical += n_spherical(shell.l);
  }
  EXPECT_EQ(cartesian, sizes[0].get<int>());
  EXPECT_EQ(spherical, sizes[1].get<int>());
  ECP_T ecp;
  const bool has_ecp = read_ecp_file(ecp_path(name), z, ecp) == DATA_STATUS::ok;
  EXPECT_EQ(has_ecp ? ecp.n_core : 0, sizes[3].get<int>());
}

/// Checksums of one element, as tests/reference/make_basis_numbers.py forms them from another collection.
void expect_numbers(const nlohmann::json& expected, int z, const std::string& name) {
  ELEMENT_BASIS_T basis;
  const DATA_STATUS status = read_basis_file(basis_path(name), z, basis);
  if (status == DATA_STATUS::angular_momentum) return;  // h functions: counted in the test of all files
  ASSERT_EQ(status, DATA_STATUS::ok);
  ASSERT_EQ(basis.shells.size(), expected[0].get<std::size_t>());
  double logarithms = 0.0;
  double coefficients = 0.0;
  std::ostringstream report;
  for (SHELL_T& shell : basis.shells) {
    ASSERT_EQ(normalize_shell(shell, report), 0) << report.str();
    for (std::size_t k = 0; k < shell.alpha.size(); ++k) {
      const SHELL_T bare{0, shell.l, 1, {shell.alpha[k]}, {1.0}, 0, 0};
      logarithms += std::log(shell.alpha[k]);
      coefficients += std::abs(shell.coeff[k]) * std::sqrt(self_overlap(bare));
    }
  }
  EXPECT_NEAR(logarithms, expected[1].get<double>(), 2e-4);
  EXPECT_NEAR(coefficients, expected[2].get<double>(), 2e-4);
  if (expected.size() < 4) return;
  ECP_T ecp;
  ASSERT_EQ(read_ecp_file(ecp_path(name), z, ecp), DATA_STATUS::ok);
  std::vector<ECP_TERM_T> terms = ecp.local;
  for (const auto& part : ecp.semi_local) terms.insert(terms.end(), part.begin(), part.end());
  double sum = 0.0;
  logarithms = 0.0;
  for (const ECP_TERM_T& term : terms) {
    logarithms += std::log(term.exponent);
    sum += term.coefficient;
  }
  EXPECT_EQ(ecp.n_core, expected[3].get<int>());
  EXPECT_EQ(terms.size(), expected[4].get<std::size_t>());
  EXPECT_NEAR(logarithms, expected[5].get<double>(), 1e-5);
  EXPECT_NEAR(sum, expected[6].get<double>(), 1e-4);
}

/// The split-valence families are put together from parts: an independent collection must agree on the whole.
TEST(BASIS_LIBRARY, SizesAndNumbersAgreeWithOtherCollections) {
  for (const auto& [file, expect] : {std::pair{"basis_sizes", &expect_sizes}, {"basis_numbers", &expect_numbers}}) {
    const nlohmann::json reference = TESTS::reference(file);
    int compared = 0;
    for (const auto& [name, elements] : reference.items()) {
      for (const auto& [z, expected] : elements.items()) {
        SCOPED_TRACE(name + " " + element_symbol(std::stoi(z)));
        expect(expected, std::stoi(z), name);
        ++compared;
      }
    }
    EXPECT_GT(compared, 700);
  }
}

TEST(BASIS_LIBRARY, EveryPotentialIsReadAndBelongsToABasisSet) {
  int potentials = 0;
  for (const auto& entry : std::filesystem::directory_iterator("basis_data")) {
    if (!is_ecp_file(entry.path())) continue;
    SCOPED_TRACE(entry.path().filename().string());
    std::string basis = entry.path().string();
    basis.replace(basis.find("_ecp.dat"), std::string::npos, ".dat");
    for (int z = 1; z <= MAX_BASIS_Z; ++z) {
      ECP_T ecp;
      const DATA_STATUS status = read_ecp_file(entry.path().string(), z, ecp);
      if (status == DATA_STATUS::no_element) continue;
      ASSERT_EQ(status, DATA_STATUS::ok) << element_symbol(z);
      EXPECT_FALSE(ecp.local.empty() && ecp.semi_local.empty());
      ELEMENT_BASIS_T shells;
      EXPECT_NE(read_basis_file(basis, z, shells), DATA_STATUS::no_element) << element_symbol(z);
      ++potentials;
    }
  }
  EXPECT_GT(potentials, 300);
}

TEST(BASIS_LIBRARY, FileNamesFollowTheRuleInBothNamings) {
  EXPECT_EQ(basis_file_name("6-31G*"), "6-31gd.dat");
  EXPECT_EQ(basis_file_name("6-31G(d)"), "6-31gd.dat");
  EXPECT_EQ(basis_file_name("6-31+G**"), "6-31pgdp.dat");
  EXPECT_EQ(basis_file_name("6-311++G(2d,2p)"), "6-311ppg2d2p.dat");
  EXPECT_EQ(basis_file_name("Stuttgart RLC"), "stuttgartrlc.dat");
  EXPECT_EQ(ecp_file_name("LANL2DZ"), "lanl2dz_ecp.dat");
  // The rule alone would give the split-valence set without hydrogen p functions the file of the one that has them.
  EXPECT_NE(basis_path("def2-SV(P)"), basis_path("def2-SVP"));
}

/// A damaged file must be told from a missing element, and never crash or allocate without bound.
TEST(BASIS_READER, RefusesDamagedFiles) {
  const auto status = [](const std::string& text, int z = 1) {
    std::istringstream file(text);
    ELEMENT_BASIS_T basis;
    return read_basis(file, z, basis);
  };
  const std::string helium = "****\nHe 0\nS 1 1.0\n 1.0 1.0\n****\n", hydrogen = "****\nH 0\n";
  EXPECT_EQ(status(hydrogen + "S 1 1.00\n 1.0 1.0\n****\n"), DATA_STATUS::ok);
  EXPECT_EQ(status("! c\n" + helium + "h 0\ns 1 1.00\n 0.10D+01 1.0\n"), DATA_STATUS::ok);
  EXPECT_EQ(status(helium), DATA_STATUS::no_element);
  EXPECT_EQ(status(""), DATA_STATUS::no_element);
  EXPECT_EQ(status("****\nXx 0\nS 1 1.0\n 1.0 1.0\n****\n", 0), DATA_STATUS::no_element);  // no symbol belongs to 0
  EXPECT_EQ(status(hydrogen + "H 1 1.00\n 1.0 1.0\n****\n"), DATA_STATUS::angular_momentum);
  for (const char* shells :
       {"", "S 2 1.00\n 1.0 1.0\n", "S 1000000000 1.00\n 1.0 1.0\n", "S 1 1.00\n -1.0 1.0\n", "S 1 1.00\n nan 1.0\n",
        "S 1 1.00\n 1e999 1.0\n", "SP 1 1.00\n 1.0 1.0\n", "Q 1 1.00\n 1.0 1.0\n"})
    EXPECT_EQ(status(hydrogen + shells + "****\n"), DATA_STATUS::parse_error) << shells;
}

TEST(BASIS_READER, SplitsSharedExponentsAndScalesThem) {
  std::istringstream file("****\nC 0\nsp 2 2.00 unused\n 1.0D0 0.3 -0.4\n\n! between\n 0.5 0.6 0.7 unused\n****\n");
  ELEMENT_BASIS_T basis;
  ASSERT_EQ(read_basis(file, 6, basis), DATA_STATUS::ok);
  ASSERT_EQ(basis.shells.size(), 2U);
  EXPECT_EQ(basis.shells[0].l, 0);
  EXPECT_EQ(basis.shells[1].l, 1);
  EXPECT_EQ(basis.shells[0].alpha, (std::vector<double>{4.0, 2.0}));
  EXPECT_EQ(basis.shells[1].alpha, basis.shells[0].alpha);
  EXPECT_EQ(basis.shells[0].coeff, (std::vector<double>{0.3, 0.6}));
  EXPECT_EQ(basis.shells[1].coeff, (std::vector<double>{-0.4, 0.7}));
}

TEST(BASIS_READER, ReadsPotentialsAndRefusesDamagedOnes) {
  const std::string good =
      "****\nNa 0\nNA-ECP 1 10\np potential\n 1\n1 2.0 -10.0\ns-p potential\n 2\n0 1.0 3.0\n2 0.5D0 4.0\n****\n";
  std::istringstream file(good);
  ECP_T ecp;
  ASSERT_EQ(read_ecp(file, 11, ecp), DATA_STATUS::ok);
  EXPECT_EQ(ecp.n_core, 10);
  ASSERT_EQ(ecp.semi_local.size(), 1U);
  EXPECT_EQ(ecp.semi_local[0][1].n, 2);
  EXPECT_DOUBLE_EQ(ecp.semi_local[0][1].exponent, 0.5);
  for (const char* bad : {"****\nNa 0\n****\n", "****\nNa 0\nNA-ECP 99 10\n", "****\nNa 0\nNA-ECP 1 11\n",
                          "****\nNa 0\nNA-ECP 0 10\np\n 999999999\n", "****\nNa 0\nNA-ECP 0 10\np\n 1\n1 -2.0 1.0\n"}) {
    std::istringstream damaged(bad);
    EXPECT_EQ(read_ecp(damaged, 11, ecp), DATA_STATUS::parse_error) << bad;
  }
}

}  // namespace

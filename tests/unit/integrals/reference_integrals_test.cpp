#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "integrals/boys.hpp"
#include "integrals/one_electron.hpp"
#include "integrals/reference_eri.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/molecule.hpp"
#include "report/stop.hpp"

// Boys function, one-electron integrals and the scalar two-electron integrals against independently computed values
// (tests/reference/make_integral_references.py); derivatives against differences.

namespace {

using namespace zentrix;
using INTEGRALS_2E::CENTERED_SHELL_T;

nlohmann::json reference(const char* name) {
  std::ifstream file(std::string(ZENTRIX_SOURCE_DIR "/tests/reference/") + name);
  return nlohmann::json::parse(file);
}

SHELL_T shell_of(const nlohmann::json& entry) {
  SHELL_T shell;
  shell.atom = entry[0];
  shell.l = entry[1];
  shell.alpha = entry[2].get<std::vector<double>>();
  shell.coeff = entry[3].get<std::vector<double>>();
  shell.nprim = static_cast<int>(shell.alpha.size());
  std::ostringstream report;
  EXPECT_EQ(normalize_shell(shell, report), 0) << report.str();
  return shell;
}

/// Atoms of charge 1, 2, 3, ... at the centres of a record.
MOLECULE_T molecule_of(const nlohmann::json& record) {
  MOLECULE_T molecule;
  int z = 0;
  for (const auto& center : record["centers"]) {
    ++z;
    molecule.atoms.push_back({"X", z, static_cast<double>(z), center.get<std::array<double, 3>>(), false, 0});
  }
  for (const auto& entry : record["shells"]) molecule.shells.push_back(shell_of(entry));
  molecule.spherical = record["spherical"];
  count_basis_functions(molecule);
  return molecule;
}

TEST(BOYS, TableAsymptoticAndPreciseFormsAreExact) {
  for (const auto& entry : reference("boys.json")) {
    const int n = entry[0];
    const double t = entry[1];
    const double exact = entry[2];
    SCOPED_TRACE("n = " + std::to_string(n) + ", T = " + std::to_string(t));
    // Within six orders of the highest one the Taylor sum is cut off, by design: no integral of the program asks for them.
    const double tolerance = n <= 22 ? 1e-14 : 2e-4;
    EXPECT_NEAR(BOYS::evaluate(n, t), exact, tolerance);
    std::array<double, BOYS_NMAX + 1> values;
    BOYS::evaluate(BOYS_NMAX, t, values.data());
    EXPECT_NEAR(values[static_cast<std::size_t>(n)], BOYS::evaluate(n, t), 1e-15);
    const BOYS::PRECISE_MODE_GUARD precise;
    EXPECT_NEAR(BOYS::evaluate(n, t), exact, 1e-15);
  }
  EXPECT_EQ(BOYS::evaluate(7, 0.0), 1.0 / 15.0);
  EXPECT_EQ(BOYS::evaluate(7, 9e-16), 1.0 / 15.0);
  EXPECT_FALSE(BOYS::precise_mode());
}

TEST(CARTESIAN, PowersIndicesAndFunctionsBelongTogether) {
  for (int l = 0; l <= LMAX; ++l) {
    for (int n = 0; n < n_cartesian(l); ++n) {
      const POWERS_T p = cartesian_powers(l, n);
      EXPECT_EQ(p.x + p.y + p.z, l);
      EXPECT_EQ(cartesian_index(p.y, p.z), n);
    }
  }
  EXPECT_THROW(static_cast<void>(shell_functions(5, true)), run_stopped);
}

TEST(ONE_ELECTRON, AgreesWithIndependentIntegrals) {
  const nlohmann::json all = reference("integrals.json");
  ASSERT_GE(all["one_electron"].size(), 4U);
  for (const auto& record : all["one_electron"]) {
    SCOPED_TRACE(record["name"].get<std::string>());
    const MOLECULE_T molecule = molecule_of(record);
    const auto one = INTEGRALS_1E::one_electron_matrices(molecule);
    const auto dipole = INTEGRALS_1E::dipole(molecule);
    const std::pair<const char*, const MATRIX*> matrices[] = {{"S", &one.s},     {"T", &one.t},     {"V", &one.v},
                                                              {"X", &dipole[0]}, {"Y", &dipole[1]}, {"Z", &dipole[2]}};
    for (const auto& [label, matrix] : matrices) {
      const auto& expected = record["matrices"][label];
      std::size_t k = 0;
      for (Eigen::Index i = 0; i < matrix->rows(); ++i) {
        for (Eigen::Index j = 0; j <= i; ++j, ++k) {
          const double value = expected[k];
          ASSERT_NEAR((*matrix)(i, j), value, 1e-12 * std::max(1.0, std::abs(value))) << label << " " << i << " " << j;
          ASSERT_NEAR((*matrix)(i, j), (*matrix)(j, i), 1e-13);
        }
      }
    }
  }
}

TEST(ONE_ELECTRON, DipoleMovesWithItsOriginByTheOverlap) {
  const MOLECULE_T molecule = molecule_of(nlohmann::json(reference("integrals.json")["one_electron"][1]));
  const auto shifted = INTEGRALS_1E::dipole(molecule, {0.3, -0.2, 0.7});
  const auto about_zero = INTEGRALS_1E::dipole(molecule);
  EXPECT_LT((shifted[1] - about_zero[1] - 0.2 * INTEGRALS_1E::overlap(molecule)).cwiseAbs().maxCoeff(), 1e-13);
}

struct QUARTET_T {
  std::array<CENTERED_SHELL_T, 4> shells;
};

QUARTET_T quartet_of(const nlohmann::json& record) {
  QUARTET_T q;
  for (std::size_t k = 0; k < 4; ++k) {
    q.shells[k] = {shell_of(record["shells"][k]), record["centers"][k].get<std::array<double, 3>>()};
  }
  return q;
}

std::vector<double> block_of(const QUARTET_T& q) {
  std::vector<double> block;
  INTEGRALS_2E::compute_eri_contracted(q.shells[0], q.shells[1], q.shells[2], q.shells[3], block);
  return block;
}

/// From bare components to functions normalised to one.
void normalise_block(const QUARTET_T& q, std::vector<double>& block) {
  std::size_t index = 0;
  const auto scale = [&q](std::size_t k, int i) { return shell_functions(q.shells[k].shell.l, false)(i, i); };
  for (int a = 0; a < n_cartesian(q.shells[0].shell.l); ++a) {
    for (int b = 0; b < n_cartesian(q.shells[1].shell.l); ++b) {
      for (int c = 0; c < n_cartesian(q.shells[2].shell.l); ++c) {
        for (int d = 0; d < n_cartesian(q.shells[3].shell.l); ++d) {
          block[index++] *= scale(0, a) * scale(1, b) * scale(2, c) * scale(3, d);
        }
      }
    }
  }
}

TEST(REFERENCE_ERI, AgreesWithIndependentIntegralsClassByClass) {
  const nlohmann::json all = reference("integrals.json");
  ASSERT_GT(all["quartets"].size(), 200U);
  for (const auto& record : all["quartets"]) {
    const QUARTET_T q = quartet_of(record);
    std::vector<double> block = block_of(q);
    normalise_block(q, block);
    double weighted = 0.0;
    double squares = 0.0;
    for (std::size_t i = 0; i < block.size(); ++i) {
      weighted += std::cos(static_cast<double>(i)) * block[i];
      squares += block[i] * block[i];
    }
    const double expected = record["squares"];
    const double tolerance = 1e-11 * std::max(1.0, std::sqrt(expected));
    EXPECT_NEAR(weighted, record["weighted"].get<double>(), tolerance) << record["shells"];
    EXPECT_NEAR(std::sqrt(squares), std::sqrt(expected), tolerance) << record["shells"];
  }
}

TEST(REFERENCE_ERI, ContractionIsTheSumOfItsPrimitives) {
  const QUARTET_T q = quartet_of(nlohmann::json(reference("integrals.json")["quartets"].back()));
  std::vector<double> sum(block_of(q).size(), 0.0);
  std::vector<double> part;
  for (int n = 0; n < 16; ++n) {
    INTEGRALS_2E::compute_eri_primitive(q.shells[0], n & 1, q.shells[1], (n >> 1) & 1, q.shells[2], (n >> 2) & 1,
                                        q.shells[3], (n >> 3) & 1, part);
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += part[i];
  }
  const std::vector<double> block = block_of(q);
  for (std::size_t i = 0; i < sum.size(); ++i) ASSERT_NEAR(sum[i], block[i], 1e-14);
}

TEST(REFERENCE_ERI, DerivativesAreThoseOfTheIntegralsAndVanishTogether) {
  const nlohmann::json record = {
      {"centers", {{0.0, 0.0, 0.0}, {0.4, -0.9, 1.1}, {-1.2, 0.7, 0.3}, {0.8, 1.4, -0.6}}},
      {"shells",
       {{0, 2, {1.3, 0.4}, {0.6, 0.5}}, {1, 1, {0.9}, {1.0}}, {2, 0, {1.1, 0.3}, {0.4, 0.7}}, {3, 4, {0.8}, {1.0}}}}};
  const QUARTET_T q = quartet_of(record);
  std::vector<double> derivatives;
  INTEGRALS_2E::compute_deri_contracted(q.shells[0], q.shells[1], q.shells[2], q.shells[3], derivatives);
  const std::size_t size = derivatives.size() / 12;
  constexpr double step = 1e-4;
  for (std::size_t center = 0; center < 4; ++center) {
    for (std::size_t k = 0; k < 3; ++k) {
      QUARTET_T moved = q;
      moved.shells[center].center[k] += step;
      const std::vector<double> plus = block_of(moved);
      moved.shells[center].center[k] -= 2.0 * step;
      const std::vector<double> minus = block_of(moved);
      for (std::size_t i = 0; i < size; ++i) {
        ASSERT_NEAR(derivatives[(3 * center + k) * size + i], (plus[i] - minus[i]) / (2.0 * step), 1e-7);
      }
    }
  }
  for (std::size_t n = 0; n < 3 * size; ++n) {
    double sum = 0.0;
    for (std::size_t center = 0; center < 4; ++center) sum += derivatives[center * 3 * size + n];
    ASSERT_NEAR(sum, 0.0, 1e-12);
  }
}

TEST(REFERENCE_ERI, RefusesUnsoundShellsBeforeAnythingElse) {
  QUARTET_T q = quartet_of(nlohmann::json(reference("integrals.json")["quartets"].back()));
  q.shells[2].shell.l = 6;
  try {
    block_of(q);
    FAIL() << "an i shell was accepted";
  } catch (const run_stopped& stop) {
    EXPECT_STREQ(stop.what(), "FATAL [compute_eri_contracted]: l exceeds LMAX = 5\nangular momentum exceeds LMAX");
  }
}

}  // namespace

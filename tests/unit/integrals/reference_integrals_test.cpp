#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "integrals/boys.hpp"
#include "integrals/one_electron.hpp"
#include "integrals/reference_eri.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/molecule.hpp"
#include "report/stop.hpp"
#include "support/reference.hpp"

// Boys function, one-electron integrals and the scalar two-electron integrals against independently computed values
// (tests/reference/make_integral_references.py); derivatives against differences.

namespace {

using namespace zentrix;
using INTEGRALS_2E::CENTERED_SHELL_T;
using TESTS::reference;

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
  for (const auto& entry : reference("boys")) {
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
    if (t < 80.0) {  // the source of the vector tables
      long double series[BOYS_NMAX + 1];
      BOYS::evaluate_series(n, t, series);
      EXPECT_NEAR(static_cast<double>(series[n]), exact, 1e-14 * exact);
    }
    const BOYS::PRECISE_MODE_GUARD precise;
    EXPECT_NEAR(BOYS::evaluate(n, t), exact, 1e-15);
  }
  EXPECT_EQ(BOYS::evaluate(7, 0.0), 1.0 / 15.0);
  EXPECT_EQ(BOYS::evaluate(7, 9e-16), 1.0 / 15.0);
  EXPECT_FALSE(BOYS::precise_mode());
}

TEST(ONE_ELECTRON, AgreesWithIndependentIntegrals) {
  const nlohmann::json all = reference("integrals");
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
  const MOLECULE_T molecule = molecule_of(nlohmann::json(reference("integrals")["one_electron"][1]));
  const auto shifted = INTEGRALS_1E::dipole(molecule, {0.3, -0.2, 0.7});
  const auto about_zero = INTEGRALS_1E::dipole(molecule);
  EXPECT_LT((shifted[1] - about_zero[1] - 0.2 * INTEGRALS_1E::overlap(molecule)).cwiseAbs().maxCoeff(), 1e-13);
}

using QUARTET_T = std::array<CENTERED_SHELL_T, 4>;

QUARTET_T quartet_of(const nlohmann::json& record) {
  QUARTET_T q;
  for (std::size_t k = 0; k < 4; ++k) {
    q[k] = {shell_of(record["shells"][k]), record["centers"][k].get<std::array<double, 3>>()};
  }
  return q;
}

std::vector<double> block_of(const QUARTET_T& q) {
  std::vector<double> block;
  INTEGRALS_2E::compute_eri_contracted(q[0], q[1], q[2], q[3], block);
  return block;
}

TEST(REFERENCE_ERI, AgreesWithIndependentIntegralsClassByClass) {
  const nlohmann::json all = reference("integrals");
  ASSERT_GT(all["quartets"].size(), 200U);
  for (const auto& record : all["quartets"]) {
    const QUARTET_T q = quartet_of(record);
    const std::vector<double> block = block_of(q);
    std::array<MATRIX, 4> norms;  // from bare components to functions normalised to one
    for (std::size_t k = 0; k < 4; ++k) norms[k] = shell_functions(q[k].shell.l, false);
    double weighted = 0.0;
    double squares = 0.0;
    std::size_t index = 0;
    for (int a = 0; a < norms[0].rows(); ++a)
      for (int b = 0; b < norms[1].rows(); ++b)
        for (int c = 0; c < norms[2].rows(); ++c)
          for (int d = 0; d < norms[3].rows(); ++d, ++index) {
            const double value = norms[0](a, a) * norms[1](b, b) * norms[2](c, c) * norms[3](d, d) * block[index];
            weighted += std::cos(static_cast<double>(index)) * value;
            squares += value * value;
          }
    ASSERT_EQ(index, block.size());
    const double expected = record["squares"];
    const double tolerance = 1e-11 * std::max(1.0, std::sqrt(expected));
    EXPECT_NEAR(weighted, record["weighted"].get<double>(), tolerance) << record["shells"];
    EXPECT_NEAR(std::sqrt(squares), std::sqrt(expected), tolerance) << record["shells"];
  }
}

TEST(REFERENCE_ERI, ContractionIsTheSumOfItsPrimitives) {
  const QUARTET_T q = quartet_of(nlohmann::json(reference("integrals")["quartets"].back()));
  std::vector<double> sum(block_of(q).size(), 0.0);
  std::vector<double> part;
  for (int n = 0; n < 16; ++n) {
    INTEGRALS_2E::compute_eri_primitive(q[0], n & 1, q[1], (n >> 1) & 1, q[2], (n >> 2) & 1, q[3], (n >> 3) & 1, part);
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += part[i];
  }
  const std::vector<double> block = block_of(q);
  for (std::size_t i = 0; i < sum.size(); ++i) ASSERT_NEAR(sum[i], block[i], 1e-14);
}

TEST(REFERENCE_ERI, DerivativesAreThoseOfTheIntegrals) {
  const nlohmann::json record = {
      {"centers", {{0.0, 0.0, 0.0}, {0.4, -0.9, 1.1}, {-1.2, 0.7, 0.3}, {0.8, 1.4, -0.6}}},
      {"shells",
       {{0, 2, {1.3, 0.4}, {0.6, 0.5}}, {1, 1, {0.9}, {1.0}}, {2, 0, {1.1, 0.3}, {0.4, 0.7}}, {3, 4, {0.8}, {1.0}}}}};
  const QUARTET_T q = quartet_of(record);
  std::vector<double> derivatives;
  INTEGRALS_2E::compute_deri_contracted(q[0], q[1], q[2], q[3], derivatives);
  const std::size_t size = derivatives.size() / 12;
  for (std::size_t x = 0; x < 12; ++x) {
    const auto moved = [&](double step) {
      QUARTET_T there = q;
      there[x / 3].center[x % 3] += step;
      return block_of(there);
    };
    const std::vector<double> plus = moved(1e-4), minus = moved(-1e-4);
    for (std::size_t i = 0; i < size; ++i) ASSERT_NEAR(derivatives[x * size + i], (plus[i] - minus[i]) / 2e-4, 1e-7);
  }
}

TEST(REFERENCE_ERI, RefusesUnsoundShellsBeforeAnythingElse) {
  QUARTET_T q = quartet_of(nlohmann::json(reference("integrals")["quartets"].back()));
  q[2].shell.l = 6;
  EXPECT_THROW(block_of(q), run_stopped);
}

}  // namespace

#include "hessian/molden.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <cmath>
#include <map>
#include <sstream>

#include "integrals/one_electron.hpp"
#include "linalg/lapack.hpp"
#include "support/molecules.hpp"
#include "support/temporary_folder.hpp"

using namespace zentrix;

namespace {

// A reader of the file by the format's own rules, sharing nothing with the program: shells over normalised primitives, every
// function normalised, components in the format's order.

using POLYNOMIAL_T = std::map<std::array<int, 3>, double>;

struct PRIMITIVE_T {
  double exponent = 0.0;
  double coefficient = 0.0;  ///< of the bare Gaussian
};

struct FUNCTION_T {
  std::array<double, 3> centre = {};
  std::vector<PRIMITIVE_T> primitives;
  POLYNOMIAL_T polynomial;
};

struct ORBITAL_T {
  double energy = 0.0;
  double occupation = 0.0;
  std::string spin;
  std::vector<double> coefficients;
};

struct MOLDEN_FILE_T {
  std::vector<std::array<double, 3>> atoms;
  std::vector<FUNCTION_T> functions;
  std::vector<ORBITAL_T> orbitals;
};

/// Of terms such as "-3xxz".
POLYNOMIAL_T polynomial(const std::string& text) {
  POLYNOMIAL_T result;
  for (std::size_t at = 0; at < text.size();) {
    const double sign = text[at] == '-' ? -1.0 : 1.0;
    if (text[at] == '-' || text[at] == '+') ++at;
    double factor = 0.0;
    for (; std::isdigit(text[at]) != 0; ++at) factor = 10.0 * factor + (text[at] - '0');
    std::array<int, 3> powers = {};
    for (; at < text.size() && text[at] >= 'x'; ++at) ++powers[static_cast<std::size_t>(text[at] - 'x')];
    result[powers] += sign * (factor == 0.0 ? 1.0 : factor);
  }
  return result;
}

/// In the format's order; solid harmonics m = 0, +1, -1, +2, -2, ..., cosines for m > 0, not normalised.
std::vector<std::string> components(int l, bool spherical) {
  static const std::vector<std::vector<std::string>> cartesian = {
      {"1"},
      {"x", "y", "z"},
      {"xx", "yy", "zz", "xy", "xz", "yz"},
      {"xxx", "yyy", "zzz", "xyy", "xxy", "xxz", "xzz", "yzz", "yyz", "xyz"},
      {"xxxx", "yyyy", "zzzz", "xxxy", "xxxz", "yyyx", "yyyz", "zzzx", "zzzy", "xxyy", "xxzz", "yyzz", "xxyz", "yyxz",
       "zzxy"}};
  static const std::vector<std::vector<std::string>> harmonics = {
      {"2zz-xx-yy", "xz", "yz", "xx-yy", "xy"},
      {"2zzz-3xxz-3yyz", "4xzz-xxx-xyy", "4yzz-xxy-yyy", "xxz-yyz", "xyz", "xxx-3xyy", "3xxy-yyy"},
      {"8zzzz-24xxzz-24yyzz+3xxxx+6xxyy+3yyyy", "4xzzz-3xxxz-3xyyz", "4yzzz-3xxyz-3yyyz", "6xxzz-6yyzz-xxxx+yyyy",
       "6xyzz-xxxy-xyyy", "xxxz-3xyyz", "3xxyz-yyyz", "xxxx-6xxyy+yyyy", "xxxy-xyyy"}};
  return spherical && l > 1 ? harmonics.at(static_cast<std::size_t>(l) - 2) : cartesian.at(static_cast<std::size_t>(l));
}

/// int (x - a)^i (x - b)^j exp(-p (x - a)^2 - q (x - b)^2) dx for i, j up to 4 by recursion over the powers.
using LINE_T = std::array<std::array<double, 5>, 5>;
LINE_T line_overlaps(double p, double q, double a, double b) {
  const double s = p + q, pa = q * (b - a) / s, pb = p * (a - b) / s, h = 0.5 / s;
  LINE_T o{};
  o[0][0] = std::sqrt(PI / s) * std::exp(-p * q / s * (a - b) * (a - b));
  for (std::size_t i = 0; i < 5; ++i) {
    if (i > 0) o[i][0] = pa * o[i - 1][0] + (i > 1 ? h * static_cast<double>(i - 1) * o[i - 2][0] : 0.0);
    for (std::size_t j = 1; j < 5; ++j) {
      o[i][j] = pb * o[i][j - 1] + (i > 0 ? h * static_cast<double>(i) * o[i - 1][j - 1] : 0.0) +
                (j > 1 ? h * static_cast<double>(j - 1) * o[i][j - 2] : 0.0);
    }
  }
  return o;
}

double overlap(const FUNCTION_T& f, const FUNCTION_T& g) {
  double result = 0.0;
  for (const PRIMITIVE_T& p : f.primitives) {
    for (const PRIMITIVE_T& q : g.primitives) {
      std::array<LINE_T, 3> lines;
      for (std::size_t k = 0; k < 3; ++k) lines[k] = line_overlaps(p.exponent, q.exponent, f.centre[k], g.centre[k]);
      for (const auto& [m, x] : f.polynomial) {
        for (const auto& [n, y] : g.polynomial) {
          double term = p.coefficient * q.coefficient * x * y;
          for (std::size_t k = 0; k < 3; ++k)
            term *= lines[k][static_cast<std::size_t>(m[k])][static_cast<std::size_t>(n[k])];
          result += term;
        }
      }
    }
  }
  return result;
}

/// Every primitive of every component is normalised by itself, as the format says; a contraction that is not normalised over
/// them stays so and is found out.
void add_shell(MOLDEN_FILE_T& file, const std::array<double, 3>& centre, int l, bool spherical,
               const std::vector<PRIMITIVE_T>& shell) {
  for (const std::string& component : components(l, spherical)) {
    FUNCTION_T f{centre, {}, polynomial(component)};
    for (const PRIMITIVE_T& given : shell) {
      const FUNCTION_T bare{centre, {{given.exponent, 1.0}}, f.polynomial};
      f.primitives.push_back({given.exponent, given.coefficient / std::sqrt(overlap(bare, bare))});
    }
    file.functions.push_back(f);
  }
}

MOLDEN_FILE_T read_molden(const std::string& text, bool spherical) {
  MOLDEN_FILE_T file;
  std::istringstream lines(text);
  std::string line, section;
  std::size_t atom = 0;
  while (std::getline(lines, line)) {
    if (!line.empty() && line[0] == '[') {
      section = line;
      continue;
    }
    std::istringstream words(line);
    std::string word;
    if (section == "[Atoms] AU") {
      std::array<double, 3> r = {};
      int number = 0, z = 0;
      words >> word >> number >> z >> r[0] >> r[1] >> r[2];
      file.atoms.push_back(r);
      EXPECT_EQ(number, static_cast<int>(file.atoms.size()));
    } else if (section == "[GTO]" && words >> word) {
      const std::size_t l = std::string("spdfg").find(word);
      if (l == std::string::npos) {
        atom = std::stoul(word) - 1;
        continue;
      }
      int n = 0;
      words >> n;
      std::vector<PRIMITIVE_T> shell(static_cast<std::size_t>(n));
      for (PRIMITIVE_T& primitive : shell) {
        std::getline(lines, line);
        std::istringstream(line) >> primitive.exponent >> primitive.coefficient;
      }
      add_shell(file, file.atoms.at(atom), static_cast<int>(l), spherical, shell);
    } else if (section == "[MO]" && words >> word) {
      if (word == "Sym=") file.orbitals.emplace_back();
      ORBITAL_T& orbital = file.orbitals.back();
      if (word == "Ene=") words >> orbital.energy;
      if (word == "Spin=") words >> orbital.spin;
      if (word == "Occup=") words >> orbital.occupation;
      if (word.back() == '=') continue;
      EXPECT_EQ(std::stoul(word), orbital.coefficients.size() + 1);
      words >> orbital.coefficients.emplace_back();
    }
  }
  return file;
}

/// Largest deviation of C^T S C from the unit matrix, S computed from the file's own basis.
double defect(const MOLDEN_FILE_T& file) {
  const auto n = static_cast<Eigen::Index>(file.functions.size());
  MATRIX s(n, n);
  MATRIX c(n, static_cast<Eigen::Index>(file.orbitals.size()));
  for (Eigen::Index i = 0; i < n; ++i)
    for (Eigen::Index j = 0; j <= i; ++j)
      s(i, j) = s(j, i) = overlap(file.functions[static_cast<std::size_t>(i)], file.functions[static_cast<std::size_t>(j)]);
  for (Eigen::Index m = 0; m < c.cols(); ++m)
    c.col(m) = Eigen::Map<const VECTOR>(file.orbitals[static_cast<std::size_t>(m)].coefficients.data(), n);
  return (c.transpose() * s * c - MATRIX::Identity(c.cols(), c.cols())).cwiseAbs().maxCoeff();
}

/// Orthonormal orbitals S^(-1/2), which mix every function with every other.
SCF::SCF_RESULT_T orthonormal_state(const MOLECULE_T& molecule, int channels) {
  const MATRIX s = INTEGRALS_1E::one_electron_matrices(molecule).s;
  VECTOR values;
  MATRIX vectors;
  EXPECT_EQ(symmetric_eigen(s, values, vectors), 0);
  SCF::SCF_RESULT_T scf;
  scf.occupation = channels == 1 ? 2.0 : 1.0;
  for (int c = 0; c < channels; ++c) {
    SCF::SPIN_CHANNEL_T channel;
    channel.n_occupied = 3 - c;
    channel.orbitals = vectors * values.cwiseSqrt().cwiseInverse().asDiagonal() * vectors.transpose();
    channel.energies = VECTOR::LinSpaced(s.rows(), -20.0, 3.0);
    scf.channels.push_back(channel);
  }
  return scf;
}

const std::string skew_water = "O 0.1 -0.2 0.1\nH 0.8 0.4 0.3\nH -0.5 0.3 -0.4\n";

}  // namespace

TEST(Molden, OrbitalsAreOrthonormalInTheBasisOfTheFile) {
  for (const bool spherical : {false, true}) {
    for (const char* basis : {"6-31G*", "cc-pVQZ"}) {  // s to d, s to g
      SCOPED_TRACE(std::string(basis) + (spherical ? " spherical" : " Cartesian"));
      const MOLECULE_T molecule = TESTS::sample_molecule(skew_water, basis, {0, 1, spherical});
      const MOLDEN_FILE_T file = read_molden(MOLDEN::orbitals_text(molecule, orthonormal_state(molecule, 1)), spherical);
      ASSERT_EQ(file.functions.size(), static_cast<std::size_t>(molecule.n_basis));
      ASSERT_EQ(file.orbitals.size(), file.functions.size());
      EXPECT_LT(defect(file), 1e-6);
    }
  }
}

TEST(Molden, OrbitalFileOfBothSpins) {
  const MOLECULE_T molecule = TESTS::sample_molecule("O 0 0 0\nH 0 0 0.97\n", "6-31G*", {0, 2, false});
  const std::string text = MOLDEN::orbitals_text(molecule, orthonormal_state(molecule, 2));
  EXPECT_EQ(text.find("[Molden Format]\n[Title]\n Zentrix molecular orbitals\n[Atoms] AU\n"
                      "O      1     8       0.0000000000       0.0000000000       0.0000000000\n"
                      "H      2     1       0.0000000000       0.0000000000       1.8330343409\n"
                      "[GTO]\n     1 0\n  s   6 1.00\n    5.484671660000E+03    "),
            0U)
      << text.substr(0, 400);
  EXPECT_NE(text.find("\n\n[MO]\n Sym= A\n Ene=     -20.0000000000\n Spin= Alpha\n Occup=   1.00000000\n     1    "),
            std::string::npos);
  const MOLDEN_FILE_T file = read_molden(text, false);
  const auto n = static_cast<std::size_t>(molecule.n_basis);
  ASSERT_EQ(file.orbitals.size(), 2 * n);
  std::array<double, 2> electrons = {};
  for (std::size_t m = 0; m < 2 * n; ++m) {
    EXPECT_EQ(file.orbitals[m].spin, m < n ? "Alpha" : "Beta");
    electrons[m / n] += file.orbitals[m].occupation;
  }
  EXPECT_EQ(electrons[0], 3.0);
  EXPECT_EQ(electrons[1], 2.0);
}

TEST(Molden, OrbitalsThatTheFormatCannotHold) {
  const TEMPORARY_FOLDER folder;
  const std::string base = (folder.path() / "run").string();
  MOLECULE_T molecule = TESTS::sample_molecule("He 0 0 0\n", "6-31G*");
  const SCF::SCF_RESULT_T scf = orthonormal_state(molecule, 1);
  std::ostringstream report;
  EXPECT_EQ(MOLDEN::export_orbitals(base, molecule, scf, report), base + "_mo.molden");
  EXPECT_EQ(report.str(), "   Molden MO file written to: " + base + "_mo.molden\n");
  SHELL_T shell = molecule.shells[0];
  shell.l = 1;
  molecule.shells.push_back(shell);
  std::ostringstream more;
  EXPECT_EQ(MOLDEN::export_orbitals(base, molecule, scf, more), base + "_mo_2.molden");
  EXPECT_EQ(more.str().find(" *** WARNING: %export_mo: AO count 5 /= working dimension 2 (file may be malformed).\n"), 0U);
  molecule.shells.back().l = 5;
  std::ostringstream beyond;
  EXPECT_EQ(MOLDEN::export_orbitals(base, molecule, scf, beyond), "");
  EXPECT_EQ(beyond.str(),
            " *** WARNING: %export_mo: basis contains L=5 functions, which the Molden format cannot represent.\n"
            "     Skipping orbital export (no _mo.molden written).\n");
  molecule.shells.pop_back();
  std::ostringstream nowhere;
  EXPECT_EQ(MOLDEN::export_orbitals((folder.path() / "absent/run").string(), molecule, scf, nowhere), "");
  EXPECT_EQ(nowhere.str().find(" *** WARNING: %export_mo: could not open orbital file for writing: "), 0U);
}

TEST(Molden, VibrationalFile) {
  const TEMPORARY_FOLDER folder;
  const MOLECULE_T pair = TESTS::sample_molecule(TESTS::hydrogen_fluoride, "STO-3G");
  VECTOR frequencies(6);
  frequencies << -1000.25, -1e-7, 0.0, 0.0, 0.0, 4000.5;
  MATRIX modes = MATRIX::Identity(6, 6);
  modes(5, 5) = -1.0;
  EXPECT_EQ(MOLDEN::vibrations_text(pair, frequencies, modes)
                .find("[Molden Format]\n[Title]\n Zentrix vibrational analysis\n[Atoms] AU\n"
                      "F      1     9       0.0000000000       0.0000000000       0.0000000000\n"
                      "H      2     1       0.0000000000       0.0000000000       1.7328788563\n"
                      "[FREQ]\n  -1000.2500\n      0.0000\n      0.0000\n      0.0000\n      0.0000\n   4000.5000\n"
                      "[FR-COORD]\n"
                      "F        0.0000000000       0.0000000000       0.0000000000\n"
                      "H        0.0000000000       0.0000000000       1.7328788563\n"
                      "[FR-NORM-COORD]\nvibration 1\n"),
            0U);
  EXPECT_NE(MOLDEN::vibrations_text(pair, frequencies, modes)
                .find("vibration 6\n       0.0000000000       0.0000000000       0.0000000000\n"
                      "       0.0000000000       0.0000000000      -1.0000000000\n"),
            std::string::npos);
  std::ostringstream report;
  const std::string base = (folder.path() / "run").string();
  EXPECT_EQ(MOLDEN::write_vibrations(base, pair, frequencies, modes, report), base + ".molden");
  EXPECT_EQ(report.str(), "   Molden file written to: " + base + ".molden\n");
  EXPECT_EQ(MOLDEN::write_vibrations(base + "/absent", pair, frequencies, modes, report), "");
  EXPECT_NE(report.str().find(" *** WARNING: could not open Molden file for writing: "), std::string::npos);
}

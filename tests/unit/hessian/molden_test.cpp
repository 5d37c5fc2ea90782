#include "hessian/molden.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "integrals/one_electron.hpp"
#include "linalg/lapack.hpp"
#include "support/molecules.hpp"
#include "support/reference.hpp"
#include "support/temporary_folder.hpp"

using namespace zentrix;

namespace {

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

/// Numbers of a line, none when it holds anything else.
std::vector<double> numbers(const std::string& line) {
  std::istringstream words(line);
  std::vector<double> found;
  for (double value = 0.0; words >> value;) found.push_back(value);
  return words.eof() ? found : std::vector<double>();
}

}  // namespace

// Function order, normalisation and contractions of the file (tests/reference/make_molden_references.py).
TEST(Molden, OrbitalFilesMeanWhatAnIndependentProgramReads) {
  const nlohmann::json cases = TESTS::reference("molden");
  for (const auto& entry : cases) {
    const bool spherical = entry["spherical"];
    SCOPED_TRACE(spherical ? "spherical" : "Cartesian");
    const MOLECULE_T molecule =
        TESTS::sample_molecule(TESTS::geometry_of(entry["atoms"]), entry["basis"], {0, 1, spherical});
    std::istringstream lines(MOLDEN::orbitals_text(molecule, orthonormal_state(molecule, 1)));
    double contractions = 0.0;
    int shell = -1;
    std::string line;
    while (std::getline(lines, line) && line != "[MO]") {
      if (line.size() > 5 && line.substr(line.size() - 5) == " 1.00") ++shell;
      const std::vector<double> row = numbers(line);
      if (shell >= 0 && row.size() == 2 && row[1] != 0.0) contractions += std::cos(shell) * row[1] * std::log(row[0]);
    }
    EXPECT_NEAR(contractions, entry["contractions"].get<double>(), 1e-9);
    const Eigen::Index n = entry["functions"];
    MATRIX orbitals = MATRIX::Zero(n, n);
    Eigen::Index rows = 0;
    while (std::getline(lines, line)) {
      const std::vector<double> row = numbers(line);
      if (row.size() != 2) continue;
      ASSERT_EQ(row[0], static_cast<double>(rows % n + 1));
      orbitals(rows % n, rows / n) = row[1];
      ++rows;
    }
    ASSERT_EQ(rows, n * n);
    const VECTOR weight = VECTOR::NullaryExpr(n, [](Eigen::Index k) { return std::cos(static_cast<double>(k)); });
    const double diagonal = weight.dot(orbitals.rowwise().squaredNorm()),
                 all = (orbitals.transpose() * weight).squaredNorm();
    EXPECT_NEAR(diagonal / entry["diagonal"].get<double>(), 1.0, 1e-8);
    EXPECT_NEAR(all / entry["all"].get<double>(), 1.0, 1e-8);
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
  const std::string first = "\n\n[MO]\n Sym= A\n Ene=     -20.0000000000\n Spin= Alpha\n Occup=   1.00000000\n     1    ";
  EXPECT_NE(text.find(first), std::string::npos);
  const auto count = [&](const std::string& word) {
    int found = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++found;
    return found;
  };
  const std::string occupied = "\n Occup=   1.00000000\n", empty = "\n Occup=   0.00000000\n";
  EXPECT_EQ(count("Spin= Alpha" + occupied), 3);
  EXPECT_EQ(count("Spin= Beta" + occupied), 2);
  EXPECT_EQ(count("Spin= Alpha" + empty), molecule.n_basis - 3);
  EXPECT_EQ(count("Spin= Beta" + empty), molecule.n_basis - 2);
}

TEST(Molden, OrbitalsThatTheFormatCannotHold) {
  const TEMPORARY_FOLDER folder;
  const std::string base = (folder.path() / "run").string();
  MOLECULE_T molecule = TESTS::sample_molecule("He 0 0 0\n", "6-31G*");
  const SCF::SCF_RESULT_T scf = orthonormal_state(molecule, 1);
  std::ostringstream report;
  SHELL_T shell = molecule.shells[0];
  shell.l = 1;
  molecule.shells.push_back(shell);
  EXPECT_EQ(MOLDEN::export_orbitals(base, molecule, scf, report), base + "_mo.molden");
  molecule.shells.back().l = 5;
  EXPECT_EQ(MOLDEN::export_orbitals(base, molecule, scf, report), "");
  EXPECT_EQ(report.str(),
            " *** WARNING: %export_mo: AO count 5 /= working dimension 2 (file may be malformed).\n"
            "   Molden MO file written to: " +
                base +
                "_mo.molden\n"
                " *** WARNING: %export_mo: basis contains L=5 functions, which the Molden format cannot represent.\n"
                "     Skipping orbital export (no _mo.molden written).\n");
}

TEST(Molden, VibrationalFile) {
  const MOLECULE_T pair = TESTS::sample_molecule(TESTS::hydrogen_fluoride, "STO-3G");
  const VECTOR frequencies{{-1000.25, -1e-7, 0.0, 0.0, 0.0, 4000.5}};
  MATRIX modes = MATRIX::Identity(6, 6);
  modes(5, 5) = -1.0;
  const std::string text = MOLDEN::vibrations_text(pair, frequencies, modes);
  EXPECT_EQ(text.find("[Molden Format]\n[Title]\n Zentrix vibrational analysis\n[Atoms] AU\n"
                      "F      1     9       0.0000000000       0.0000000000       0.0000000000\n"
                      "H      2     1       0.0000000000       0.0000000000       1.7328788563\n"
                      "[FREQ]\n  -1000.2500\n      0.0000\n      0.0000\n      0.0000\n      0.0000\n   4000.5000\n"
                      "[FR-COORD]\n"
                      "F        0.0000000000       0.0000000000       0.0000000000\n"
                      "H        0.0000000000       0.0000000000       1.7328788563\n"
                      "[FR-NORM-COORD]\nvibration 1\n"),
            0U);
  EXPECT_NE(text.find("vibration 6\n       0.0000000000       0.0000000000       0.0000000000\n"
                      "       0.0000000000       0.0000000000      -1.0000000000\n"),
            std::string::npos);
}

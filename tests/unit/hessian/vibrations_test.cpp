#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "constants/units.hpp"
#include "hessian/symmetry_number.hpp"
#include "hessian/thermochemistry.hpp"
#include "hessian/vibration_report.hpp"
#include "support/printed.hpp"
#include "support/surfaces.hpp"

using namespace zentrix;
using namespace zentrix::VIBRATIONS;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using TESTS::printed;

namespace {

MOLECULE_T turned(const MOLECULE_T& molecule, double angle) {
  const Eigen::Matrix3d turn = Eigen::AngleAxisd(angle, Eigen::Vector3d(1.0, 2.0, -0.5).normalized()).toRotationMatrix();
  VECTOR positions = GRADIENTS::positions_of(molecule);
  for (Eigen::Index a = 0; a < positions.size(); a += 3)
    positions.segment<3>(a) = turn * positions.segment<3>(a) + Eigen::Vector3d(0.5, -1.0, 2.0);
  return GRADIENTS::moved(molecule, positions);
}

/// From the rows of its lower triangle.
MATRIX hessian_from(const nlohmann::json& triangle, Eigen::Index n) {
  MATRIX hessian(n, n);
  std::size_t k = 0;
  for (Eigen::Index i = 0; i < n; ++i)
    for (Eigen::Index j = 0; j <= i; ++j) hessian(i, j) = hessian(j, i) = triangle[k++].get<double>();
  return hessian;
}

/// Analysis of a Hessian without its report.
VIBRATIONS_T vibrations(const MOLECULE_T& molecule, const MATRIX& hessian, const MATRIX* dipole_derivatives = nullptr) {
  std::ostringstream silence;
  VIBRATIONS_T result;
  EXPECT_EQ(analyse_vibrations(molecule, hessian, dipole_derivatives, result, silence), 0);
  return result;
}

/// A spring between two atoms in its harmonic limit: H = k n n^T in the four blocks.
MATRIX spring(const MOLECULE_T& pair, double k) {
  const VECTOR positions = GRADIENTS::positions_of(pair);
  const Eigen::Vector3d n = (positions.tail<3>() - positions.head<3>()).normalized();
  VECTOR stretch(6);
  stretch << -n, n;
  return k * stretch * stretch.transpose();
}

}  // namespace

TEST(Vibrations, FrequenciesAndThermochemistryOfReferenceHessians) {
  const nlohmann::json cases = TESTS::reference("vibrations");
  ASSERT_GE(cases.size(), 15U);
  for (const auto& entry : cases) {
    SCOPED_TRACE(entry["molecule"].get<std::string>() + " " + entry["method"].get<std::string>());
    MOLECULE_T molecule = TESTS::bare_molecule(TESTS::geometry_of(entry["atoms"]));
    molecule.multiplicity = entry["multiplicity"];
    const VIBRATIONS_T found =
        vibrations(molecule, hessian_from(entry["hessian"], 3 * static_cast<Eigen::Index>(molecule.atoms.size())));
    // The reference diagonalises in the space of vibrations only, so its list has no translations and rotations.
    std::vector<double> frequencies;
    for (std::size_t m = 0; m < found.types.size(); ++m) {
      if (found.types[m] != MODE_TYPE::tr) frequencies.push_back(found.frequencies(static_cast<Eigen::Index>(m)));
    }
    const std::vector<double> expected = entry["frequencies"];
    EXPECT_THAT(frequencies, testing::Pointwise(testing::DoubleNear(0.01), expected));
    const nlohmann::json& values = entry["thermo"];
    const auto value = [&](const char* key) { return values[key].get<double>(); };
    const THERMOCHEMISTRY_T thermo = thermochemistry(molecule, found, entry["energy"]);
    const double t = thermo.temperature;
    EXPECT_EQ(thermo.symmetry_number, entry["symmetry_number"].get<int>());
    EXPECT_NEAR(thermo.zero_point_energy, value("ZPE"), 1e-7);
    EXPECT_NEAR(t * thermo.translation.entropy, t * value("S_trans"), 1e-7);
    EXPECT_NEAR(t * thermo.rotation.entropy, t * value("S_rot"), 1e-7);
    EXPECT_NEAR(t * thermo.vibration.entropy, t * value("S_vib"), 2e-7);
    EXPECT_NEAR(t * thermo.quasi_harmonic_entropy, t * value("S_quasi"), 2e-7);
    EXPECT_NEAR(thermo.total().heat_capacity, value("Cv_trans") + value("Cv_rot") + value("Cv_vib"), 1e-9);
    EXPECT_NEAR(thermo.enthalpy(), value("H_tot"), 2e-7);
    EXPECT_NEAR(thermo.gibbs_energy(), value("G_tot"), 3e-7);
    EXPECT_NEAR(thermo.quasi_harmonic_gibbs_energy() - thermo.gibbs_energy(), t * (value("S_vib") - value("S_quasi")), 2e-7);
  }
}

TEST(Vibrations, RigidMotionsAreRemovedWhateverTheOrientation) {
  // A molecule that counts as linear keeps both bends when it is not quite straight, along any direction.
  for (const char* geometry : {"O 0 0 0\nC 0 0 1.16\nO 0 0 2.32\n", "O 0 0 0\nC 1.16 1e-6 0\nO 2.32 0 0\n",
                               "O 0 0 0\nC 0.5188 1.0375 0\nO 1.0375 2.0750 0\n"}) {
    const MOLECULE_T rod = TESTS::bare_molecule(geometry);
    const VECTOR root = root_masses(rod);
    const PROJECTION_T projection = project_rigid_motions(MATRIX::Identity(9, 9), rod, root);
    EXPECT_EQ(projection.n_removed, 5);
    const VECTOR x = GRADIENTS::positions_of(rod);
    const Eigen::Vector3d axis = (x.tail<3>() - x.head<3>()).normalized();
    for (const Eigen::Vector3d& across : {axis.unitOrthogonal(), Eigen::Vector3d(axis.cross(axis.unitOrthogonal()))}) {
      VECTOR bend(9);  // mass-weighted: the end atoms one way, the central one the other, without momentum
      bend << root(0) * across, -2.0 * root(0) * root(0) / root(3) * across, root(6) * across;
      bend.normalize();
      EXPECT_NEAR(bend.dot(projection.matrix * bend), 1.0, 1e-4);
    }
  }
  // A Hessian without rigid-motion symmetry must lose exactly those motions: what is left has no force along them.
  const MOLECULE_T water = turned(TESTS::bare_molecule(TESTS::water), 0.7);
  const PROJECTION_T bent = project_rigid_motions(MATRIX::Identity(9, 9), water, root_masses(water));
  EXPECT_EQ(bent.n_removed, 6);
  EXPECT_FALSE(bent.linear);
  EXPECT_NEAR(bent.matrix.trace(), 3.0, 1e-12);
  EXPECT_LT((bent.matrix * bent.matrix - bent.matrix).norm(), 1e-12);
  const MOLECULE_T atom = TESTS::bare_molecule("Ne 0.3 0.1 -2\n");
  EXPECT_EQ(printed(print_projection, project_rigid_motions(MATRIX::Identity(3, 3), atom, root_masses(atom))),
            "     Projected out 3 TR modes.\n");
}

TEST(Vibrations, TypesCountsAndPrintedBlocks) {
  // Two atoms of mass 1, eigenvectors the coordinates themselves; frequencies -500, -9.9, 0, 9.9, 10.1, 2000 cm^-1.
  const double unit = 1.0 / 219474.63;
  VECTOR values(6);
  int k = 0;
  for (const double f : {-500.0, -9.9, 0.0, 9.9, 10.1, 2000.0}) values(k++) = f * std::abs(f) * unit * unit;
  const MATRIX dipole = MATRIX::Ones(3, 6) / std::sqrt(3.0);
  const VIBRATIONS_T found = vibrations_of(values, MATRIX::Identity(6, 6), VECTOR::Constant(6, 10.0), &dipole);
  const std::vector<MODE_TYPE> types = {MODE_TYPE::imaginary, MODE_TYPE::tr,        MODE_TYPE::tr,
                                        MODE_TYPE::tr,        MODE_TYPE::vibration, MODE_TYPE::vibration};
  EXPECT_EQ(found.types, types);
  EXPECT_NEAR(found.zero_point_wavenumber(), 0.5 * (10.1 + 2000.0), 1e-9);
  EXPECT_NEAR(found.zero_point_energy(), 0.5 * (10.1 + 2000.0) * unit, 1e-15);
  EXPECT_NEAR(found.intensities(0), 0.01 * 1777100.0, 1e-6);
  EXPECT_EQ(found.intensities(3), 0.0);
  const std::string infrared = printed(print_vibrations, found);
  for (const char* text :
       {"   Vibrational Frequency Analysis\n   ======================================================\n\n"
        "   Mode   Freq (cm^-1)   IR int (km/mol)   Type\n   ----   -----------   ---------------   ------\n"
        "      1     -500.0000      17771.0000   imag\n      2       -9.9000                   TR\n"
        "      3        0.0000                   TR\n",
        "      5       10.1000      17771.0000   vib\n",
        "\n   Vibrational modes: 2\n   TR modes:          4\n\n   ZPVE:  ", "\n   Normal Modes (Cartesian displacements):\n",
        "   Mode 1:  -500.0000 cm^-1,  IR: 17771.0000 km/mol\n"
        "     Atom       dx         dy         dz\n       1    1.000000   0.000000   0.000000\n",
        "   Mode 5:  10.1000 cm^-1,  IR: "}) {
    EXPECT_THAT(infrared, HasSubstr(text));
  }
  EXPECT_THAT(infrared, Not(HasSubstr("Mode 4:"))) << "a mode below 10 cm^-1 is none";
  const auto verdict = [](const VECTOR& frequencies, bool converged) {
    return printed(print_saddle_verdict, frequencies, converged);
  };
  const std::string imaginary = "   Imaginary modes: 1 (500.00i cm^-1).  ";
  EXPECT_EQ(verdict(found.frequencies, true), imaginary + "Transition state confirmed.\n");
  EXPECT_EQ(verdict(found.frequencies, false), imaginary + "Not confirmed: an SCF or the search did not converge.\n");
  EXPECT_EQ(verdict(found.frequencies.tail(5), true),
            "   *** WARNING: 0 imaginary modes; a transition state has exactly one.\n");
}

TEST(Vibrations, FrequencyAndIntensityOfPointChargesOnASpring) {
  // Charges +q and -q, force constant 0.5: omega = sqrt(0.5/mu), d mu/dQ = q/sqrt(mu) along the bond.
  const double q = 0.4;
  const MOLECULE_T pair = turned(TESTS::bare_molecule("H 0 0 0\nF 0 0 0.92\n"), 1.1);
  MATRIX dipole(3, 6);
  dipole << q * MATRIX::Identity(3, 3), -q * MATRIX::Identity(3, 3);
  const VIBRATIONS_T found = vibrations(pair, spring(pair, 0.5), &dipole);
  const double reduced = 1.00794 * 18.9984 / (1.00794 + 18.9984) * ELECTRON_MASSES_PER_U;
  EXPECT_NEAR(found.frequencies(5), std::sqrt(0.5 / reduced) * WAVENUMBER_PER_HARTREE, 1e-6);
  EXPECT_EQ(found.count(MODE_TYPE::tr), 5);
  EXPECT_NEAR(found.intensities(5), q * q / reduced * KM_MOL_PER_AU, 1e-6);
  EXPECT_EQ(found.intensities.head(5).norm(), 0.0);
}

TEST(Vibrations, QuasiHarmonicEntropyRaisesSoftModes) {
  const MOLECULE_T pair = TESTS::bare_molecule("H 0 0 0\nH 0 0 0.74\n");
  const auto with_mode = [&](double wavenumber) {
    const VECTOR values = VECTOR::Constant(6, std::pow(wavenumber / 219474.6313632, 2));
    return thermochemistry(pair, vibrations_of(values, MATRIX::Identity(6, 6), VECTOR::Ones(6), nullptr), 0.0);
  };
  EXPECT_NEAR(with_mode(20.0).quasi_harmonic_entropy, with_mode(100.0).vibration.entropy, 1e-12);
  // Five of six modes below the limit of rigid motions are these, one is a vibration.
  EXPECT_EQ(with_mode(5.0).n_soft, 1);
  EXPECT_NEAR(with_mode(5.0).quasi_harmonic_entropy, with_mode(100.0).vibration.entropy / 6.0, 1e-12);
  EXPECT_NEAR(with_mode(150.0).quasi_harmonic_entropy, with_mode(150.0).vibration.entropy, 1e-15);
}

TEST(Vibrations, HessianIsPrintedInBlocksOfSixColumns) {
  MATRIX hessian = MATRIX::Zero(9, 9);
  hessian(8, 6) = -0.25;
  const std::string text = printed(print_hessian, hessian);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2 + 10 + 1 + 10 + 1) << text;
  EXPECT_THAT(text, StartsWith("\n   Cartesian Hessian (Ha/Bohr^2):\n                     1 "));
  for (const char* part :
       {"             6\n", "\n\n                     7 ", "\n       9   -0.25000000    0.00000000    0.00000000\n"})
    EXPECT_THAT(text, HasSubstr(part));
}

TEST(SymmetryNumber, OfKnownShapes) {
  const std::pair<const char*, int> cases[] = {
      {"He 0 0 0\n", 1},
      {"H 0 0 0\nF 0 0 0.9\n", 1},
      {"O 0 0 1.16\nC 0 0 0\nO 0 0 -1.16\n", 2},
      {"S 0 0 0\nF 1.56 0 0\nF -1.56 0 0\nF 0 1.56 0\nF 0 -1.56 0\nF 0 0 1.56\nF 0 0 -1.56\n", 24},
      // one bond stretched: C4v; a hair's breadth only: still octahedral
      {"S 0 0 0\nF 1.70 0 0\nF -1.56 0 0\nF 0 1.56 0\nF 0 -1.56 0\nF 0 0 1.56\nF 0 0 -1.56\n", 4},
      {"S 0 0 0\nF 1.562 0 0\nF -1.56 0 0\nF 0 1.56 0\nF 0 -1.56 0\nF 0 0 1.56\nF 0 0 -1.56\n", 24},
      // ethane, staggered and eclipsed
      {"C 0 0 0.765\nC 0 0 -0.765\nH 1.02 0 1.16\nH -0.51 0.883 1.16\nH -0.51 -0.883 1.16\n"
       "H -1.02 0 -1.16\nH 0.51 0.883 -1.16\nH 0.51 -0.883 -1.16\n",
       6},
      // allene, ethene, chlorofluoromethanol-like chirality
      {"C 0 0 0\nC 0 0 1.31\nC 0 0 -1.31\nH 0.93 0 1.87\nH -0.93 0 1.87\nH 0 0.93 -1.87\nH 0 -0.93 -1.87\n", 4},
      {"C 0 0 0.66\nC 0 0 -0.66\nH 0.92 0 1.23\nH -0.92 0 1.23\nH 0.92 0 -1.23\nH -0.92 0 -1.23\n", 4},
      {"C 0 0 0\nH 0.63 0.63 0.63\nF 0.78 -0.78 -0.78\nCl -1.02 1.02 -1.02\nBr -1.12 -1.12 1.12\n", 1},
      // hardly bent, with the central atom near the centre; a shallow V whose atoms are a little off
      {"C 0 0 0.05\nO 1.154 0 -0.1\nO -1.154 0 -0.1\n", 2},
      {"C 0 0 0.002\nO 1.154 0 -0.002\nO -1.154 0 -0.002\n", 2},
      {"He 0 0.003 0\nHe 1.5 0 0.3\nHe -1.5 0 0.3\nHe 3 0.002 0.6\nHe -3 0 0.602\nHe 4.5 0 0.9\nHe -4.5 0.003 0.9\n"
       "He 6 0 1.2\nHe -6 0.003 1.2\nHe 7.5 -0.003 1.5\nHe -7.5 0 1.5\n",
       2},
      // two equal atoms far from a centre heavy enough that only C2 is left
      {"O 0.7 0 -0.05\nO -0.7 0 -0.05\nH 0.9 0.75 0.45\nH -0.9 -0.75 0.45\n", 2}};
  for (const auto& [geometry, number] : cases) {
    EXPECT_EQ(rotational_symmetry_number(TESTS::bare_molecule(geometry)), number) << geometry;
    EXPECT_EQ(rotational_symmetry_number(turned(TESTS::bare_molecule(geometry), 0.8)), number) << geometry;
  }
}

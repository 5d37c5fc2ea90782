#pragma once

#include <array>
#include <iosfwd>
#include <vector>

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// From a Cartesian Hessian to harmonic frequencies and normal modes (E. B. Wilson, J. C. Decius, P. C. Cross, Molecular
// Vibrations, 1955). Every producer of a Hessian goes through analyse_vibrations. Atomic units inside (hartree, bohr,
// electron mass); Hessians are 3N x 3N, atom by atom, x, y, z; masses are average atomic weights.

namespace zentrix::VIBRATIONS {

/// Modes closer to zero than this (cm^-1) count as translation or rotation.
inline constexpr double TR_THRESHOLD = 10.0;

enum class MODE_TYPE { tr, imaginary, vibration };

struct INERTIA_T {
  double mass = 0.0;                   ///< electron masses
  Eigen::Vector3d centre;              ///< of mass, bohr
  std::array<double, 3> moments = {};  ///< principal, ascending, electron mass bohr^2
  bool linear = false;                 ///< largest moment positive, smallest below 1e-6 of it
};
INERTIA_T inertia_of(const MOLECULE_T& molecule);

/// Square root of every coordinate's mass in electron masses, 3N.
VECTOR root_masses(const MOLECULE_T& molecule);

/// H(i,j) / (s(i) s(j)).
MATRIX mass_weighted(const MATRIX& hessian, const VECTOR& root_mass);

struct PROJECTION_T {
  MATRIX matrix;      ///< P H P
  int n_removed = 0;  ///< rank taken away: 6, 5 for a linear molecule, 3 for an atom
  bool linear = false;
};
/// Takes translations and rotations (about the Cartesian axes through the centre of mass) out of a mass-weighted Hessian.
PROJECTION_T project_rigid_motions(const MATRIX& weighted, const MOLECULE_T& molecule, const VECTOR& root_mass);

struct VIBRATIONS_T {
  VECTOR eigenvalues;            ///< of the projected mass-weighted Hessian, ascending, hartree/(bohr^2 m_e)
  VECTOR frequencies;            ///< cm^-1, imaginary ones negative
  std::vector<MODE_TYPE> types;  ///< one per mode
  MATRIX modes;                  ///< columns: Cartesian displacements of unit length
  VECTOR intensities;            ///< km/mol, 0 for TR modes; empty without dipole derivatives
  int count(MODE_TYPE type) const;
  /// Half the sum of the frequencies of type vibration, hartree and cm^-1.
  double zero_point_energy() const;
  double zero_point_wavenumber() const;
};
/// Frequencies and modes of the eigenvectors (columns) of a mass-weighted Hessian. `dipole_derivatives`: 3 x 3N, e; null
/// where there are none.
VIBRATIONS_T vibrations_of(const VECTOR& eigenvalues, const MATRIX& eigenvectors, const VECTOR& root_mass,
                           const MATRIX* dipole_derivatives);

/// The whole analysis with its printed blocks: Hessian, projection, diagonalisation, frequency table, zero-point energy,
/// normal modes. Non-zero after its line when the diagonalisation failed.
[[nodiscard]] int analyse_vibrations(const MOLECULE_T& molecule, const MATRIX& hessian, const MATRIX* dipole_derivatives,
                                     VIBRATIONS_T& vibrations, std::ostream& report);

}  // namespace zentrix::VIBRATIONS

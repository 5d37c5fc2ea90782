#pragma once

#include <array>
#include <iosfwd>
#include <vector>

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"
#include "scf/scf.hpp"

namespace zentrix::PROPERTIES {

/// Mulliken's gross populations (J. Chem. Phys. 23 (1955) 1833): population of an atom = sum of (P S)_mm over its functions.
struct POPULATIONS_T {
  std::vector<double> population;  ///< electrons, per atom
  std::vector<double> charge;      ///< nuclear charge of the atom record less the population
};
POPULATIONS_T mulliken(const MOLECULE_T& molecule, const MATRIX& density, const MATRIX& overlap);

/// Electric dipole moment about the coordinate origin, e bohr.
struct DIPOLE_T {
  std::array<double, 3> nuclear = {};
  std::array<double, 3> electronic = {};
  std::array<double, 3> total() const;
  double magnitude() const;
};
DIPOLE_T dipole_moment(const MOLECULE_T& molecule, const MATRIX& density);

void print_populations(const MOLECULE_T& molecule, const POPULATIONS_T& populations, std::ostream& report);
void print_dipole(const DIPOLE_T& dipole, std::ostream& report);
/// Orbital energies and coefficients of all channels, six orbitals a block.
void print_orbitals(const MOLECULE_T& molecule, const SCF::SCF_RESULT_T& scf, std::ostream& report);

}  // namespace zentrix::PROPERTIES

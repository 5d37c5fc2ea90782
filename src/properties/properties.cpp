#include "properties/properties.hpp"

#include <cmath>

#include "integrals/one_electron.hpp"

namespace zentrix::PROPERTIES {

POPULATIONS_T mulliken(const MOLECULE_T& molecule, const MATRIX& density, const MATRIX& overlap) {
  POPULATIONS_T result;
  result.population.assign(molecule.atoms.size(), 0.0);
  const VECTOR gross = (density * overlap).diagonal();
  for (const SHELL_T& shell : molecule.shells) {
    result.population[static_cast<std::size_t>(shell.atom)] += gross.segment(shell.first, shell.nfunc).sum();
  }
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    result.charge.push_back(molecule.atoms[a].charge - result.population[a]);
  }
  return result;
}

std::array<double, 3> DIPOLE_T::total() const {
  return {nuclear[0] + electronic[0], nuclear[1] + electronic[1], nuclear[2] + electronic[2]};
}

double DIPOLE_T::magnitude() const {
  const auto mu = total();
  return std::hypot(mu[0], mu[1], mu[2]);
}

DIPOLE_T dipole_moment(const MOLECULE_T& molecule, const MATRIX& density) {
  DIPOLE_T result;
  const std::array<MATRIX, 3> integrals = INTEGRALS_1E::dipole(molecule);
  for (std::size_t k = 0; k < 3; ++k) {
    for (const ATOM_T& atom : molecule.atoms) result.nuclear[k] += atom.charge * atom.position[k];
    result.electronic[k] = -density.cwiseProduct(integrals[k]).sum();
  }
  return result;
}

}  // namespace zentrix::PROPERTIES

#include "gradients/energy_surface.hpp"

namespace zentrix::GRADIENTS {

MOLECULE_T moved(const MOLECULE_T& molecule, const CARTESIAN_T& positions) {
  MOLECULE_T result = molecule;
  for (std::size_t a = 0; a < result.atoms.size(); ++a)
    for (std::size_t k = 0; k < 3; ++k) result.atoms[a].position[k] = positions(static_cast<Eigen::Index>(3 * a + k));
  return result;
}

CARTESIAN_T positions_of(const MOLECULE_T& molecule) {
  CARTESIAN_T positions(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a)
    for (std::size_t k = 0; k < 3; ++k) positions(static_cast<Eigen::Index>(3 * a + k)) = molecule.atoms[a].position[k];
  return positions;
}

}  // namespace zentrix::GRADIENTS

#pragma once

#include "molecule/types.hpp"

namespace zentrix::VIBRATIONS {

/// Number of proper rotations that map the molecule onto itself (order of the rotational subgroup of its point group): 1 for
/// an atom, 2 or 1 for a linear molecule with or without a centre of inversion. Atoms of one element count as equal where a
/// rotation brings them within 0.03 bohr of each other; the tolerance shrinks until the rotations found form a group.
int rotational_symmetry_number(const MOLECULE_T& molecule);

}  // namespace zentrix::VIBRATIONS

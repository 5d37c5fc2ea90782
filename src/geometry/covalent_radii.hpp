#pragma once

namespace zentrix::INTERNAL_COORDS {

/// Covalent radius of element z in bohr (B. Cordero et al., Dalton Trans. (2008) 2832; sp3 carbon, low-spin Mn, Fe and Co);
/// 1.5 angstrom outside Z = 1 .. 86.
double covalent_radius(int z);

}  // namespace zentrix::INTERNAL_COORDS

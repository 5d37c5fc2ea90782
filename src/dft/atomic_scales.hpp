#pragma once

// Sizes of atoms as the grid needs them. Elements beyond krypton take the defaults.

namespace zentrix::DFT_GRID {

/// Bragg-Slater radius in bohr (J. C. Slater, J. Chem. Phys. 41 (1964) 3199); 0.35 angstrom for hydrogen (A. D. Becke,
/// J. Chem. Phys. 88 (1988) 2547); 1.5 angstrom beyond Z = 36.
double bragg_slater_radius(int z);

/// Scale xi of the Treutler-Ahlrichs map in bohr (J. Chem. Phys. 102 (1995) 346, table I); 1 beyond Z = 36.
double treutler_ahlrichs_scale(int z);

/// Scale of the logarithmic map in bohr (M. E. Mura, P. J. Knowles, J. Chem. Phys. 104 (1996) 9848): 7 for the alkali and
/// alkaline-earth metals Li, Be, Na, Mg, K, Ca, Rb, Sr, otherwise 5.
double mura_knowles_scale(int z);

}  // namespace zentrix::DFT_GRID

#pragma once

namespace zentrix::DFT {

/// Exchange-correlation components: exchange in the 100s, correlation in the 200s, meta-GGA in the 300s.
enum class XC_COMPONENT : int {
  slater_x = 101,  ///< Dirac, Proc. Camb. Phil. Soc. 26 (1930) 376
  b88_x = 102,     ///< Becke, Phys. Rev. A 38 (1988) 3098
  pbe_x = 103,     ///< Perdew, Burke, Ernzerhof, Phys. Rev. Lett. 77 (1996) 3865
  vwn5_c = 201,    ///< Vosko, Wilk, Nusair, Can. J. Phys. 58 (1980) 1200, fit V
  lyp_c = 203,     ///< Lee, Yang, Parr, Phys. Rev. B 37 (1988) 785
  pbe_c = 204,     ///< Perdew, Burke, Ernzerhof (1996), on the local part of Perdew and Wang (1992)
  vwn3_c = 205,    ///< Vosko, Wilk, Nusair (1980), fit of the random-phase approximation
  p86_c = 206,     ///< Perdew, Phys. Rev. B 33 (1986) 8822
  pw91_c = 207,    ///< Perdew et al., Phys. Rev. B 46 (1992) 6671
  r2scan_x = 301,  ///< Furness et al., J. Phys. Chem. Lett. 11 (2020) 8208
  r2scan_c = 302   ///< the same
};

}  // namespace zentrix::DFT

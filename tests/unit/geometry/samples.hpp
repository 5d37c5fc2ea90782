#pragma once

#include <string>
#include <utility>
#include <vector>

#include "gradients/energy_surface.hpp"
#include "support/molecules.hpp"

// Molecules of the geometry tests: lines "symbol x y z" in angstrom.

namespace zentrix::TESTS {

struct STRUCTURE_T {
  std::vector<int> z;
  VECTOR x;  // bohr
};

inline STRUCTURE_T structure(const std::string& lines) {
  STRUCTURE_T result;
  const MOLECULE_T molecule = bare_molecule(lines);
  for (const ATOM_T& atom : molecule.atoms) result.z.push_back(atom.z);
  result.x = GRADIENTS::positions_of(molecule);
  return result;
}

inline const std::string carbon_dioxide = "C 0 0 0\nO 0 0 1.16\nO 0 0 -1.16\n";
inline const std::string acetylene = "C 0 0 0.6\nC 0 0 -0.6\nH 0 0 1.66\nH 0 0 -1.66\n";
inline const std::string allene =
    "C 0 0 0\nC 0 0 1.31\nC 0 0 -1.31\nH 0 0.93 1.87\nH 0 -0.93 1.87\nH 0.93 0 -1.87\nH -0.93 0 -1.87\n";
inline const std::string butyne =
    "C 0 0 0.6\nC 0 0 -0.6\nC 0 0 2.06\nC 0 0 -2.06\nH 1.02 0 2.45\nH -0.51 0.883 2.45\nH -0.51 -0.883 2.45\n"
    "H -1.02 0 -2.45\nH 0.51 0.883 -2.45\nH 0.51 -0.883 -2.45\n";
inline const std::string ketene = "C 0 0 0\nC 0 0 1.31\nO 0 0 2.47\nH 0 0.94 -0.53\nH 0 -0.94 -0.53\n";
inline const std::string boron_trifluoride = "B 0 0 0\nF 1.31 0 0\nF -0.655 1.1345 0\nF -0.655 -1.1345 0\n";
inline const std::string hydrogen_peroxide = "O 0 0.70 0\nO 0 -0.70 0\nH 0.80 0.90 0.50\nH -0.80 -0.90 0.50\n";
inline const std::string benzene =
    "C 1.39 0 0\nC 0.695 1.2038 0\nC -0.695 1.2038 0\nC -1.39 0 0\nC -0.695 -1.2038 0\nC 0.695 -1.2038 0\n"
    "H 2.47 0 0\nH 1.235 2.1391 0\nH -1.235 2.1391 0\nH -2.47 0 0\nH -1.235 -2.1391 0\nH 1.235 -2.1391 0\n";
inline const std::string cubane =
    "C 0.78 0.78 0.78\nC 0.78 0.78 -0.78\nC 0.78 -0.78 0.78\nC 0.78 -0.78 -0.78\nC -0.78 0.78 0.78\nC -0.78 0.78 -0.78\n"
    "C -0.78 -0.78 0.78\nC -0.78 -0.78 -0.78\nH 1.41 1.41 1.41\nH 1.41 1.41 -1.41\nH 1.41 -1.41 1.41\nH 1.41 -1.41 -1.41\n"
    "H -1.41 1.41 1.41\nH -1.41 1.41 -1.41\nH -1.41 -1.41 1.41\nH -1.41 -1.41 -1.41\n";
inline const std::string phosphorus = "P 0.78 0.78 0.78\nP -0.78 -0.78 0.78\nP -0.78 0.78 -0.78\nP 0.78 -0.78 -0.78\n";
inline const std::string sulfur_hexafluoride =
    "S 0 0 0\nF 1.56 0 0\nF -1.56 0 0\nF 0 1.56 0\nF 0 -1.56 0\nF 0 0 1.56\nF 0 0 -1.56\n";
inline const std::string xenon_tetrafluoride = "Xe 0 0 0\nF 1.95 0 0\nF -1.95 0 0\nF 0 1.95 0\nF 0 -1.95 0\n";
inline const std::string chromium_hexacarbonyl =
    "Cr 0 0 0\nC 1.91 0 0\nC -1.91 0 0\nC 0 1.91 0\nC 0 -1.91 0\nC 0 0 1.91\nC 0 0 -1.91\nO 3.05 0 0\nO -3.05 0 0\n"
    "O 0 3.05 0\nO 0 -3.05 0\nO 0 0 3.05\nO 0 0 -3.05\n";
inline const std::string water_dimer =
    "O -1.551 -0.115 0\nH -1.934 0.763 0\nH -0.600 0.041 0\nO 1.351 0.111 0\nH 1.680 -0.374 -0.759\nH 1.680 -0.374 0.759\n";
inline const std::string ammonium_chloride_far =
    "N 0 0 0\nH 0.59 0.59 0.59\nH -0.59 -0.59 0.59\nH -0.59 0.59 -0.59\nH 0.59 -0.59 -0.59\nCl 2.6 2.4 2.2\n";
inline const std::string three_neon = "Ne 0 0 0\nNe 3.1 0.2 0\nNe 1.4 2.9 0.3\n";
inline const std::string cyclopropene =
    "C 0 0.86 0\nC 0.65 -0.49 0\nC -0.65 -0.49 0\nH 0 1.46 0.91\nH 0 1.46 -0.91\n"
    "H 1.57 -1.04 0\nH -1.57 -1.04 0\n";

inline std::vector<std::pair<std::string, std::string>> structures() {
  return {{"water", water},
          {"CO2", carbon_dioxide},
          {"acetylene", acetylene},
          {"allene", allene},
          {"2-butyne", butyne},
          {"ketene", ketene},
          {"BF3", boron_trifluoride},
          {"formaldehyde", formaldehyde},
          {"ammonia", ammonia},
          {"HOOH", hydrogen_peroxide},
          {"benzene", benzene},
          {"cubane", cubane},
          {"P4", phosphorus},
          {"SF6", sulfur_hexafluoride},
          {"XeF4", xenon_tetrafluoride},
          {"Cr(CO)6", chromium_hexacarbonyl},
          {"water dimer", water_dimer},
          {"NH4+ Cl-", ammonium_chloride_far},
          {"three neon atoms", three_neon},
          {"cyclopropene", cyclopropene},
          {"caffeine", caffeine}};
}

}  // namespace zentrix::TESTS

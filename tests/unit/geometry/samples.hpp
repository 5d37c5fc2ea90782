#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "geometry/internal_coords.hpp"
#include "gradients/energy_surface.hpp"
#include "support/molecules.hpp"

// Molecules of the geometry tests: lines "symbol x y z" in angstrom.

namespace zentrix::TESTS {

inline const std::map<std::string, std::string> samples = {
    {"water", water},
    {"CO2", "C 0 0 0\nO 0 0 1.16\nO 0 0 -1.16\n"},
    {"acetylene", "C 0 0 0.6\nC 0 0 -0.6\nH 0 0 1.66\nH 0 0 -1.66\n"},
    {"allene", "C 0 0 0\nC 0 0 1.31\nC 0 0 -1.31\nH 0 0.93 1.87\nH 0 -0.93 1.87\nH 0.93 0 -1.87\nH -0.93 0 -1.87\n"},
    {"2-butyne",
     "C 0 0 0.6\nC 0 0 -0.6\nC 0 0 2.06\nC 0 0 -2.06\nH 1.02 0 2.45\nH -0.51 0.883 2.45\nH -0.51 -0.883 2.45\n"
     "H -1.02 0 -2.45\nH 0.51 0.883 -2.45\nH 0.51 -0.883 -2.45\n"},
    {"ketene", "C 0 0 0\nC 0 0 1.31\nO 0 0 2.47\nH 0 0.94 -0.53\nH 0 -0.94 -0.53\n"},
    {"BF3", "B 0 0 0\nF 1.31 0 0\nF -0.655 1.1345 0\nF -0.655 -1.1345 0\n"},
    {"formaldehyde", formaldehyde},
    {"ammonia", ammonia},
    {"HOOH", "O 0 0.70 0\nO 0 -0.70 0\nH 0.80 0.90 0.50\nH -0.80 -0.90 0.50\n"},
    {"benzene",
     "C 1.39 0 0\nC 0.695 1.2038 0\nC -0.695 1.2038 0\nC -1.39 0 0\nC -0.695 -1.2038 0\nC 0.695 -1.2038 0\n"
     "H 2.47 0 0\nH 1.235 2.1391 0\nH -1.235 2.1391 0\nH -2.47 0 0\nH -1.235 -2.1391 0\nH 1.235 -2.1391 0\n"},
    {"cubane",
     "C 0.78 0.78 0.78\nC 0.78 0.78 -0.78\nC 0.78 -0.78 0.78\nC 0.78 -0.78 -0.78\nC -0.78 0.78 0.78\nC -0.78 0.78 -0.78\n"
     "C -0.78 -0.78 0.78\nC -0.78 -0.78 -0.78\nH 1.41 1.41 1.41\nH 1.41 1.41 -1.41\nH 1.41 -1.41 1.41\nH 1.41 -1.41 -1.41\n"
     "H -1.41 1.41 1.41\nH -1.41 1.41 -1.41\nH -1.41 -1.41 1.41\nH -1.41 -1.41 -1.41\n"},
    {"P4", "P 0.78 0.78 0.78\nP -0.78 -0.78 0.78\nP -0.78 0.78 -0.78\nP 0.78 -0.78 -0.78\n"},
    {"SF6", "S 0 0 0\nF 1.56 0 0\nF -1.56 0 0\nF 0 1.56 0\nF 0 -1.56 0\nF 0 0 1.56\nF 0 0 -1.56\n"},
    {"XeF4", "Xe 0 0 0\nF 1.95 0 0\nF -1.95 0 0\nF 0 1.95 0\nF 0 -1.95 0\n"},
    {"Cr(CO)6",
     "Cr 0 0 0\nC 1.91 0 0\nC -1.91 0 0\nC 0 1.91 0\nC 0 -1.91 0\nC 0 0 1.91\nC 0 0 -1.91\nO 3.05 0 0\nO -3.05 0 0\n"
     "O 0 3.05 0\nO 0 -3.05 0\nO 0 0 3.05\nO 0 0 -3.05\n"},
    {"water dimer",
     "O -1.551 -0.115 0\nH -1.934 0.763 0\nH -0.600 0.041 0\nO 1.351 0.111 0\nH 1.680 -0.374 -0.759\nH 1.680 -0.374 "
     "0.759\n"},
    {"NH4+ Cl-", "N 0 0 0\nH 0.59 0.59 0.59\nH -0.59 -0.59 0.59\nH -0.59 0.59 -0.59\nH 0.59 -0.59 -0.59\nCl 2.6 2.4 2.2\n"},
    {"three neon atoms", "Ne 0 0 0\nNe 3.1 0.2 0\nNe 1.4 2.9 0.3\n"},
    {"cyclopropene",
     "C 0 0.86 0\nC 0.65 -0.49 0\nC -0.65 -0.49 0\nH 0 1.46 0.91\nH 0 1.46 -0.91\n"
     "H 1.57 -1.04 0\nH -1.57 -1.04 0\n"},
    {"caffeine", caffeine},
};

struct STRUCTURE_T {
  MOLECULE_T molecule;
  std::vector<int> z;
  VECTOR x;  // bohr
};

inline STRUCTURE_T structure(const std::string& lines) {
  STRUCTURE_T result;
  result.molecule = bare_molecule(lines);
  for (const ATOM_T& atom : result.molecule.atoms) result.z.push_back(atom.z);
  result.x = GRADIENTS::positions_of(result.molecule);
  return result;
}

inline STRUCTURE_T sample(const std::string& name) { return structure(samples.at(name)); }

inline INTERNAL_COORDS::COORDINATE_SET_T coordinates_of(const STRUCTURE_T& molecule) {
  return INTERNAL_COORDS::generate_coordinates(molecule.z, molecule.x);
}

/// Numbers between -length and length.
inline VECTOR random_vector(Eigen::Index size, double length, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(-length, length);
  return VECTOR::NullaryExpr(size, [&] { return uniform(generator); });
}

inline double distance(const VECTOR& x, Eigen::Index i, Eigen::Index j) {
  return (x.segment<3>(3 * i) - x.segment<3>(3 * j)).norm();
}

}  // namespace zentrix::TESTS

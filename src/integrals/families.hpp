#pragma once

#include <array>
#include <vector>

#include "molecule/types.hpp"

// Families of primitive shells: everything on one centre that shares one exponent.
//
// An SP shell, or several contracted functions over one set of primitives, repeats the same Gaussian exp(-alpha r^2) in
// several shells. Work that depends on the primitive alone (Hermite expansions, Boys functions) is done once per family.

namespace zentrix::INTEGRALS_2E {

/// One use of a family's primitive by a contracted shell.
struct FAMILY_MEMBER_T {
  int shell = 0;             ///< index in MOLECULE_T::shells
  int l = 0;                 ///< its angular momentum
  int first = 0;             ///< its first bare Cartesian component
  double coefficient = 0.0;  ///< coefficient of the bare primitive in that shell
};

/// Members of equal angular momentum: positions begin .. end - 1 among the members.
struct FAMILY_RUN_T {
  int l = 0;
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct FAMILY_T {
  int atom = 0;
  std::array<double, 3> center = {};     ///< bohr
  double exponent = 0.0;                 ///< bohr^-2
  int l_max = 0;                         ///< highest angular momentum among the members
  std::vector<FAMILY_MEMBER_T> members;  ///< by angular momentum, ascending
  std::vector<FAMILY_RUN_T> runs;
};

/// The families of a molecule, ordered by atom, with every non-zero primitive of every shell in exactly one of them.
std::vector<FAMILY_T> make_families(const MOLECULE_T& molecule);

}  // namespace zentrix::INTEGRALS_2E

#include "integrals/families.hpp"

#include <algorithm>

#include "integrals/cartesian.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// The family of `exponent` among those from `begin` on (the families of one atom), made when there is none yet.
FAMILY_T& family_of(std::vector<FAMILY_T>& families, std::size_t begin, double exponent) {
  for (std::size_t f = begin; f < families.size(); ++f)
    if (families[f].exponent == exponent) return families[f];
  families.emplace_back().exponent = exponent;
  return families.back();
}

}  // namespace

std::vector<FAMILY_T> make_families(const MOLECULE_T& molecule) {
  const std::vector<int> offsets = cartesian_offsets(molecule);
  std::vector<FAMILY_T> families;
  for (int atom = 0; atom < static_cast<int>(molecule.atoms.size()); ++atom) {
    const std::size_t begin = families.size();
    for (std::size_t s = 0; s < molecule.shells.size(); ++s) {
      const SHELL_T& shell = molecule.shells[s];
      if (shell.atom != atom) continue;
      for (int k = 0; k < shell.nprim; ++k) {
        if (shell.coeff[k] == 0.0) continue;
        FAMILY_T& family = family_of(families, begin, shell.alpha[k]);
        family.atom = atom;
        family.center = molecule.atoms[atom].position;
        family.l_max = std::max(family.l_max, shell.l);
        family.members.push_back({static_cast<int>(s), shell.l, offsets[s], shell.coeff[k]});
      }
    }
    // Members in order of l: fold and unfold handle runs of equal l together.
    for (std::size_t f = begin; f < families.size(); ++f)
      std::stable_sort(families[f].members.begin(), families[f].members.end(),
                       [](const FAMILY_MEMBER_T& a, const FAMILY_MEMBER_T& b) { return a.l < b.l; });
  }
  return families;
}

}  // namespace zentrix::INTEGRALS_2E

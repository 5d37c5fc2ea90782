#include "integrals/families.hpp"

#include <algorithm>

#include "molecule/cartesian.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// The family of `exponent` among those from `begin` on (the families of one atom), made when there is none yet.
FAMILY_T& family_of(std::vector<FAMILY_T>& families, std::size_t begin, double exponent) {
  for (std::size_t f = begin; f < families.size(); ++f)
    if (families[f].exponent == exponent) return families[f];
  families.emplace_back().exponent = exponent;
  return families.back();
}

/// Orders the members by angular momentum and notes the runs of equal ones.
void find_runs(FAMILY_T& family) {
  std::stable_sort(family.members.begin(), family.members.end(),
                   [](const FAMILY_MEMBER_T& a, const FAMILY_MEMBER_T& b) { return a.l < b.l; });
  for (std::size_t m = 0; m < family.members.size(); ++m) {
    const int l = family.members[m].l;
    if (family.runs.empty() || family.runs.back().l != l) family.runs.push_back({l, m, m});
    family.runs.back().end = m + 1;
  }
  family.l_max = family.runs.back().l;
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
        family.members.push_back({static_cast<int>(s), shell.l, offsets[s], shell.coeff[k]});
      }
    }
    for (std::size_t f = begin; f < families.size(); ++f) find_runs(families[f]);
  }
  return families;
}

}  // namespace zentrix::INTEGRALS_2E

#pragma once

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "constants/limits.hpp"
#include "integrals/integrals_2e.hpp"
#include "integrals/reference_eri.hpp"
#include "linalg/matrix.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/types.hpp"
#include "support/instruction_sets.hpp"

// Hand-made shells and molecules for the two-electron tests, and matrices by brute force over reference integrals.

namespace zentrix::samples {

using TESTS::available_isas;
using TESTS::ISA_GUARD;

/// A shell with coefficients for unnormalised primitives scaled so that x^l has self-overlap 1.
inline SHELL_T shell(int atom, int l, std::vector<double> alpha, std::vector<double> weight) {
  SHELL_T s;
  s.atom = atom;
  s.l = l;
  s.nprim = static_cast<int>(alpha.size());
  s.alpha = std::move(alpha);
  double odd = 1.0;  // (2l - 1)!!
  for (int k = 1; k <= l; ++k) odd *= 2 * k - 1;
  const auto overlap = [&](double p) { return std::pow(std::numbers::pi / p, 1.5) * odd / std::pow(2.0 * p, l); };
  for (std::size_t k = 0; k < s.alpha.size(); ++k) s.coeff.push_back(weight[k] / std::sqrt(overlap(2.0 * s.alpha[k])));
  double self = 0.0;
  for (std::size_t m = 0; m < s.alpha.size(); ++m)
    for (std::size_t n = 0; n < s.alpha.size(); ++n) self += s.coeff[m] * s.coeff[n] * overlap(s.alpha[m] + s.alpha[n]);
  for (double& c : s.coeff) c /= std::sqrt(self);
  return s;
}

inline ATOM_T atom(double x, double y, double z) {
  ATOM_T a;
  a.symbol = "X";
  a.position = {x, y, z};
  return a;
}

/// Fills in the counts and the first functions of the shells.
inline MOLECULE_T finish(MOLECULE_T molecule, bool spherical) {
  molecule.spherical = spherical;
  molecule.n_basis = molecule.n_cartesian = molecule.n_spherical = 0;
  for (SHELL_T& s : molecule.shells) {
    s.nfunc = spherical ? n_spherical(s.l) : n_cartesian(s.l);
    s.first = molecule.n_basis;
    molecule.n_basis += s.nfunc;
    molecule.n_cartesian += n_cartesian(s.l);
    molecule.n_spherical += n_spherical(s.l);
  }
  return molecule;
}

/// Three centres, two of them coincident, with contracted, tight and diffuse shells up to the given angular momentum.
inline MOLECULE_T mixed_molecule(int lmax, bool spherical) {
  MOLECULE_T m;
  m.atoms = {atom(0.0, 0.1, -0.2), atom(1.3, -0.7, 0.4), atom(1.3, -0.7, 0.4)};
  m.shells = {shell(0, 0, {71.6, 13.0, 3.5}, {0.15, 0.54, 0.44}), shell(1, 0, {0.4}, {1.0}),
              shell(0, 1, {2.9, 0.68}, {0.4, 0.7}), shell(2, 1, {0.09}, {1.0})};
  if (lmax >= 2) m.shells.push_back(shell(1, 2, {1.1}, {1.0}));
  if (lmax >= 3) m.shells.push_back(shell(0, 3, {0.8}, {1.0}));
  if (lmax >= 4) m.shells.push_back(shell(2, 4, {0.9}, {1.0}));
  if (lmax >= 5) m.shells.push_back(shell(0, 5, {1.2}, {1.0}));
  return finish(std::move(m), spherical);
}

inline MATRIX random_symmetric(int n, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  MATRIX d(n, n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j <= i; ++j) d(i, j) = d(j, i) = uniform(generator);
  return d;
}

inline INTEGRALS_2E::CENTERED_SHELL_T centered(const MOLECULE_T& m, int s) {
  const SHELL_T& shell = m.shells[static_cast<std::size_t>(s)];
  return {shell, m.atoms[static_cast<std::size_t>(shell.atom)].position};
}

/// work(s, t, u, v, integrals) for all quartets of shells with v <= u.
template <class WORK>
void for_every_quartet(const MOLECULE_T& m, const WORK& work) {
  const int n = static_cast<int>(m.shells.size());
  std::vector<double> block;
  for (int s = 0; s < n; ++s)
    for (int t = 0; t < n; ++t)
      for (int u = 0; u < n; ++u)
        for (int v = 0; v <= u; ++v) {
          INTEGRALS_2E::compute_eri_contracted(centered(m, s), centered(m, t), centered(m, u), centered(m, v), block);
          work(s, t, u, v, block);
        }
}

/// J and K of a symmetric density, all over bare components.
inline INTEGRALS_2E::JK_RESULT_T brute_force(const MOLECULE_T& m, const MATRIX& density) {
  const std::vector<int> first = cartesian_offsets(m);
  MATRIX j = MATRIX::Zero(density.rows(), density.cols()), k = j;
  for_every_quartet(m, [&](int s, int t, int u, int v, const std::vector<double>& block) {
    std::size_t at = 0;
    for (int a = first[s]; a < first[s + 1]; ++a)
      for (int b = first[t]; b < first[t + 1]; ++b)
        for (int c = first[u]; c < first[u + 1]; ++c)
          for (int e = first[v]; e < first[v + 1]; ++e, ++at) {
            j(a, b) += (u == v ? 1.0 : 2.0) * block[at] * density(c, e);
            k(a, c) += block[at] * density(b, e);
            if (u != v) k(a, e) += block[at] * density(b, c);
          }
  });
  return {{j}, {k}};
}

}  // namespace zentrix::samples

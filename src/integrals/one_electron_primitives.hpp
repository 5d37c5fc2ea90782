#pragma once

#include <array>
#include <cmath>

#include "constants/limits.hpp"
#include "constants/units.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/types.hpp"

// Pairs of primitives as the one-electron integrals and their derivatives use them.

namespace zentrix::INTEGRALS_1E {

/// Raised by two on the second shell (kinetic energy) and by one on the first (dipole, derivatives).
inline constexpr int RAISE_MAX = LMAX_WORK + 2;
using OVERLAP_1D = std::array<std::array<double, RAISE_MAX>, RAISE_MAX>;

/// Overlaps <x_A^i exp(-a x_A^2) | x_B^j exp(-b x_B^2)> for i <= la, j <= lb (Obara, Saika, J. Chem. Phys. 84 (1986) 3963).
inline void overlap_1d(int la, int lb, double p, double pa, double pb, double s00, OVERLAP_1D& s) {
  const double half = 0.5 / p;
  s[0][0] = s00;
  for (int i = 0; i <= la; ++i) {
    if (i > 0) s[i][0] = pa * s[i - 1][0] + (i > 1 ? half * (i - 1) * s[i - 2][0] : 0.0);
    for (int j = 1; j <= lb; ++j) {
      s[i][j] = pb * s[i][j - 1] + (j > 1 ? half * (j - 1) * s[i][j - 2] : 0.0) + (i > 0 ? half * i * s[i - 1][j - 1] : 0.0);
    }
  }
}

/// Pairs of primitives whose Gaussian prefactor is smaller add nothing in double precision: no coefficient, number of nuclei
/// or power of a distance lifts it near 1e-16.
inline constexpr double NEGLIGIBLE_GAUSS = 1e-30;

/// One pair of primitives: exponents, weight and the geometry of their product.
struct PRIMITIVE_PAIR_T {
  double a, b, p;
  double weight;  ///< product of coefficients
  double gauss;   ///< exp(-ab/p R^2)
  std::array<double, 3> center, pa, pb;
};

inline PRIMITIVE_PAIR_T primitive_pair(const SHELL_T& sa, std::size_t ia, const SHELL_T& sb, std::size_t ib,
                                       const std::array<double, 3>& ra, const std::array<double, 3>& rb) {
  PRIMITIVE_PAIR_T q;
  q.a = sa.alpha[ia];
  q.b = sb.alpha[ib];
  q.p = q.a + q.b;
  q.weight = sa.coeff[ia] * sb.coeff[ib];
  double distance2 = 0.0;
  for (std::size_t k = 0; k < 3; ++k) {
    q.center[k] = (q.a * ra[k] + q.b * rb[k]) / q.p;
    q.pa[k] = q.center[k] - ra[k];
    q.pb[k] = q.center[k] - rb[k];
    distance2 += (ra[k] - rb[k]) * (ra[k] - rb[k]);
  }
  q.gauss = std::exp(-q.a * q.b / q.p * distance2);
  return q;
}

inline std::array<OVERLAP_1D, 3> overlap_tables(const PRIMITIVE_PAIR_T& q, int la, int lb) {
  std::array<OVERLAP_1D, 3> s;
  for (std::size_t k = 0; k < 3; ++k) overlap_1d(la, lb, q.p, q.pa[k], q.pb[k], std::sqrt(PI / q.p), s[k]);
  return s;
}

/// -1/2 <i| d^2/dx^2 |j> from overlaps that reach two beyond j.
inline double kinetic_1d(const OVERLAP_1D& s, int i, int j, double b) {
  return b * (2 * j + 1) * s[i][j] - 2.0 * b * b * s[i][j + 2] - (j > 1 ? 0.5 * j * (j - 1) * s[i][j - 2] : 0.0);
}

}  // namespace zentrix::INTEGRALS_1E

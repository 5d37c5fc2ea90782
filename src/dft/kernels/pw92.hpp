#pragma once

#include "dft/kernels/xc_correlation.hpp"

// Correlation of the uniform electron gas, J. P. Perdew, Y. Wang, Phys. Rev. B 45 (1992) 13244.

namespace zentrix::kernels::ZX_ISA {

/// Prefactors of the three interpolations (unpolarised, polarised, minus the spin stiffness) and f''(0).
struct PW92_PREFACTORS_T {
  double a[3], f_curvature;
};
/// As printed in the article.
inline constexpr PW92_PREFACTORS_T PW92_PRINTED = {{0.031091, 0.015545, 0.016887}, 1.709921};
/// With the digits that PBE and the functionals after it use.
inline constexpr PW92_PREFACTORS_T PW92_MODIFIED = {{0.0310907, 0.01554535, 0.0168869}, 1.7099209341613656176};

/// A quantity and its derivative with respect to r_s, both to be differentiated further.
template <class JET>
struct WITH_SLOPE_T {
  JET value, slope;
};
template <class JET>
WITH_SLOPE_T(JET, JET) -> WITH_SLOPE_T<JET>;

/// Their eq. 10, G = -2 a (1 + a1 r_s) log(1 + 1/Q), for one of the three.
template <int WHICH, class JET>
ZX_INLINE auto pw92_g(const PW92_PREFACTORS_T& set, const JET& rs, const JET& x) {
  constexpr double a1s[3] = {0.21370, 0.20548, 0.11125}, b1s[3] = {7.5957, 14.1189, 10.357},
                   b2s[3] = {3.5876, 6.1977, 3.6231};
  constexpr double b3s[3] = {1.6382, 3.3662, 0.88026}, b4s[3] = {0.49294, 0.62517, 0.49671};
  constexpr double a1 = a1s[WHICH], b1 = b1s[WHICH], b2 = b2s[WHICH], b3 = b3s[WHICH], b4 = b4s[WHICH];
  const double a = set.a[WHICH];
  const auto q = 2.0 * a * (x * (b1 + x * (b2 + x * (b3 + b4 * x))));
  const auto q_slope = a * (b1 / x + (2.0 * b2 + 3.0 * b3 * x + 4.0 * b4 * rs));
  const auto logarithm = log1p(1.0 / q), line = -2.0 * a * (1.0 + a1 * rs);
  return WITH_SLOPE_T{line * logarithm, -2.0 * a * a1 * logarithm - line * q_slope / (q * (1.0 + q))};
}

/// Energy per electron and its r_s derivative at constant polarisation; the compiler drops the one that is not used.
template <class POINT, class JET>
ZX_INLINE auto pw92(const PW92_PREFACTORS_T& set, const POINT& q, const JET& rs) {
  const auto x = sqrt(rs);
  const auto g0 = pw92_g<0>(set, rs, x);
  if constexpr (POINT::CLOSED) {
    return g0;
  } else {
    const auto g1 = pw92_g<1>(set, rs, x), g2 = pw92_g<2>(set, rs, x);
    const auto f = polarisation_function(q), z4 = square(square(q.zeta));
    const auto to_polarised = f * z4, to_stiffness = (-1.0 / set.f_curvature) * (f * one_minus_zeta4(q));
    return WITH_SLOPE_T{g0.value + g2.value * to_stiffness + (g1.value - g0.value) * to_polarised,
                        g0.slope + g2.slope * to_stiffness + (g1.slope - g0.slope) * to_polarised};
  }
}

}  // namespace zentrix::kernels::ZX_ISA

#pragma once

#include "simd/jet.hpp"

// What exchange and correlation of r2SCAN share: J. W. Furness, A. D. Kaplan, J. Ning, J. P. Perdew, J. Sun, J. Phys. Chem.
// Lett. 11 (2020) 8208 (correction 9248).

namespace zentrix::kernels::ZX_ISA {

inline constexpr double R2SCAN_ETA = 0.001;
inline constexpr double R2SCAN_DP2_4 = 0.361 * 0.361 * 0.361 * 0.361;

/// The switch between single-orbital (alpha = 0) and slowly varying (alpha = 1) regions: a polynomial up to alpha = 2.5,
/// -d exp(c2 / (1 - alpha)) beyond.
struct R2SCAN_SWITCH_T {
  double c[8], c2, d;
};
inline constexpr R2SCAN_SWITCH_T R2SCAN_EXCHANGE_SWITCH = {
    {1.0, -0.667, -0.4445555, -0.663086601049, 1.451297044490, -0.887998041597, 0.234528941479, -0.023185843322}, 0.8, 1.24};
inline constexpr R2SCAN_SWITCH_T R2SCAN_CORRELATION_SWITCH = {
    {1.0, -0.64, -0.4352, -1.535685604549, 3.061560252175, -1.915710236206, 0.516884468372, -0.051848879792}, 1.5, 0.7};

/// The slope of the switch at alpha = 1.
constexpr double slope_at_one(const R2SCAN_SWITCH_T& s) {
  double sum = 0.0;
  for (int n = 1; n < 8; ++n) sum += n * s.c[n];
  return sum;
}

template <class ALPHA>
ZX_INLINE auto r2scan_switch(const R2SCAN_SWITCH_T& s, const ALPHA& alpha) {
  return compose(
      alpha, [&](const auto& a) __attribute__((always_inline)) {
        const mask near = a.value < 2.5;
        auto low = a;
        low.value = min(a.value, broadcast(2.5));
        auto polynomial = s.c[6] + s.c[7] * low;
        for (int n = 5; n >= 0; --n) polynomial = s.c[n] + low * polynomial;
        return select(near, polynomial, -s.d * exp(s.c2 / (1.0 - raised_to(2.5, a))));
      });
}

/// alpha = (tau - tau_W) / (tau_unif + eta tau_W), at least 0.
template <class TAU, class VON_WEIZSAECKER, class UNIFORM>
ZX_INLINE auto r2scan_alpha(const TAU& tau, const VON_WEIZSAECKER& tau_w, const UNIFORM& tau_unif) {
  return raised_to(0.0, (tau - tau_w) / (tau_unif + R2SCAN_ETA * tau_w));
}

}  // namespace zentrix::kernels::ZX_ISA

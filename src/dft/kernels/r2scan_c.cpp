#include "dft/kernels/gga_correlation.hpp"
#include "dft/kernels/pw92.hpp"
#include "dft/kernels/r2scan.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

constexpr double B1C = 0.0285764, B2C = 0.0889, B3C = 0.125541;

/// Local energy of single-orbital regions, without its spin factor, and its r_s derivative.
template <class JET>
ZX_INLINE auto single_orbital_lda(const JET& rs) {
  const auto root = sqrt(rs);
  const auto inverse_denominator = 1.0 / (1.0 + B2C * root + B3C * rs);
  const auto value = -B1C * inverse_denominator;
  return WITH_SLOPE_T{value, -(value * inverse_denominator) * (0.5 * B2C / root + B3C)};
}

/// G_c(zeta): full correlation for the unpolarised, none for the fully polarised single orbital.
template <class POINT>
ZX_INLINE auto single_orbital_spin_factor(const POINT& q) {
  if constexpr (POINT::CLOSED) {
    return 1.0;
  } else {
    const auto z2 = square(q.zeta), z4 = square(z2);
    const auto one_minus_z12 = q.up * q.down * (1.0 + z2) * (1.0 + z4 + square(z4));
    return (1.0 - 2.363 * (spin_average<4>(q) - 1.0)) * one_minus_z12;
  }
}

struct R2SCAN_C_T {
  static constexpr int INGREDIENTS = 3;

  /// Single-orbital limit: local part and the gradient term that leaves the energy of the high-density limit finite.
  template <class LDA0, class P>
  static ZX_INLINE auto single_orbital(const LDA0& lda0, const P& p) {
    constexpr double chi_infinity = 0.12802585262625815;
    const auto w0 = expm1((-1.0 / B1C) * lda0.value);
    const auto missing = 1.0 - inverse_fourth_root(1.0 + 4.0 * chi_infinity * p);
    return lda0.value + B1C * log1p(w0 * missing);
  }

  /// Slowly varying limit: PBE-like, with the term that restores the second-order gradient expansion.
  template <class POINT, class RS, class P, class LSDA0>
  static ZX_INLINE auto slowly_varying(const POINT& q, const RS& rs, const P& p, const LSDA0& lsda0) {
    constexpr double gamma = 0.031090690869654895035;
    constexpr double delta_f = slope_at_one(R2SCAN_CORRELATION_SWITCH);
    const auto phi = spin_scaling(q);
    const auto phi3 = cube(phi);
    const auto lsda = pw92(PW92_MODIFIED, q, rs);
    const auto beta = 0.06672455060314922 * ((1.0 + 0.1 * rs) / (1.0 + 0.1778 * rs));
    const auto w1 = raised_to(1e-30, expm1(-lsda.value / (gamma * phi3)));
    const auto y = beta * (t2_unscaled(q) / square(phi)) / (gamma * w1);
    const auto bracket = 20.0 * (rs * (lsda0.slope - lsda.slope)) - (45.0 * R2SCAN_ETA) * (lsda0.value - lsda.value);
    const auto damped_p = compose(
        p, [](const auto& x) __attribute__((always_inline)) { return x * exp((-1.0 / R2SCAN_DP2_4) * square(x)); });
    const auto delta_y = (delta_f / (27.0 * gamma)) * (bracket / (spin_average<5>(q) * phi3 * w1)) * damped_p;
    const auto g = inverse_fourth_root(raised_to(1e-30, 1.0 + 4.0 * (y - delta_y)));
    return lsda.value + gamma * phi3 * log1p(w1 * (1.0 - g));
  }

  template <class POINT>
  static ZX_INLINE auto energy(const POINT& q) {
    const auto rs = seitz_radius(q.rho), y = inverse_cbrt(q.rho);
    const auto p = 0.026121172985233599568 * (q.sigma * square(square(square(y))));
    const auto tau_unif = 2.8712340001881918159 * (square(q.rho) * y) * spin_average<5>(q);
    const auto alpha = r2scan_alpha(q.tau, 0.125 * (q.sigma / q.rho), tau_unif);
    const auto lda0 = single_orbital_lda(rs);
    const auto spin_factor = single_orbital_spin_factor(q);
    const auto e0 = single_orbital(lda0, p) * spin_factor;
    const auto e1 = slowly_varying(q, rs, p, WITH_SLOPE_T{lda0.value * spin_factor, lda0.slope * spin_factor});
    return q.rho * (e1 + r2scan_switch(R2SCAN_CORRELATION_SWITCH, alpha) * (e0 - e1));
  }
};

}  // namespace

XC_KERNELS_T r2scan_c() { return correlation_kernels<R2SCAN_C_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

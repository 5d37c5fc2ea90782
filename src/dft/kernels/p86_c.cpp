#include "dft/kernels/rasolt_geldart.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// One spin limit of J. P. Perdew, A. Zunger, Phys. Rev. B 23 (1981) 5048, appendix C: two forms that meet at r_s = 1.
struct PZ81_LIMIT_T {
  double gamma, beta1, beta2, a, b, c, d;
};
constexpr PZ81_LIMIT_T PZ81_UNPOLARISED = {-0.1423, 1.0529, 0.3334, 0.0311, -0.048, 0.0020, -0.0116};
constexpr PZ81_LIMIT_T PZ81_POLARISED = {-0.0843, 1.3981, 0.2611, 0.01555, -0.0269, 0.0007, -0.0048};

template <class JET>
ZX_INLINE auto pz81_limit(const PZ81_LIMIT_T& p, const JET& rs, const JET& root, const JET& logarithm) {
  const auto dilute = p.gamma / (1.0 + p.beta1 * root + p.beta2 * rs);
  const auto dense = p.a * logarithm + p.b + p.c * (rs * logarithm) + p.d * rs;
  return select(rs.value < 1.0, dense, dilute);
}

template <class POINT, class JET>
ZX_INLINE auto pz81(const POINT& q, const JET& rs) {
  const auto root = sqrt(rs), logarithm = log(rs);
  const auto e0 = pz81_limit(PZ81_UNPOLARISED, rs, root, logarithm);
  if constexpr (POINT::CLOSED)
    return e0;
  else
    return e0 + (pz81_limit(PZ81_POLARISED, rs, root, logarithm) - e0) * polarisation_function(q);
}

/// |grad rho|, kept away from the zero where its derivatives with respect to sigma diverge: below 1e-6 rho^(4/3) it is held,
/// which limits the second derivatives and changes the potential by 1e-12 of its gradient part.
template <class POINT>
ZX_INLINE auto gradient_length(const POINT& q) {
  const vec rho43 = q.rho.value * cbrt(q.rho.value);
  return sqrt(raised_to(1e-12 * rho43 * rho43, q.sigma));
}

/// J. P. Perdew, Phys. Rev. B 33 (1986) 8822 (erratum 34 (1986) 7406), eqs. 1 to 9, on the local part of Perdew and Zunger.
struct P86_C_T {
  static constexpr int INGREDIENTS = 2;

  template <class POINT>
  static ZX_INLINE auto energy(const POINT& q) {
    constexpr double f_tilde = 1.745 * 0.11, c_infinity = 0.001667 + 0.002568;
    const auto rs = seitz_radius(q.rho), y = inverse_cbrt(q.rho);
    const auto c = 0.001667 + gradient_coefficient(rs, 0.07389);
    const auto phi = (f_tilde * c_infinity) * (gradient_length(q) * (cube(y) * sqrt(y)) / c);
    const auto gradient_part = exp(-phi) * (c * square(square(y)) * q.sigma);
    if constexpr (POINT::CLOSED)
      return q.rho * pz81(q, rs) + gradient_part;
    else
      return q.rho * pz81(q, rs) + gradient_part / sqrt(spin_average<5>(q));
  }
};

}  // namespace

XC_KERNELS_T p86_c() { return correlation_kernels<P86_C_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

#pragma once

#include "dft/kernels/xc_correlation.hpp"

namespace zentrix::kernels::ZX_ISA {

/// phi(zeta) of Y. Wang, J. P. Perdew, Phys. Rev. B 43 (1991) 8911.
template <class POINT>
ZX_INLINE auto spin_scaling(const POINT& q) {
  return spin_average<2>(q);
}

/// t^2 phi^2 with t = |grad rho| / (2 phi k_s rho), k_s = sqrt(4 k_F / pi).
template <class POINT>
ZX_INLINE auto t2_unscaled(const POINT& q) {
  const auto y = inverse_cbrt(q.rho);
  return 0.063468206097703704202 * (q.sigma * (square(cube(y)) * y));  // pi / (16 (3 pi^2)^(1/3))
}

/// The gradient contribution gamma phi^3 log(1 + w y (1 + y) / (1 + y + y^2)), w = exp(-e_c / (gamma phi^3)) - 1,
/// y = beta t^2 / (gamma w), common to PW91 and PBE; e_c energy per electron of the uniform gas.
template <class ENERGY, class PHI3, class T2>
ZX_INLINE auto gradient_term(double gamma, double beta_over_gamma, const ENERGY& e_c, const PHI3& phi3, const T2& t2) {
  const auto scaled = gamma * phi3;
  const auto w = raised_to(1e-30, expm1(-e_c / scaled));
  const auto y = beta_over_gamma * (t2 / w);
  return scaled * log1p(w * (y * (1.0 + y) / (1.0 + y + square(y))));
}

}  // namespace zentrix::kernels::ZX_ISA

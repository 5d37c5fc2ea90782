#pragma once

#include "dft/kernels/xc_correlation.hpp"

namespace zentrix::kernels::ZX_ISA {

/// Parameters of one fit of S. H. Vosko, L. Wilk, M. Nusair, Can. J. Phys. 58 (1980) 1200, in hartree.
struct VWN_FIT_T {
  double a, b, c, x0;
};

/// Their eq. 4.4 as a function of x = sqrt(r_s).
template <class JET>
ZX_INLINE auto vwn_fit(const VWN_FIT_T& p, const JET& x) {
  const double q = __builtin_sqrt(4.0 * p.c - p.b * p.b), at_x0 = p.x0 * p.x0 + p.b * p.x0 + p.c;
  const auto polynomial = square(x) + p.b * x + p.c;
  const auto angle = atan(q / (2.0 * x + p.b));
  const auto main = log(square(x) / polynomial) + (2.0 * p.b / q) * angle;
  const auto pole = log(square(x - p.x0) / polynomial) + (2.0 * (p.b + 2.0 * p.x0) / q) * angle;
  return p.a * (main - (p.b * p.x0 / at_x0) * pole);
}

}  // namespace zentrix::kernels::ZX_ISA

#pragma once

#include "dft/kernels/xc_correlation.hpp"

namespace zentrix::kernels::ZX_ISA {

/// Gradient coefficient of exchange and correlation of the electron gas, C_xc(r_s): M. Rasolt, D. J. W. Geldart, Phys. Rev.
/// B 34 (1986) 1325. `cubic` is the coefficient of r_s^3 in the denominator, on which the two functionals that use it
/// differ.
template <class JET>
ZX_INLINE auto gradient_coefficient(const JET& rs, double cubic) {
  return (0.002568 + rs * (0.023266 + 7.389e-6 * rs)) / (1.0 + rs * (8.723 + rs * (0.472 + cubic * rs)));
}

}  // namespace zentrix::kernels::ZX_ISA

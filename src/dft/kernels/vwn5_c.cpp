#include "dft/kernels/vwn.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// Fit V: Monte Carlo energies of the unpolarised and the polarised gas, joined by the spin stiffness.
struct VWN5_C_T {
  static constexpr int INGREDIENTS = 1;
  static constexpr VWN_FIT_T unpolarised = {0.0310907, 3.72744, 12.9352, -0.10498};
  static constexpr VWN_FIT_T polarised = {0.01554535, 7.06042, 18.0578, -0.32500};
  static constexpr VWN_FIT_T stiffness = {-0.016886863940389628574, 1.13107, 13.0045, -0.0047584};  // a = -1/(6 pi^2)

  template <class POINT>
  static ZX_INLINE auto energy(const POINT& q) {
    const auto x = sqrt(seitz_radius(q.rho));
    const auto e0 = vwn_fit(unpolarised, x);
    if constexpr (POINT::CLOSED) {
      return q.rho * e0;
    } else {
      constexpr double f_curvature = 1.7099209341613656176;  // f''(0) = 4 / (9 (2^(1/3) - 1))
      const auto f = polarisation_function(q);
      const auto e1 = vwn_fit(polarised, x);
      return q.rho * (e0 + vwn_fit(stiffness, x) * (f * one_minus_zeta4(q) * (1.0 / f_curvature)) +
                      (e1 - e0) * (f * square(square(q.zeta))));
    }
  }
};

}  // namespace

XC_KERNELS_T vwn5_c() { return correlation_kernels<VWN5_C_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

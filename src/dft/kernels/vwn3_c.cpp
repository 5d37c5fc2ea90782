#include "dft/kernels/vwn.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// The fit to the random-phase approximation, both limits joined by the exchange-like f(zeta).
struct VWN3_C_T {
  static constexpr int INGREDIENTS = 1;
  static constexpr VWN_FIT_T unpolarised = {0.0310907, 13.0720, 42.7198, -0.409286};
  static constexpr VWN_FIT_T polarised = {0.01554535, 20.1231, 101.578, -0.743294};

  template <class POINT>
  static ZX_INLINE auto energy(const POINT& q) {
    const auto x = sqrt(seitz_radius(q.rho));
    const auto e0 = vwn_fit(unpolarised, x);
    if constexpr (POINT::CLOSED)
      return q.rho * e0;
    else
      return q.rho * (e0 + (vwn_fit(polarised, x) - e0) * polarisation_function(q));
  }
};

}  // namespace

XC_KERNELS_T vwn3_c() { return correlation_kernels<VWN3_C_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

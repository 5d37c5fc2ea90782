#include "dft/kernels/r2scan.hpp"
#include "dft/kernels/xc_exchange.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// Enhancement of slowly varying regions, and its damping at large gradients.
template <class JET>
ZX_INLINE auto h1(const JET& p) {
  constexpr double k1 = 0.065, mu = 10.0 / 81.0, h0 = 1.174;
  constexpr double c_eta = (20.0 / 27.0 + R2SCAN_ETA * 5.0 / 3.0) * -slope_at_one(R2SCAN_EXCHANGE_SWITCH) * (1.0 - h0);
  const auto x = p * (mu + c_eta * exp((-1.0 / R2SCAN_DP2_4) * square(p)));
  return (1.0 + k1) - k1 / (1.0 + (1.0 / k1) * x);
}

/// 1 - exp(-a1 / sqrt(s)), s^2 = p; 1 to all digits below p = 1e-8.
template <class JET>
ZX_INLINE auto large_gradient_factor(const JET& p) {
  return 1.0 - exp(-4.9479 * inverse_fourth_root(raised_to(1e-9, p)));
}

struct R2SCAN_X_T {
  static constexpr int INGREDIENTS = 3;

  template <class R, class S, class T>
  static ZX_INLINE auto energy(const R& rho, const S& sigma, const T& tau) {
    constexpr double h0 = 1.174;
    const auto y = inverse_cbrt(rho), rho43 = rho * cbrt(rho);
    const auto p = 0.016455307846020557507 * (sigma * square(square(square(y))));
    const auto alpha = r2scan_alpha(tau, 0.125 * (sigma / rho), 4.5577998723455971373 * (square(rho) * y));
    const auto slow = compose(
        p, [](const auto& x) __attribute__((always_inline)) { return h1(x); });
    const auto damping = compose(
        p, [](const auto& x) __attribute__((always_inline)) { return large_gradient_factor(x); });
    const auto f = r2scan_switch(R2SCAN_EXCHANGE_SWITCH, alpha);
    return -0.930525736349100025 * (rho43 * damping) * (slow + f * (h0 - slow));
  }
};

}  // namespace

XC_KERNELS_T r2scan_x() { return exchange_kernels<R2SCAN_X_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

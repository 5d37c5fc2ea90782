#include "dft/kernels/xc_exchange.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// sqrt(u) asinh(sqrt(u)), which is smooth at u = 0 although the root is not. With a = asinh(x)/x, x^2 = u, the derivatives
/// are those of u a; below 1/64 a and its derivative come from the power series.
template <unsigned A, int O>
ZX_INLINE JET_T<A, O> root_times_asinh(const JET_T<A, O>& u) {
  constexpr double c[9] = {1.0,
                           -1.0 / 6.0,
                           3.0 / 40.0,
                           -5.0 / 112.0,
                           35.0 / 1152.0,
                           -63.0 / 2816.0,
                           231.0 / 13312.0,
                           -143.0 / 10240.0,
                           6435.0 / 557056.0};
  const mask small = u.value < 1.0 / 64.0;
  const vec safe = max(u.value, broadcast(1.0 / 64.0)), x = sqrt(safe), root = 1.0 / sqrt(1.0 + u.value);
  vec series = broadcast(c[8]), series_slope = broadcast(8.0 * c[8]);
  for (int n = 7; n >= 0; --n) {
    series = c[n] + u.value * series;
    if (n > 0) series_slope = n * c[n] + u.value * series_slope;
  }
  const vec a = select(small, series, asinh(x) / x);
  const vec a_slope = select(small, series_slope, (root - a) * 0.5 / safe);
  return chain(u, u.value * a, 0.5 * (a + root), 0.5 * a_slope - 0.25 * root * root * root);
}

/// A. D. Becke, Phys. Rev. A 38 (1988) 3098, eq. 8: the local part less beta rho^(4/3) x^2 / (1 + 6 beta x asinh x) with
/// x = |grad rho| / rho^(4/3) of one spin.
struct B88_X_T {
  static constexpr int INGREDIENTS = 2;
  template <class R, class S>
  static ZX_INLINE auto energy(const R& rho, const S& sigma) {
    constexpr double beta = 0.0042;
    const auto u = sigma * square(square(square(inverse_cbrt(rho))));
    return -(rho * cbrt(rho)) * (0.930525736349100025 + beta * u / (1.0 + 6.0 * beta * root_times_asinh(u)));
  }
};

}  // namespace

XC_KERNELS_T b88_x() { return exchange_kernels<B88_X_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

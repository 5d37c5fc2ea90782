#include "dft/kernels/xc_correlation.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// C. Lee, W. Yang, R. G. Parr, Phys. Rev. B 37 (1988) 785, in the form without second derivatives of the density that
/// partial integration gives (B. Miehlich, A. Savin, H. Stoll, H. Preuss, Chem. Phys. Lett. 157 (1989) 200, eq. 2). Written
/// here with rho_a = rho up / 2, rho_b = rho down / 2, so that powers of the density combine; the terms that cancel between
/// |grad rho|^2 and those of the spins are taken together.
struct LYP_C_T {
  static constexpr int INGREDIENTS = 2;
  static constexpr bool SPIN_GRADIENTS = true;

  template <class POINT>
  static ZX_INLINE auto energy(const POINT& q) {
    constexpr double a = 0.04918, b = 0.132, c = 0.2533, d = 0.349;
    constexpr double four_cf = 11.484936000752767264;  // 4 C_F, C_F = 3/10 (3 pi^2)^(2/3)
    const auto y = inverse_cbrt(q.rho);
    const auto screening = 1.0 / (1.0 + d * y);
    const auto delta = c * y + d * y * screening;
    const auto pairs = 0.25 * (q.up * q.down);  // rho_a rho_b / rho^2
    const auto aa =
        pairs * ((1.0 - 3.0 * delta) * (1.0 / 9.0) + (11.0 - delta) * ((1.0 / 18.0) * q.up)) - 0.25 * square(q.down);
    const auto bb =
        pairs * ((1.0 - 3.0 * delta) * (1.0 / 9.0) + (11.0 - delta) * ((1.0 / 18.0) * q.down)) - 0.25 * square(q.up);
    const auto ab = pairs * ((47.0 - 7.0 * delta) * (1.0 / 9.0)) - 4.0 / 3.0;
    const auto gradients = aa * q.sigma_aa() + ab * q.sigma_ab() + bb * q.sigma_bb();
    const auto local = four_cf * (q.rho * (pairs * spin_average<8>(q)));
    return -4.0 * a * (q.rho * screening * pairs) -
           (a * b) * (exp(-c * y) * screening * (local + square(square(y)) * y * gradients));
  }
};

}  // namespace

XC_KERNELS_T lyp_c() { return correlation_kernels<LYP_C_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

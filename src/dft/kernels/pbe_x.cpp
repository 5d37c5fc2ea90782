#include "dft/kernels/xc_exchange.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// J. P. Perdew, K. Burke, M. Ernzerhof, Phys. Rev. Lett. 77 (1996) 3865, eq. 14: F(s) = 1 + kappa - kappa / (1 + mu s^2 /
/// kappa) with mu = beta pi^2 / 3.
struct PBE_X_T {
  static constexpr int INGREDIENTS = 2;
  template <class R, class S>
  static ZX_INLINE auto energy(const R& rho, const S& sigma) {
    constexpr double kappa = 0.804, mu = 0.21951497276451705329;
    // s^2 of a spin-compensated density of twice this spin's, sigma / (4 (6 pi^2)^(2/3) rho^(8/3)).
    const auto s2 = 0.016455307846020557507 * (sigma * square(square(square(inverse_cbrt(rho)))));
    return -0.930525736349100025 * (rho * cbrt(rho)) * (1.0 + kappa - kappa / (1.0 + (mu / kappa) * s2));
  }
};

}  // namespace

XC_KERNELS_T pbe_x() { return exchange_kernels<PBE_X_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

#include "dft/kernels/xc_exchange.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// P. A. M. Dirac, Proc. Camb. Phil. Soc. 26 (1930) 376: exchange of the uniform electron gas.
struct SLATER_X_T {
  static constexpr int INGREDIENTS = 1;
  template <class R>
  static ZX_INLINE auto energy(const R& rho) {
    return -0.930525736349100025 * (rho * cbrt(rho));  // 3/2 (3/(4 pi))^(1/3)
  }
};

}  // namespace

XC_KERNELS_T slater_x() { return exchange_kernels<SLATER_X_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

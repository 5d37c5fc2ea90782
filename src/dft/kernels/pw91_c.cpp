#include "dft/kernels/gga_correlation.hpp"
#include "dft/kernels/pw92.hpp"
#include "dft/kernels/rasolt_geldart.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// J. P. Perdew, J. A. Chevary, S. H. Vosko, K. A. Jackson, M. R. Pederson, D. J. Singh, C. Fiolhais, Phys. Rev. B 46 (1992)
/// 6671, eqs. 11 to 16: local part, H0 and H1.
struct PW91_C_T {
  static constexpr int INGREDIENTS = 2;

  template <class POINT>
  static ZX_INLINE auto energy(const POINT& q) {
    constexpr double alpha = 0.09, nu = 15.755920349483144659, beta = nu * 0.004235;  // nu = 16/pi (3 pi^2)^(1/3)
    constexpr double c_x = -0.001667;
    const auto rs = seitz_radius(q.rho);
    const auto phi = spin_scaling(q);
    const auto phi3 = cube(phi);
    const auto e_c = pw92(PW92_PRINTED, q, rs).value;
    const auto t2_phi2 = t2_unscaled(q);
    const auto h0 = gradient_term(beta * beta / (2.0 * alpha), 2.0 * alpha / beta, e_c, phi3, t2_phi2 / square(phi));
    // -100 phi^4 (k_s/k_F)^2 t^2 with (k_s/k_F)^2 = 4 / (pi k_F).
    const auto damping = exp(-41.156312099041145316 * (inverse_cbrt(q.rho) * (square(phi) * t2_phi2)));
    const auto h1 = nu * ((gradient_coefficient(rs, 0.0) - (0.002568 + 3.0 / 7.0 * c_x)) * (phi * t2_phi2 * damping));
    return q.rho * (e_c + h0 + h1);
  }
};

}  // namespace

XC_KERNELS_T pw91_c() { return correlation_kernels<PW91_C_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

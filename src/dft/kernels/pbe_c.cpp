#include "dft/kernels/gga_correlation.hpp"
#include "dft/kernels/pw92.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

/// J. P. Perdew, K. Burke, M. Ernzerhof, Phys. Rev. Lett. 77 (1996) 3865, eqs. 3, 7, 8.
struct PBE_C_T {
  static constexpr int INGREDIENTS = 2;

  template <class POINT>
  static ZX_INLINE auto energy(const POINT& q) {
    constexpr double gamma = 0.031090690869654895035, beta = 0.06672455060314922;  // gamma = (1 - log 2) / pi^2
    const auto phi = spin_scaling(q);
    const auto e_c = pw92(PW92_MODIFIED, q, seitz_radius(q.rho)).value;
    const auto t2 = t2_unscaled(q) / square(phi);
    return q.rho * (e_c + gradient_term(gamma, beta / gamma, e_c, cube(phi), t2));
  }
};

}  // namespace

XC_KERNELS_T pbe_c() { return correlation_kernels<PBE_C_T>(); }

}  // namespace zentrix::kernels::ZX_ISA

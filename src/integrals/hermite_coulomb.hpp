#pragma once

#include <array>

#include "constants/limits.hpp"
#include "integrals/hermite.hpp"

namespace zentrix::INTEGRALS_2E {

/// Hermite Coulomb functions R_tuv(alpha, r) = (d/dx)^t (d/dy)^u (d/dz)^v F_0(alpha r^2) for one distance vector, scalar:
/// R^n_000 = (-2 alpha)^n F_n(alpha r^2), R^n_{t+1,u,v} = t R^{n+1}_{t-1,u,v} + x R^{n+1}_tuv (McMurchie, Davidson, J.
/// Comput. Phys. 26 (1978) 218). Holds its own scratch, so one object belongs to one thread.
class HERMITE_COULOMB_T {
 public:
  /// Largest order: four h shells.
  static constexpr int order_max = 4 * LMAX;

  /// Adds factor * R_tuv for t + u + v <= order to `target`, ordered as hermite_index(order, t, u, v).
  void add(int order, double alpha, double x, double y, double z, double factor, double* target);

 private:
  std::array<double, n_hermite(order_max)> current_;
  std::array<double, n_hermite(order_max)> next_;
};

}  // namespace zentrix::INTEGRALS_2E

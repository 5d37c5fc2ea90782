#include "integrals/hermite_product.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zentrix::INTEGRALS_2E {

double product_exponent(const FAMILY_T& a, const FAMILY_T& b) {
  double distance2 = 0.0;
  for (int k = 0; k < 3; ++k) distance2 += (a.center[k] - b.center[k]) * (a.center[k] - b.center[k]);
  return a.exponent * b.exponent / (a.exponent + b.exponent) * distance2;
}

FAMILY_PRODUCT_T::FAMILY_PRODUCT_T(const FAMILY_T& fa, const FAMILY_T& fb) : a(fa), b(fb), p(fa.exponent + fb.exponent) {
  // [t|u] = 2 pi^(5/2) / (p q sqrt(p + q)) R_(t+u): each distribution carries the root of 2 pi^(5/2) over its exponent.
  static const double charge = std::numbers::sqrt2 * std::pow(std::numbers::pi, 1.25);
  for (std::size_t k = 0; k < 3; ++k) {
    center[k] = (a.exponent * a.center[k] + b.exponent * b.center[k]) / p;
    e[k].fill(a.l_max, b.l_max, p, center[k] - a.center[k], center[k] - b.center[k],
              k == 0 ? charge / p * std::exp(-product_exponent(a, b)) : 1.0);
  }
}

void sum_blocks(const MATRIX& matrix, const FAMILY_T& a, const FAMILY_RUN_T& ra, const FAMILY_T& b, const FAMILY_RUN_T& rb,
                double* block) {
  const int na = n_cartesian(ra.l);
  const int nb = n_cartesian(rb.l);
  std::fill_n(block, na * nb, 0.0);
  for (std::size_t ma = ra.begin; ma < ra.end; ++ma)
    for (std::size_t mb = rb.begin; mb < rb.end; ++mb) {
      const FAMILY_MEMBER_T& i = a.members[ma];
      const FAMILY_MEMBER_T& j = b.members[mb];
      const double c = i.coefficient * j.coefficient;
      // The matrix is symmetric: element (j, i) is read so that the inner loop runs down a column.
      for (int ca = 0; ca < na; ++ca)
        for (int cb = 0; cb < nb; ++cb) block[ca * nb + cb] += c * matrix(j.first + cb, i.first + ca);
    }
}

}  // namespace zentrix::INTEGRALS_2E

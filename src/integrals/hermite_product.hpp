#pragma once

#include <array>
#include <vector>

#include "integrals/families.hpp"
#include "integrals/hermite.hpp"
#include "linalg/matrix.hpp"
#include "molecule/cartesian.hpp"

// Hermite expansions of the products of two families, as the folding of densities, the unfolding of potentials and the
// gradient use them.

namespace zentrix::INTEGRALS_2E {

/// E_t of the three directions.
using HERMITE_EXPANSIONS_T = std::array<HERMITE_EXPANSION_T, 3>;

/// Exponent of the Gaussian product factor, a b / (a + b) |A - B|^2.
double product_exponent(const FAMILY_T& a, const FAMILY_T& b);

/// The two families of a pair with the expansion of their products, scaled by sqrt(2) pi^(5/4) / p.
struct FAMILY_PRODUCT_T {
  const FAMILY_T& a;
  const FAMILY_T& b;
  double p;                      ///< exponent sum, bohr^-2
  std::array<double, 3> center;  ///< P, bohr
  HERMITE_EXPANSIONS_T e;

  FAMILY_PRODUCT_T(const FAMILY_T& fa, const FAMILY_T& fb);
  int order() const { return a.l_max + b.l_max; }
};

/// Most components of two shells.
inline constexpr int MAX_BLOCK = n_cartesian(LMAX) * n_cartesian(LMAX);

/// Sum over the members of two runs of c c' times their block of a symmetric matrix, nb fastest.
void sum_blocks(const MATRIX& matrix, const FAMILY_T& a, const FAMILY_RUN_T& ra, const FAMILY_T& b, const FAMILY_RUN_T& rb,
                double* block);

/// h_t += d E_t for the product of one component of a and one of b.
inline void add_product(const HERMITE_EXPANSION_T& x, const HERMITE_EXPANSION_T& y, const HERMITE_EXPANSION_T& z,
                        const HERMITE_ROWS_T& rows, const POWERS_T& ca, const POWERS_T& cb, double d, double* h) {
  const double* ex = x.e[ca.x][cb.x];
  const double* ey = y.e[ca.y][cb.y];
  const double* ez = z.e[ca.z][cb.z];
  for (int t = 0; t <= ca.x + cb.x; ++t)
    for (int u = 0; u <= ca.y + cb.y; ++u) {
      const double dxy = d * ex[t] * ey[u];
      double* row = h + rows.row[t][u];
      for (int v = 0; v <= ca.z + cb.z; ++v) row[v] += dxy * ez[v];
    }
}

inline void add_product(const HERMITE_EXPANSIONS_T& e, const HERMITE_ROWS_T& rows, const POWERS_T& ca, const POWERS_T& cb,
                        double d, double* h) {
  add_product(e[0], e[1], e[2], rows, ca, cb, d, h);
}

/// sum_t E_t j_t for the product of one component of a and one of b.
inline double dot_product(const HERMITE_EXPANSIONS_T& e, const HERMITE_ROWS_T& rows, const POWERS_T& ca, const POWERS_T& cb,
                          const double* j) {
  const double* ex = e[0].e[ca.x][cb.x];
  const double* ey = e[1].e[ca.y][cb.y];
  const double* ez = e[2].e[ca.z][cb.z];
  double sum = 0.0;
  for (int t = 0; t <= ca.x + cb.x; ++t)
    for (int u = 0; u <= ca.y + cb.y; ++u) {
      const double* row = j + rows.row[t][u];
      double line = 0.0;
      for (int v = 0; v <= ca.z + cb.z; ++v) line += ez[v] * row[v];
      sum += ex[t] * ey[u] * line;
    }
  return sum;
}

}  // namespace zentrix::INTEGRALS_2E

#pragma once

#include <array>
#include <vector>

#include "constants/limits.hpp"

// Hermite Gaussians of primitive pairs (McMurchie, Davidson, J. Comput. Phys. 26 (1978) 218).
//
// The product of two primitives x_A^i exp(-a x_A^2) x_B^j exp(-b x_B^2) is sum_t E_t^{ij} (d/dP_x)^t exp(-p x_P^2) with
// p = a + b. A Hermite function of order (t, u, v) stands at position hermite_index in the vector of all orders with
// t + u + v <= order; v runs fastest, so that rows of equal (t, u) are contiguous.

namespace zentrix::INTEGRALS_2E {

/// Largest order of a pair: two h shells.
inline constexpr int HERMITE_MAX = 2 * LMAX;

/// Number of (t, u, v) with t + u + v <= order.
constexpr int n_hermite(int order) { return (order + 1) * (order + 2) * (order + 3) / 6; }

/// First position of the orders with the given t and u inside a vector of total order `order`.
constexpr int hermite_row(int order, int t, int u) {
  int position = n_hermite(order) - n_hermite(order - t);  // all with a smaller t
  for (int k = 0; k < u; ++k) position += order - t - k + 1;
  return position;
}
constexpr int hermite_index(int order, int t, int u, int v) { return hermite_row(order, t, u) + v; }

/// The same as a table: row[t][u] of one order.
struct HERMITE_ROWS_T {
  std::array<std::array<int, HERMITE_MAX + 1>, HERMITE_MAX + 1> row = {};
};
const HERMITE_ROWS_T& hermite_rows(int order);

/// (-1)^(t + u + v) for every position of a vector of total order `order`.
const std::vector<double>& hermite_signs(int order);

/// E_t^{ij} of one direction, i <= LMAX, j <= LMAX, t <= i + j.
struct HERMITE_EXPANSION_T {
  double e[LMAX + 1][LMAX + 1][HERMITE_MAX + 1];

  /// Fills i <= la, j <= lb. `e000` is E_0^{00} (the share of the Gaussian product factor put into this direction), pa and
  /// pb are P - A and P - B (bohr), p the exponent sum (bohr^-2).
  void fill(int la, int lb, double p, double pa, double pb, double e000);
};

/// Coulomb norm of sum_t h_t (Hermite Gaussian t of exponent p), in the scaling of the engine's Hermite vectors (the factor
/// sqrt(2) pi^(5/4) / p of each charge distribution belongs to h): sqrt(sum_tu h_t h_u (-1)^u R_{t+u}(p/2, 0) / sqrt(2p)).
/// By the Cauchy-Schwarz inequality of the Coulomb metric two distributions interact by at most the product of their norms.
class HERMITE_NORM_T {
 public:
  HERMITE_NORM_T(int order, double p);
  double operator()(const double* h) const;

 private:
  int order_;
  double odd_factorial_[HERMITE_MAX + 1];  ///< (2k-1)!!
  double radial_[HERMITE_MAX + 1];         ///< (-p)^n / ((2n + 1) sqrt(2p))
};

/// d/dA of E_t^{ij} at fixed P for i <= la, j <= lb: 2a ((P-A) E_t^{ij} + (t+1) E_{t+1}^{ij}) - i E_t^{i-1,j}, with a the
/// exponent on A and pa = P - A (Helgaker, Taylor, Theor. Chim. Acta 83 (1992) 177). The derivative with respect to B is its
/// negative.
void differentiate_expansion(const HERMITE_EXPANSION_T& from, int la, int lb, double a, double pa, HERMITE_EXPANSION_T& to);

/// Coulomb norm (HERMITE_NORM_T) of the derivative of a distribution with respect to its centre, largest direction. Orders
/// below HERMITE_MAX.
double displacement_norm(int order, double p, const double* h);

}  // namespace zentrix::INTEGRALS_2E

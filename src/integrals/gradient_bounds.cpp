#include "integrals/gradient_bounds.hpp"

#include <algorithm>
#include <cmath>

#include "integrals/hermite_product.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// Expansions of one primitive pair and of its derivative with respect to the first centre at fixed P.
struct PRODUCT_T {
  HERMITE_EXPANSIONS_T e, slope;

  PRODUCT_T(const PRIMITIVE_PAIR_T& pair, double beta, const double* separation, int la, int lb) {
    for (std::size_t k = 0; k < 3; ++k) {
      const double pa = pair.from_first[k];
      e[k].fill(la, lb, pair.exponent, pa, pa + separation[k], k == 0 ? pair.prefactor : 1.0);
      differentiate_expansion(e[k], la, lb, pair.exponent - beta, pa, slope[k]);
    }
  }
};

/// The largest norm of d/dA or d/dB: |shape| + (a/p or b/p) |displacement|, the fractions being at most 1.
double component_bound(const PRODUCT_T& product, int order, double p, const POWERS_T& a, const POWERS_T& b) {
  const HERMITE_ROWS_T& rows = hermite_rows(order);
  const HERMITE_NORM_T norm(order, p);
  double h[n_hermite(2 * LMAX_GRAD)];
  const auto expand = [&](const HERMITE_EXPANSION_T& x, const HERMITE_EXPANSION_T& y, const HERMITE_EXPANSION_T& z) {
    std::fill_n(h, n_hermite(order), 0.0);
    add_product(x, y, z, rows, a, b, 1.0, h);
  };
  double shape = 0.0;
  expand(product.slope[0], product.e[1], product.e[2]);
  shape = std::max(shape, norm(h));
  expand(product.e[0], product.slope[1], product.e[2]);
  shape = std::max(shape, norm(h));
  expand(product.e[0], product.e[1], product.slope[2]);
  shape = std::max(shape, norm(h));
  expand(product.e[0], product.e[1], product.e[2]);
  return shape + displacement_norm(order, p, h);
}

double pair_bound(const SHELL_PAIR_T& pair, int la, int lb) {
  const std::vector<double>&norm_a = component_norms(la), &norm_b = component_norms(lb);
  std::vector<double> bounds(norm_a.size() * norm_b.size(), 0.0);
  for (int n = 0; n < pair.n_primitives; ++n) {
    const PRODUCT_T product(pair.primitives[n], pair.second[n], pair.separation, la, lb);
    double* bound = bounds.data();
    for (const POWERS_T& a : powers_of(la))
      for (const POWERS_T& b : powers_of(lb))
        *bound++ += component_bound(product, la + lb, pair.primitives[n].exponent, a, b);
  }
  double largest = 0.0;
  const double* bound = bounds.data();
  for (double a : norm_a)
    for (double b : norm_b) largest = std::max(largest, *bound++ * a * b);
  return largest;
}

}  // namespace

std::vector<std::vector<double>> derivative_bounds(const SHELL_PAIRS_T& data) {
  std::vector<std::vector<double>> bounds;
  for (const PAIR_LIST_T& list : data.lists) {
    std::vector<double>& of_list = bounds.emplace_back(list.pairs.size());
#pragma omp parallel for schedule(dynamic, 4)
    for (std::size_t n = 0; n < list.pairs.size(); ++n) of_list[n] = pair_bound(list.pairs[n], list.la, list.lb);
  }
  return bounds;
}

}  // namespace zentrix::INTEGRALS_2E

#include <algorithm>

#include "integrals/coulomb_walk.hpp"
#include "integrals/gradient_2e.hpp"
#include "integrals/hermite_product.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/shell_validation.hpp"

// The energy is 1/2 sum_PQ sum_tu H^P_t (-1)^u R_(t+u)(P - Q) H^Q_u over Hermite pairs. Moving nucleus A changes the Hermite
// coefficients of its pairs at fixed centres (d/dA E_t, the "shape") and drags their centres along, dP/dA = a/p:
//
//   dE/dA = sum_P [ sum_t (dH^P_t/dA) J^P_t + (a/p) sum_t H^P_t J^P_(t+1) ],   dE/dB = the same with b/p and -dH^P_t/dA.
//
// (Helgaker, Taylor, Theor. Chim. Acta 83 (1992) 177 for the derivatives of E at fixed P.)

namespace zentrix::INTEGRALS_2E {

namespace {

/// The density in Hermite functions, with everything its derivative needs.
struct MOVING_DENSITY_T {
  ALIGNED_VECTOR hermite;        ///< H_t of every pair
  std::vector<double> shape;     ///< dH_t/dA_k at fixed centre, from 3 * pair.first on, direction by direction
  std::vector<double> norms;     ///< Coulomb norms of the pairs' densities
  std::vector<double> gradient;  ///< bounds of the Coulomb norms of their derivatives
};

void fold_moving_pair(const HERMITE_PAIRS_T& pairs, std::size_t n, const MATRIX& density, MOVING_DENSITY_T& moving) {
  const HERMITE_PAIR_T& pair = pairs.pairs[n];
  const FAMILY_PRODUCT_T product(pairs.families[pair.a], pairs.families[pair.b]);
  const HERMITE_ROWS_T& rows = hermite_rows(pair.order);
  const int nt = n_hermite(pair.order);
  const double orders = pair.a == pair.b ? 1.0 : 2.0;
  const bool one_center = product.a.atom == product.b.atom;
  HERMITE_EXPANSIONS_T slope;
  if (!one_center)
    for (std::size_t k = 0; k < 3; ++k)
      differentiate_expansion(product.e[k], product.a.l_max, product.b.l_max, product.a.exponent,
                              pair.center[k] - product.a.center[k], slope[k]);
  double* h = moving.hermite.data() + pair.first;
  double* shape = moving.shape.data() + 3 * pair.first;
  for (const FAMILY_RUN_T& ra : product.a.runs)
    for (const FAMILY_RUN_T& rb : product.b.runs) {
      double block[MAX_BLOCK];
      sum_blocks(density, product.a, ra, product.b, rb, block);
      const double* d = block;
      for (const POWERS_T& ca : powers_of(ra.l))
        for (const POWERS_T& cb : powers_of(rb.l)) {
          const double weight = orders * *d++;
          add_product(product.e, rows, ca, cb, weight, h);
          if (one_center) continue;
          add_product(slope[0], product.e[1], product.e[2], rows, ca, cb, weight, shape);
          add_product(product.e[0], slope[1], product.e[2], rows, ca, cb, weight, shape + nt);
          add_product(product.e[0], product.e[1], slope[2], rows, ca, cb, weight, shape + 2 * nt);
        }
    }
  const HERMITE_NORM_T norm(pair.order, pair.p);
  moving.norms[n] = norm(h);
  double largest = 0.0;
  if (!one_center)
    for (int k = 0; k < 3; ++k) largest = std::max(largest, norm(shape + k * nt));
  moving.gradient[n] = largest + displacement_norm(pair.order, pair.p, h);
}

MOVING_DENSITY_T fold_moving_density(const HERMITE_PAIRS_T& pairs, const MATRIX& density) {
  MOVING_DENSITY_T moving;
  moving.hermite.assign(pairs.size, 0.0);
  moving.shape.assign(3 * pairs.size, 0.0);
  moving.norms.assign(pairs.pairs.size(), 0.0);
  moving.gradient.assign(pairs.pairs.size(), 0.0);
#pragma omp parallel for schedule(dynamic, 64)
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n) fold_moving_pair(pairs, n, density, moving);
  return moving;
}

/// The pairs with one order more, their densities padded with zeros.
HERMITE_PAIRS_T raise_pairs(const HERMITE_PAIRS_T& pairs, const MOVING_DENSITY_T& moving, ALIGNED_VECTOR& hermite) {
  HERMITE_PAIRS_T raised = pairs;
  raised.size = 0;
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n) {
    raised.pairs[n].order += 1;
    raised.pairs[n].first = raised.size;
    raised.pairs[n].bound = std::max({moving.gradient[n], 1e-3 * moving.norms[n], 1e-200});
    raised.size += n_hermite(raised.pairs[n].order);
  }
  hermite.assign(raised.size, 0.0);
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n) {
    const int order = pairs.pairs[n].order;
    const double* h = moving.hermite.data() + pairs.pairs[n].first;
    for (int t = 0; t <= order; ++t)
      for (int u = 0; t + u <= order; ++u)
        for (int v = 0; t + u + v <= order; ++v) hermite[raised.pairs[n].first + hermite_index(order + 1, t, u, v)] = *h++;
  }
  return raised;
}

/// Adds one pair's share to the gradient; j is its potential up to one order above its own.
void add_pair(const HERMITE_PAIRS_T& pairs, const HERMITE_PAIR_T& pair, const MOVING_DENSITY_T& moving, const double* j,
              VECTOR& gradient) {
  const FAMILY_T &a = pairs.families[pair.a], &b = pairs.families[pair.b];
  const int order = pair.order, nt = n_hermite(order);
  const HERMITE_ROWS_T& rows = hermite_rows(order + 1);
  const double* h = moving.hermite.data() + pair.first;
  const double* shape = moving.shape.data() + 3 * pair.first;
  double force[3] = {}, turn[3] = {};
  int n = 0;
  for (int t = 0; t <= order; ++t)
    for (int u = 0; t + u <= order; ++u)
      for (int v = 0; t + u + v <= order; ++v, ++n) {
        force[0] += h[n] * j[rows.row[t + 1][u] + v];
        force[1] += h[n] * j[rows.row[t][u + 1] + v];
        force[2] += h[n] * j[rows.row[t][u] + v + 1];
        for (int k = 0; k < 3; ++k) turn[k] += shape[k * nt + n] * j[rows.row[t][u] + v];
      }
  for (int k = 0; k < 3; ++k) {
    gradient[3 * a.atom + k] += a.exponent / pair.p * force[k] + turn[k];
    gradient[3 * b.atom + k] += b.exponent / pair.p * force[k] - turn[k];
  }
}

}  // namespace

VECTOR coulomb_gradient(const MOLECULE_T& molecule, const MATRIX& density, double threshold) {
  for (const SHELL_T& shell : molecule.shells) validate_gradient_shell("coulomb_gradient", shell);
  const HERMITE_PAIRS_T pairs = make_hermite_pairs(molecule);
  const MOVING_DENSITY_T moving = fold_moving_density(pairs, to_cartesian(molecule, density));
  ALIGNED_VECTOR hermite;
  const HERMITE_PAIRS_T raised = raise_pairs(pairs, moving, hermite);
  const COULOMB_KEYS_T keys = make_keys(raised, moving.norms, threshold);
  const ALIGNED_VECTOR potential = hermite_potential(raised, hermite, keys, 1, kernels::chosen_isa());
  VECTOR gradient = VECTOR::Zero(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n)
    add_pair(pairs, pairs.pairs[n], moving, potential.data() + raised.pairs[n].first, gradient);
  return gradient;
}

}  // namespace zentrix::INTEGRALS_2E

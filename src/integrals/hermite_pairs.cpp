#include "integrals/hermite_pairs.hpp"

#include <algorithm>
#include <cmath>

#include "integrals/hermite_product.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// A pair is dropped for good when even beside the strongest pair it stays this small (hartree per unit of density): six
/// orders below the tightest share of a threshold in use.
constexpr double NEGLIGIBLE = 1e-19;

/// With exp(-100) in front no coefficients or powers of distances reach NEGLIGIBLE: distant pairs cost one product each.
constexpr double HOPELESS = 100.0;

double largest_coefficient(const FAMILY_T& family, const FAMILY_RUN_T& run) {
  double largest = 0.0;
  for (std::size_t m = run.begin; m < run.end; ++m) largest = std::max(largest, std::abs(family.members[m].coefficient));
  return largest;
}

/// Largest Coulomb norm among the products of normalised functions of the two families.
double pair_bound(const FAMILY_PRODUCT_T& product) {
  const HERMITE_NORM_T norm(product.order(), product.p);
  const HERMITE_ROWS_T& rows = hermite_rows(product.order());
  double bound = 0.0;
  for (const FAMILY_RUN_T& ra : product.a.runs)
    for (const FAMILY_RUN_T& rb : product.b.runs) {
      double largest = 0.0;
      for (int ca = 0; ca < n_cartesian(ra.l); ++ca)
        for (int cb = 0; cb < n_cartesian(rb.l); ++cb) {
          double h[n_hermite(HERMITE_MAX)];
          std::fill_n(h, n_hermite(product.order()), 0.0);
          const double normalise = shell_functions(ra.l, false)(ca, ca) * shell_functions(rb.l, false)(cb, cb);
          add_product(product.e, rows, powers_of(ra.l)[ca], powers_of(rb.l)[cb], normalise, h);
          largest = std::max(largest, norm(h));
        }
      bound = std::max(bound, largest * largest_coefficient(product.a, ra) * largest_coefficient(product.b, rb));
    }
  return bound;
}

/// First family of every atom, and the total number at the end.
std::vector<int> families_of_atoms(const std::vector<FAMILY_T>& families, int n_atoms) {
  std::vector<int> first(n_atoms + 1, 0);
  for (const FAMILY_T& family : families) ++first[family.atom + 1];
  for (int atom = 0; atom < n_atoms; ++atom) first[atom + 1] += first[atom];
  return first;
}

/// All pairs between the families of two atoms, bounds included.
std::vector<HERMITE_PAIR_T> pairs_of_atoms(const std::vector<FAMILY_T>& families, int a_begin, int a_end, int b_begin,
                                           int b_end) {
  std::vector<HERMITE_PAIR_T> pairs;
  for (int a = a_begin; a < a_end; ++a)
    for (int b = b_begin; b < std::min(b_end, a + 1); ++b) {
      if (product_exponent(families[a], families[b]) > HOPELESS) continue;
      const FAMILY_PRODUCT_T product(families[a], families[b]);
      pairs.push_back({a, b, product.order(), product.p, product.center, pair_bound(product), 0});
    }
  return pairs;
}

/// The transpose of sum_blocks: every member pair's block of the matrix gets c c' times the common one.
void spread_block(const double* block, const FAMILY_T& a, const FAMILY_RUN_T& ra, const FAMILY_T& b, const FAMILY_RUN_T& rb,
                  MATRIX& matrix) {
  const int na = n_cartesian(ra.l);
  const int nb = n_cartesian(rb.l);
  for (std::size_t ma = ra.begin; ma < ra.end; ++ma)
    for (std::size_t mb = rb.begin; mb < rb.end; ++mb) {
      const FAMILY_MEMBER_T& i = a.members[ma];
      const FAMILY_MEMBER_T& j = b.members[mb];
      const double c = i.coefficient * j.coefficient;
      for (int ca = 0; ca < na; ++ca)
        for (int cb = 0; cb < nb; ++cb) matrix(j.first + cb, i.first + ca) += c * block[ca * nb + cb];
    }
}

void fold_pair(const HERMITE_PAIRS_T& pairs, const HERMITE_PAIR_T& pair, const MATRIX& density, double* h) {
  const FAMILY_PRODUCT_T product(pairs.families[pair.a], pairs.families[pair.b]);
  const HERMITE_ROWS_T& rows = hermite_rows(pair.order);
  const double orders = pair.a == pair.b ? 1.0 : 2.0;
  std::fill_n(h, n_hermite(pair.order), 0.0);
  for (const FAMILY_RUN_T& ra : product.a.runs)
    for (const FAMILY_RUN_T& rb : product.b.runs) {
      double block[MAX_BLOCK];
      sum_blocks(density, product.a, ra, product.b, rb, block);
      const double* d = block;
      for (const POWERS_T& ca : powers_of(ra.l))
        for (const POWERS_T& cb : powers_of(rb.l)) add_product(product.e, rows, ca, cb, orders * *d++, h);
    }
}

void unfold_pair(const HERMITE_PAIRS_T& pairs, const HERMITE_PAIR_T& pair, const double* j, MATRIX& half) {
  const FAMILY_PRODUCT_T product(pairs.families[pair.a], pairs.families[pair.b]);
  const HERMITE_ROWS_T& rows = hermite_rows(pair.order);
  const double share = pair.a == pair.b ? 0.5 : 1.0;
  for (const FAMILY_RUN_T& ra : product.a.runs)
    for (const FAMILY_RUN_T& rb : product.b.runs) {
      double block[MAX_BLOCK];
      double* value = block;
      for (const POWERS_T& ca : powers_of(ra.l))
        for (const POWERS_T& cb : powers_of(rb.l)) *value++ = share * dot_product(product.e, rows, ca, cb, j);
      spread_block(block, product.a, ra, product.b, rb, half);
    }
}

}  // namespace

HERMITE_PAIRS_T make_hermite_pairs(const MOLECULE_T& molecule) {
  HERMITE_PAIRS_T result;
  result.families = make_families(molecule);
  const int n_atoms = static_cast<int>(molecule.atoms.size());
  const std::vector<int> first = families_of_atoms(result.families, n_atoms);

  std::vector<std::vector<HERMITE_PAIR_T>> found(n_atoms * (n_atoms + 1) / 2);
#pragma omp parallel for schedule(dynamic)
  for (std::size_t n = 0; n < found.size(); ++n) {
    // Row of a triangle: the root is exact at the first number of a row, so nothing is rounded into the row before.
    const int i = static_cast<int>((std::sqrt(8.0 * n + 1.0) - 1.0) / 2.0);
    const int j = static_cast<int>(n - static_cast<std::size_t>(i) * (i + 1) / 2);
    found[n] = pairs_of_atoms(result.families, first[i], first[i + 1], first[j], first[j + 1]);
  }

  double largest = 0.0;
  for (const auto& list : found)
    for (const HERMITE_PAIR_T& pair : list) largest = std::max(largest, pair.bound);
  for (const auto& list : found) {
    const std::size_t begin = result.pairs.size();
    for (const HERMITE_PAIR_T& pair : list) {
      if (pair.bound * largest < NEGLIGIBLE) continue;
      result.pairs.push_back(pair);
      result.pairs.back().first = result.size;
      result.size += n_hermite(pair.order);
    }
    if (result.pairs.size() > begin) result.ranges.push_back({begin, result.pairs.size()});
  }
  return result;
}

void fold_density(const HERMITE_PAIRS_T& pairs, const MATRIX& density, double* hermite, std::vector<double>& norms) {
#pragma omp parallel for schedule(dynamic, 64)
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n) {
    const HERMITE_PAIR_T& pair = pairs.pairs[n];
    fold_pair(pairs, pair, density, hermite + pair.first);
    norms[n] = std::max(norms[n], HERMITE_NORM_T(pair.order, pair.p)(hermite + pair.first));
  }
}

MATRIX unfold_potential(const HERMITE_PAIRS_T& pairs, const double* hermite, Eigen::Index n_components) {
  MATRIX half = MATRIX::Zero(n_components, n_components);
#pragma omp parallel for schedule(dynamic)
  for (std::size_t r = 0; r < pairs.ranges.size(); ++r)
    for (std::size_t n = pairs.ranges[r].begin; n < pairs.ranges[r].end; ++n)
      unfold_pair(pairs, pairs.pairs[n], hermite + pairs.pairs[n].first, half);
  return half + half.transpose();
}

}  // namespace zentrix::INTEGRALS_2E

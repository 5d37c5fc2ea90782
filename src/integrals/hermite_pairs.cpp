#include "integrals/hermite_pairs.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "molecule/cartesian.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

constexpr int MAX_COMPONENTS = n_cartesian(LMAX);

/// A pair is dropped for good when even beside the strongest pair it stays this small (hartree per unit of density): five
/// orders below the tightest threshold in use.
constexpr double NEGLIGIBLE = 1e-19;

/// With exp(-100) in front no coefficients or powers of distances reach NEGLIGIBLE: distant pairs cost one product each.
constexpr double HOPELESS = 100.0;

/// Exponent of the Gaussian product factor, a b / (a + b) |A - B|^2.
double product_exponent(const FAMILY_T& a, const FAMILY_T& b) {
  double distance2 = 0.0;
  for (int k = 0; k < 3; ++k) distance2 += (a.center[k] - b.center[k]) * (a.center[k] - b.center[k]);
  return a.exponent * b.exponent / (a.exponent + b.exponent) * distance2;
}

/// The two families of a pair with the expansion of their products.
struct PRODUCT_T {
  const FAMILY_T& a;
  const FAMILY_T& b;
  double p;
  std::array<double, 3> center;
  HERMITE_EXPANSION_T x, y, z;

  PRODUCT_T(const FAMILY_T& fa, const FAMILY_T& fb) : a(fa), b(fb), p(fa.exponent + fb.exponent) {
    for (int k = 0; k < 3; ++k) center[k] = (a.exponent * a.center[k] + b.exponent * b.center[k]) / p;
    // [t|u] = 2 pi^(5/2) / (p q sqrt(p + q)) R_(t+u): each distribution carries the root of 2 pi^(5/2) over its exponent.
    static const double charge = std::numbers::sqrt2 * std::pow(std::numbers::pi, 1.25);
    x.fill(a.l_max, b.l_max, p, center[0] - a.center[0], center[0] - b.center[0],
           charge / p * std::exp(-product_exponent(a, b)));
    y.fill(a.l_max, b.l_max, p, center[1] - a.center[1], center[1] - b.center[1], 1.0);
    z.fill(a.l_max, b.l_max, p, center[2] - a.center[2], center[2] - b.center[2], 1.0);
  }

  int order() const { return a.l_max + b.l_max; }
};

/// Powers of all components, by angular momentum.
const std::vector<POWERS_T>& powers_of(int l) {
  static const auto table = [] {
    std::array<std::vector<POWERS_T>, LMAX + 1> powers;
    for (int k = 0; k <= LMAX; ++k)
      for (int n = 0; n < n_cartesian(k); ++n) powers[k].push_back(cartesian_powers(k, n));
    return powers;
  }();
  return table[l];
}

/// h_t += d E_t for the product of one component of a and one of b.
void add_product(const PRODUCT_T& product, const HERMITE_ROWS_T& rows, const POWERS_T& ca, const POWERS_T& cb, double d,
                 double* h) {
  const double* ex = product.x.e[ca.x][cb.x];
  const double* ey = product.y.e[ca.y][cb.y];
  const double* ez = product.z.e[ca.z][cb.z];
  for (int t = 0; t <= ca.x + cb.x; ++t)
    for (int u = 0; u <= ca.y + cb.y; ++u) {
      const double dxy = d * ex[t] * ey[u];
      double* row = h + rows.row[t][u];
      for (int v = 0; v <= ca.z + cb.z; ++v) row[v] += dxy * ez[v];
    }
}

/// sum_t E_t j_t for the product of one component of a and one of b.
double dot_product(const PRODUCT_T& product, const HERMITE_ROWS_T& rows, const POWERS_T& ca, const POWERS_T& cb,
                   const double* j) {
  const double* ex = product.x.e[ca.x][cb.x];
  const double* ey = product.y.e[ca.y][cb.y];
  const double* ez = product.z.e[ca.z][cb.z];
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

double largest_coefficient(const FAMILY_T& family, const FAMILY_RUN_T& run) {
  double largest = 0.0;
  for (std::size_t m = run.begin; m < run.end; ++m) largest = std::max(largest, std::abs(family.members[m].coefficient));
  return largest;
}

/// Largest Coulomb norm among the products of normalised functions of the two families.
double pair_bound(const PRODUCT_T& product) {
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
          add_product(product, rows, powers_of(ra.l)[ca], powers_of(rb.l)[cb], normalise, h);
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
      const PRODUCT_T product(families[a], families[b]);
      pairs.push_back({a, b, product.order(), product.p, product.center, pair_bound(product), 0});
    }
  return pairs;
}

/// Sum over the members of two runs of c c' times their block of a matrix, nb fastest.
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
  const PRODUCT_T product(pairs.families[pair.a], pairs.families[pair.b]);
  const HERMITE_ROWS_T& rows = hermite_rows(pair.order);
  const double orders = pair.a == pair.b ? 1.0 : 2.0;
  std::fill_n(h, n_hermite(pair.order), 0.0);
  for (const FAMILY_RUN_T& ra : product.a.runs)
    for (const FAMILY_RUN_T& rb : product.b.runs) {
      double block[MAX_COMPONENTS * MAX_COMPONENTS];
      sum_blocks(density, product.a, ra, product.b, rb, block);
      const double* d = block;
      for (const POWERS_T& ca : powers_of(ra.l))
        for (const POWERS_T& cb : powers_of(rb.l)) add_product(product, rows, ca, cb, orders * *d++, h);
    }
}

void unfold_pair(const HERMITE_PAIRS_T& pairs, const HERMITE_PAIR_T& pair, const double* j, MATRIX& half) {
  const PRODUCT_T product(pairs.families[pair.a], pairs.families[pair.b]);
  const HERMITE_ROWS_T& rows = hermite_rows(pair.order);
  const double share = pair.a == pair.b ? 0.5 : 1.0;
  for (const FAMILY_RUN_T& ra : product.a.runs)
    for (const FAMILY_RUN_T& rb : product.b.runs) {
      double block[MAX_COMPONENTS * MAX_COMPONENTS];
      double* value = block;
      for (const POWERS_T& ca : powers_of(ra.l))
        for (const POWERS_T& cb : powers_of(rb.l)) *value++ = share * dot_product(product, rows, ca, cb, j);
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
    int i = static_cast<int>((std::sqrt(8.0 * n + 1.0) - 1.0) / 2.0);
    while (static_cast<std::size_t>(i + 1) * (i + 2) / 2 <= n) ++i;
    while (static_cast<std::size_t>(i) * (i + 1) / 2 > n) --i;
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

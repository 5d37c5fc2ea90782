#include "integrals/shell_pairs.hpp"

#include <omp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <numbers>
#include <numeric>
#include <utility>

#include "integrals/schwarz.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/shell_validation.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// A pair whose overlap factor exp(-mu R^2) is below exp(-90) everywhere is zero for every purpose.
constexpr double LARGEST_OVERLAP_EXPONENT = 90.0;
/// Pairs below this product with the largest bound can never pass a threshold (the tightest in use is 1e-15).
constexpr double PAIR_CUTOFF = 1e-16;
/// Primitive pairs below this product of prefactors never change a digit.
constexpr double PRIMITIVE_PAIR_CUTOFF = 1e-18;

double distance_squared(const std::array<double, 3>& a, const std::array<double, 3>& b) {
  double r2 = 0.0;
  for (int i = 0; i < 3; ++i) r2 += (a[i] - b[i]) * (a[i] - b[i]);
  return r2;
}

bool far_apart(const SHELL_T& a, const SHELL_T& b, double r2) {
  const double x = *std::min_element(a.alpha.begin(), a.alpha.end());
  const double y = *std::min_element(b.alpha.begin(), b.alpha.end());
  return x * y / (x + y) * r2 > LARGEST_OVERLAP_EXPONENT;
}

/// Lists hold pairs of up to that many primitives; steps of about 4/3 keep lanes busy without too many short lists.
int primitive_bucket(int n) {
  int bucket = 1;
  while (bucket < n) bucket += std::max(1, bucket / 3);
  return bucket;
}

/// All pairs that are not far apart, primitives appended to the molecule's array.
std::vector<SHELL_PAIR_T> candidate_pairs(SHELL_PAIRS_T& data) {
  std::vector<SHELL_PAIR_T> candidates;
  std::vector<std::size_t> first_primitive;
  for (int s = 0; s < data.n_shells(); ++s)
    for (int t = 0; t <= s; ++t) {
      const bool swap = data.shells[t].l > data.shells[s].l;
      const int i = swap ? t : s, j = swap ? s : t;
      const SHELL_T &a = data.shells[i], &b = data.shells[j];
      if (far_apart(a, b, distance_squared(data.centers[i], data.centers[j]))) continue;
      const auto primitives = primitive_pairs(a, data.centers[i], b, data.centers[j]);
      first_primitive.push_back(data.primitives.size());
      SHELL_PAIR_T pair;
      pair.n_primitives = static_cast<int>(primitives.pairs.size());
      pair.shell_i = i;
      pair.shell_j = j;
      pair.first_i = data.first[i];
      pair.first_j = data.first[j];
      for (int k = 0; k < 3; ++k) pair.separation[k] = data.centers[i][k] - data.centers[j][k];
      pair.symmetry = i == j ? 0.5 : 1.0;
      data.primitives.insert(data.primitives.end(), primitives.pairs.begin(), primitives.pairs.end());
      data.second.insert(data.second.end(), primitives.second.begin(), primitives.second.end());
      data.max_primitives = std::max(data.max_primitives, pair.n_primitives);
      candidates.push_back(pair);
    }
  for (std::size_t n = 0; n < candidates.size(); ++n) {
    candidates[n].primitives = data.primitives.data() + first_primitive[n];
    candidates[n].second = data.second.data() + first_primitive[n];
    candidates[n].growth = growth(data.shells[candidates[n].shell_i].l, data.shells[candidates[n].shell_j].l, candidates[n]);
  }
  return candidates;
}

/// Takes off the primitive pairs at the end of the list that never matter.
void trim_primitives(SHELL_PAIR_T& pair, double largest) {
  while (pair.n_primitives > 1 &&
         std::abs(pair.primitives[pair.n_primitives - 1].prefactor) * pair.growth * largest < PRIMITIVE_PAIR_CUTOFF)
    --pair.n_primitives;
}

}  // namespace

void fill_lists(SHELL_PAIRS_T& data, std::vector<SHELL_PAIR_T>& candidates) {
  double largest_bound = 0.0, largest_prefactor = 0.0;  // the latter with growth
  for (const SHELL_PAIR_T& pair : candidates) {
    largest_bound = std::max(largest_bound, pair.bound);
    largest_prefactor = std::max(largest_prefactor, std::abs(pair.primitives[0].prefactor) * pair.growth);
  }
  std::map<std::array<int, 3>, PAIR_LIST_T> lists;  // by rank, contractions and bucket
  for (SHELL_PAIR_T& pair : candidates) {
    if (pair.bound * largest_bound < PAIR_CUTOFF) continue;
    trim_primitives(pair, largest_prefactor);
    const int la = data.shells[pair.shell_i].l, lb = data.shells[pair.shell_j].l;
    PAIR_LIST_T& list = lists[{kernels::pair_rank(la, lb), pair.n_contractions, primitive_bucket(pair.n_primitives)}];
    list.la = la;
    list.lb = lb;
    list.n_contractions = pair.n_contractions;
    list.pairs.push_back(pair);
  }
  for (auto& [key, list] : lists) {
    std::stable_sort(list.pairs.begin(), list.pairs.end(),
                     [](const SHELL_PAIR_T& x, const SHELL_PAIR_T& y) { return x.bound > y.bound; });
    for (SHELL_PAIR_T& pair : list.pairs) {
      pair.block = data.block_doubles;
      data.block_doubles += list.block_size();
    }
    data.lists.push_back(std::move(list));
  }
}

const std::vector<double>& component_norms(int l) {
  static const auto all = [] {
    std::array<std::vector<double>, kernels::SP_SHELL + 1> norms;
    norms[kernels::SP_SHELL].assign(4, 1.0);
    for (int n = 0; n <= LMAX; ++n) {
      const MATRIX& functions = shell_functions(n, false);
      for (int k = 0; k < n_cartesian(n); ++k) norms[static_cast<std::size_t>(n)].push_back(functions(k, k));
    }
    return norms;
  }();
  return all[static_cast<std::size_t>(l)];
}

double growth(int la, int lb, const SHELL_PAIR_T& pair) {
  constexpr double covered = 10.0;
  const int l = la + lb;
  if (l == 0) return 1.0;
  // mean |x|^l = Gamma((l+1)/2) / sqrt(pi) / p^(l/2)
  const double width = std::pow(std::tgamma(0.5 * (l + 1)) * std::numbers::inv_sqrtpi, 1.0 / l);
  double largest = 0.0;
  for (int n = 0; n < pair.n_primitives; ++n) {
    const PRIMITIVE_PAIR_T& primitive = pair.primitives[n];
    double pa = 0.0, pb = 0.0;
    for (int i = 0; i < 3; ++i) {
      pa += primitive.from_first[i] * primitive.from_first[i];
      const double from_second = primitive.from_first[i] + pair.separation[i];
      pb += from_second * from_second;
    }
    const double s = width / std::sqrt(primitive.exponent);
    const double here = std::pow(s + std::sqrt(pa), la) * std::pow(s + std::sqrt(pb), lb);
    if (std::abs(primitive.prefactor) * here > PRIMITIVE_PAIR_CUTOFF) largest = std::max(largest, here);
  }
  return std::max(1.0, largest / covered);
}

PRIMITIVE_PAIR_T primitive_pair(double x, const std::array<double, 3>& a, double y, const std::array<double, 3>& b,
                                double coefficient) {
  static const double constant = std::sqrt(2.0) * std::pow(std::numbers::pi, 1.25);
  PRIMITIVE_PAIR_T pair;
  const double p = pair.exponent = x + y;
  for (std::size_t i = 0; i < 3; ++i) {
    pair.from_first[i] = y / p * (b[i] - a[i]);
    pair.center[i] = a[i] + pair.from_first[i];
  }
  pair.prefactor = coefficient * std::exp(-x * y / p * distance_squared(a, b)) * constant / p;
  return pair;
}

PRIMITIVE_PAIRS_T primitive_pairs(const SHELL_T& a, const std::array<double, 3>& center_a, const SHELL_T& b,
                                  const std::array<double, 3>& center_b) {
  std::vector<PRIMITIVE_PAIR_T> list;
  std::vector<double> second;
  for (int m = 0; m < a.nprim; ++m)
    for (int n = 0; n < b.nprim; ++n) {
      list.push_back(primitive_pair(a.alpha[m], center_a, b.alpha[n], center_b, a.coeff[m] * b.coeff[n]));
      second.push_back(b.alpha[n]);
    }
  std::vector<std::size_t> order(list.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t m, std::size_t n) {
    const PRIMITIVE_PAIR_T &x = list[m], &y = list[n];
    if (std::abs(x.prefactor) != std::abs(y.prefactor)) return std::abs(x.prefactor) > std::abs(y.prefactor);
    return x.exponent != y.exponent ? x.exponent > y.exponent : m < n;
  });
  PRIMITIVE_PAIRS_T sorted;
  for (std::size_t n : order) {
    sorted.pairs.push_back(list[n]);
    sorted.second.push_back(second[n]);
  }
  return sorted;
}

SHELL_PAIRS_T make_shell_pairs(const MOLECULE_T& molecule, const kernels::QUARTET_KERNELS_T& kernels, int lanes) {
  SHELL_PAIRS_T data;
  data.shells = molecule.shells;
  data.first = cartesian_offsets(molecule);
  for (const SHELL_T& shell : molecule.shells) {
    validate_shell("compute_eri_contracted", shell);
    data.centers.push_back(molecule.atoms[static_cast<std::size_t>(shell.atom)].position);
    if (shell.l <= kernels::KERNEL_LMAX) data.max_l = std::max(data.max_l, shell.l);
  }
  std::vector<SHELL_PAIR_T> candidates = candidate_pairs(data);

  data.schwarz = MATRIX::Zero(data.n_shells(), data.n_shells());
  SCHWARZ_WORK work(data, kernels, lanes);
#pragma omp parallel for schedule(dynamic, 16)
  for (SHELL_PAIR_T& pair : candidates) {
    pair.bound = work.bound(omp_get_thread_num(), pair);
    data.schwarz(pair.shell_i, pair.shell_j) = data.schwarz(pair.shell_j, pair.shell_i) = pair.bound;
  }
  fill_lists(data, candidates);
  return data;
}

}  // namespace zentrix::INTEGRALS_2E

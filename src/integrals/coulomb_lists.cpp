#include "integrals/coulomb_lists.hpp"

#include <algorithm>
#include <cmath>
#include <memory>

namespace zentrix::INTEGRALS_2E {

namespace {

/// Number of pairs by binary exponent of their key, per order.
struct KEY_HISTOGRAM_T {
  static constexpr int BINS = 512;
  static constexpr int MIDDLE = 320;  // bin of keys from 1 to 2
  std::array<std::array<double, BINS>, HERMITE_MAX + 1> count = {};

  static int bin(double value) {
    if (!(value > 0.0)) return 0;
    return std::clamp(MIDDLE + std::ilogb(value), 0, BINS - 1);
  }
};

/// Rough cost of one block in multiply-adds: the product, the R recursion, the Boys function.
double interaction_cost(int bra_order, int ket_order) {
  const double m = bra_order + ket_order;
  return 2.0 * n_hermite(bra_order) * n_hermite(ket_order) + (m + 1) * (m + 2) * (m + 3) * (m + 4) / 12.0 + 40.0;
}

/// Estimated work of a build whose keys are max(Q, S/s) and whose cut is threshold/s.
double estimated_work(const HERMITE_PAIRS_T& pairs, const std::vector<double>& norms, double threshold, double scale) {
  auto histogram = std::make_unique<KEY_HISTOGRAM_T>();
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n)
    ++histogram->count[pairs.pairs[n].order][KEY_HISTOGRAM_T::bin(std::max(pairs.pairs[n].bound, norms[n] / scale))];
  // at_least[k]: pairs of an order in bin k or above.
  const int cut = KEY_HISTOGRAM_T::bin(threshold / scale) - KEY_HISTOGRAM_T::MIDDLE;
  double work = 0.0;
  for (int ket = 0; ket <= HERMITE_MAX; ++ket) {
    std::array<double, KEY_HISTOGRAM_T::BINS + 1> at_least = {};
    for (int k = KEY_HISTOGRAM_T::BINS - 1; k >= 0; --k) at_least[k] = at_least[k + 1] + histogram->count[ket][k];
    if (at_least[0] == 0.0) continue;
    for (int bra = ket; bra <= HERMITE_MAX; ++bra) {
      double passed = 0.0;
      for (int k = 0; k < KEY_HISTOGRAM_T::BINS; ++k) {
        const int partner = std::clamp(cut + 2 * KEY_HISTOGRAM_T::MIDDLE - k, 0, KEY_HISTOGRAM_T::BINS);
        passed += histogram->count[bra][k] * at_least[partner];
      }
      work += passed * interaction_cost(bra, ket) * (bra == ket ? 0.5 : 1.0);
    }
  }
  return work;
}

void pack_block(const HERMITE_PAIRS_T& pairs, const ALIGNED_VECTOR& hermite, int n_densities, int lanes, int block,
                COULOMB_LIST_T& list) {
  const int nu = n_hermite(list.order);
  const std::vector<double>& sign = hermite_signs(list.order);
  double* geometry = list.geometry.data() + static_cast<std::size_t>(block) * 4 * lanes;
  double* h = list.h.data() + block * list.block_size;
  for (int lane = 0; lane < lanes; ++lane) {
    const std::size_t position = static_cast<std::size_t>(block) * lanes + lane;
    if (position >= list.pair.size()) {
      geometry[lane] = 1.0;
      continue;
    }
    const HERMITE_PAIR_T& pair = pairs.pairs[list.pair[position]];
    geometry[lane] = pair.p;
    for (int k = 0; k < 3; ++k) geometry[(k + 1) * lanes + lane] = pair.center[k];
    for (int d = 0; d < n_densities; ++d) {
      const double* source = hermite.data() + d * pairs.size + pair.first;
      for (int u = 0; u < nu; ++u) h[(d * nu + u) * lanes + lane] = sign[u] * source[u];
    }
  }
}

}  // namespace

COULOMB_KEYS_T make_keys(const HERMITE_PAIRS_T& pairs, const std::vector<double>& density_norms, double threshold) {
  double largest = 0.0;  // ratio S/Q
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n) largest = std::max(largest, density_norms[n] / pairs.pairs[n].bound);
  COULOMB_KEYS_T keys;
  keys.key.assign(pairs.pairs.size(), 0.0);
  keys.cut = threshold;
  if (!(largest > 0.0)) return keys;  // no density, nothing to do

  constexpr int CANDIDATES = 6;
  double scale = largest;
  double least = 0.0;
  for (int k = 0; k < CANDIDATES; ++k) {
    const double candidate = std::ldexp(largest, -2 * k);
    const double work = estimated_work(pairs, density_norms, threshold, candidate);
    if (k == 0 || work < least) {
      least = work;
      scale = candidate;
    }
  }
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n)
    keys.key[n] = std::max(pairs.pairs[n].bound, density_norms[n] / scale);
  keys.cut = threshold / scale;
  return keys;
}

int COULOMB_LIST_T::blocks_above(double least_key, int lanes) const {
  const auto end = std::partition_point(key.begin(), key.end(), [&](double k) { return k >= least_key; });
  return static_cast<int>((end - key.begin() + lanes - 1) / lanes);
}

std::vector<COULOMB_LIST_T> make_lists(const HERMITE_PAIRS_T& pairs, const COULOMB_KEYS_T& keys,
                                       const ALIGNED_VECTOR& hermite, int n_densities, int lanes) {
  std::vector<COULOMB_LIST_T> lists(HERMITE_MAX + 1);
  double largest = 0.0;
  for (double key : keys.key) largest = std::max(largest, key);
  for (std::size_t n = 0; n < pairs.pairs.size(); ++n)
    if (keys.key[n] * largest >= keys.cut) lists[pairs.pairs[n].order].pair.push_back(static_cast<int>(n));
  std::size_t total = 0;
  for (int order = 0; order <= HERMITE_MAX; ++order) {
    COULOMB_LIST_T& list = lists[order];
    list.order = order;
    list.n_blocks = static_cast<int>((list.pair.size() + lanes - 1) / lanes);
    list.block_size = static_cast<std::size_t>(n_densities) * n_hermite(order) * lanes;
    list.first = total;
    total += list.n_blocks * list.block_size;
  }
  std::erase_if(lists, [](const COULOMB_LIST_T& list) { return list.pair.empty(); });

#pragma omp parallel for schedule(dynamic)
  for (COULOMB_LIST_T& list : lists) {
    std::sort(list.pair.begin(), list.pair.end(), [&](int i, int j) {
      return keys.key[i] != keys.key[j] ? keys.key[i] > keys.key[j] : i < j;  // equal keys in a fixed order
    });
    for (int n : list.pair) list.key.push_back(keys.key[n]);
    list.geometry.assign(static_cast<std::size_t>(list.n_blocks) * 4 * lanes, 0.0);
    list.h.assign(list.n_blocks * list.block_size, 0.0);
  }
  for (COULOMB_LIST_T& list : lists) {
#pragma omp parallel for
    for (int block = 0; block < list.n_blocks; ++block) pack_block(pairs, hermite, n_densities, lanes, block, list);
  }
  return lists;
}

}  // namespace zentrix::INTEGRALS_2E

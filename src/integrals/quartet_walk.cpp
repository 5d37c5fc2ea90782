#include "integrals/quartet_walk.hpp"

#include <algorithm>
#include <cmath>

namespace zentrix::INTEGRALS_2E {

std::vector<BRA_T> bra_order(const SHELL_PAIRS_T& data) {
  std::vector<BRA_T> order;
  for (int list = static_cast<int>(data.lists.size()) - 1; list >= 0; --list) {
    const int n = static_cast<int>(data.lists[static_cast<std::size_t>(list)].pairs.size());
    for (int index = n - 1; index >= 0; --index) order.push_back({list, index});
  }
  return order;
}

int surviving_kets(const SHELL_PAIRS_T& data, const BRA_T& bra, int ket_list, double threshold) {
  const auto& kets = data.lists[static_cast<std::size_t>(ket_list)].pairs;
  const double q = data.lists[static_cast<std::size_t>(bra.list)].pairs[static_cast<std::size_t>(bra.index)].bound;
  const auto end = kets.begin() + ket_limit(data, bra, ket_list);
  return static_cast<int>(
      std::partition_point(kets.begin(), end, [&](const SHELL_PAIR_T& ket) { return q * ket.bound >= threshold; }) -
      kets.begin());
}

kernels::BATCH_T make_batch(const SHELL_PAIR_T& bra, const SHELL_PAIR_T* const* kets, int count, double primitive_cutoff) {
  kernels::BATCH_T batch;
  batch.bra = &bra;
  batch.count = count;
  double growth = 1.0;
  for (int lane = 0; lane < kernels::MAX_LANES; ++lane) {
    const SHELL_PAIR_T* ket = kets[lane < count ? lane : 0];
    growth = std::max(growth, ket->growth);
    batch.kets[lane] = ket;
    batch.scale[lane] = lane < count ? bra.symmetry * ket->symmetry * (ket == &bra ? 0.5 : 1.0) : 0.0;
  }
  batch.primitive_cutoff = primitive_cutoff / (bra.growth * growth);
  return batch;
}

MATRIX block_maxima(const SHELL_PAIRS_T& data, const std::vector<const MATRIX*>& densities) {
  const int n = data.n_shells();
  const auto functions = [&](int shell) {
    return data.first[static_cast<std::size_t>(shell) + 1] - data.first[static_cast<std::size_t>(shell)];
  };
  MATRIX maxima = MATRIX::Zero(n, n);
#pragma omp parallel for schedule(dynamic, 8)
  for (int s = 0; s < n; ++s) {
    const auto& norm_s = component_norms(data.shells[static_cast<std::size_t>(s)].l);
    for (int t = 0; t <= s; ++t) {
      const auto& norm_t = component_norms(data.shells[static_cast<std::size_t>(t)].l);
      double largest = 0.0;
      for (const MATRIX* density : densities)
        for (int b = 0; b < functions(t); ++b)
          for (int a = 0; a < functions(s); ++a)  // components repeat where contractions are merged
            largest = std::max(largest, std::abs((*density)(data.first[static_cast<std::size_t>(s)] + a,
                                                            data.first[static_cast<std::size_t>(t)] + b)) /
                                            (norm_s[static_cast<std::size_t>(a) % norm_s.size()] *
                                             norm_t[static_cast<std::size_t>(b) % norm_t.size()]));
      maxima(s, t) = maxima(t, s) = largest;
    }
  }
  return maxima;
}

void fill_panel(const MATRIX& density, const SHELL_PAIR_T& bra, int na, int nb, double* panel) {
  const int nab = na + nb;
  const Eigen::Index n = density.rows();
  for (int c = 0; c < nab; ++c) {
    const double* column = density.col(c < na ? bra.first_i + c : bra.first_j + c - na).data();
    for (Eigen::Index x = 0; x < n; ++x) panel[x * nab + c] = column[x];
  }
}

void add_panel(const double* panel, const SHELL_PAIR_T& bra, int na, int nb, Eigen::Map<MATRIX> target) {
  const int nab = na + nb;
  const Eigen::Index n = target.rows();
  for (int c = 0; c < nab; ++c) {
    double* column = target.col(c < na ? bra.first_i + c : bra.first_j + c - na).data();
    for (Eigen::Index x = 0; x < n; ++x) column[x] += panel[x * nab + c];
  }
}

std::size_t panel_doubles(const SHELL_PAIRS_T& data) {
  int widest = 0;
  for (const PAIR_LIST_T& list : data.lists) widest = std::max(widest, list.na() + list.nb());
  return static_cast<std::size_t>(data.n_components()) * static_cast<std::size_t>(widest) + kernels::MAX_LANES;
}

}  // namespace zentrix::INTEGRALS_2E

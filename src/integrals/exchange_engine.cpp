#include "integrals/exchange_engine.hpp"

#include <omp.h>

#include <algorithm>
#include <utility>

#include "integrals/ordered_sum.hpp"
#include "integrals/scalar_quartet.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// The pair itself, or that of one combination of its contractions.
const SHELL_PAIR_T& member(const SHELL_PAIR_T& pair, int combination) {
  return pair.n_contractions > 1 ? pair.members[combination] : pair;
}

/// Buffers of one thread.
struct THREAD_T {
  QUARTET_WORK_T work;
  ALIGNED_DOUBLES density_panels, exchange_panels;  ///< for every combination of the bra's contractions all densities
  std::vector<double> weight;                       ///< largest density element between a shell and the bra's shells
  std::vector<const SHELL_PAIR_T*> kets;

  THREAD_T(const SHELL_PAIRS_T& data, int lanes, std::size_t n_panels)
      : work(data, lanes),
        density_panels(n_panels * panel_doubles(data)),
        exchange_panels(n_panels * panel_doubles(data)),
        weight(static_cast<std::size_t>(data.n_shells())) {
    std::size_t longest = 0;
    for (const PAIR_LIST_T& list : data.lists) longest = std::max(longest, list.pairs.size());
    kets.reserve(longest);
  }
};

class DIRECT_BUILD {
 public:
  DIRECT_BUILD(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels, const std::vector<const MATRIX*>& densities,
               double threshold)
      : data_(data),
        kernels_(kernels),
        densities_(densities),
        threshold_(threshold),
        boys_(kernels::boys_service()),
        maxima_(block_maxima(data, densities)),
        panel_(panel_doubles(data)) {}

  /// All quartets of one bra, added to its columns of the targets: one matrix a density, one after the other.
  void bra(THREAD_T& thread, const BRA_T& bra_at, VECTOR& targets) const {
    const PAIR_LIST_T& list = data_.lists[static_cast<std::size_t>(bra_at.list)];
    const SHELL_PAIR_T& bra = list.pairs[static_cast<std::size_t>(bra_at.index)];
    double largest = 0.0;
    for (int s = 0; s < data_.n_shells(); ++s) {
      const double w = std::max(maxima_(s, bra.shell_i), maxima_(s, bra.shell_j));
      thread.weight[static_cast<std::size_t>(s)] = w;
      largest = std::max(largest, w);
    }
    bool panels_filled = false;
    for (int ket_list = 0; ket_list <= bra_at.list; ++ket_list) {
      select_kets(thread, bra, data_.lists[static_cast<std::size_t>(ket_list)], ket_limit(data_, bra_at, ket_list), largest);
      if (thread.kets.empty()) continue;
      if (!panels_filled) fill_panels(thread, bra, list);
      panels_filled = true;
      const PAIR_LIST_T& kets = data_.lists[static_cast<std::size_t>(ket_list)];
      if (list.vectorised() && kets.vectorised())
        digest_vectors(thread, bra, list, kets);
      else
        digest_scalars(thread, bra);
    }
    if (!panels_filled) return;
    const Eigen::Index size = data_.n_components();
    const double* panel = thread.exchange_panels.data();
    for (int i = 0; i < bra.n_contractions; ++i) {
      double* target = targets.data();
      for (std::size_t n = 0; n < densities_.size(); ++n, target += size * size, panel += panel_)
        add_panel(panel, member(bra, i), list.na(), list.nb(), {target, size, size});
    }
  }

 private:
  /// Kets with Q_bra Q_ket max |D| >= threshold.
  void select_kets(THREAD_T& thread, const SHELL_PAIR_T& bra, const PAIR_LIST_T& list, int limit, double largest) const {
    thread.kets.clear();
    const double required = threshold_ / bra.bound;
    const double* weight = thread.weight.data();
    for (int k = 0; k < limit; ++k) {
      const SHELL_PAIR_T& ket = list.pairs[static_cast<std::size_t>(k)];
      if (ket.bound * largest < required) break;
      if (ket.bound * std::max(weight[ket.shell_i], weight[ket.shell_j]) >= required) thread.kets.push_back(&ket);
    }
  }

  void fill_panels(THREAD_T& thread, const SHELL_PAIR_T& bra, const PAIR_LIST_T& list) const {
    double* panel = thread.density_panels.data();
    for (int i = 0; i < bra.n_contractions; ++i)
      for (const MATRIX* density : densities_) {
        fill_panel(*density, member(bra, i), list.na(), list.nb(), panel);
        panel += panel_;
      }
    std::fill_n(thread.exchange_panels.data(), panel - thread.density_panels.data(), 0.0);
  }

  void digest_vectors(THREAD_T& thread, const SHELL_PAIR_T& bra, const PAIR_LIST_T& list, const PAIR_LIST_T& kets) const {
    const auto [front, digest] = kernels_of(list, kets);
    const std::ptrdiff_t one_set = list.block_size() * kernels::row_stride(kets.la, kets.lb) * kernels_.lanes;
    const int n_kets = static_cast<int>(thread.kets.size());
    for (int k = 0; k < n_kets; k += kernels_.lanes) {
      const int count = std::min(kernels_.lanes, n_kets - k);
      kernels::BATCH_T batch = make_batch(bra, thread.kets.data() + k, count, primitive_cutoff(thread, k, count));
      front(batch, boys_, thread.work.scratch.data(), thread.work.rows.data());
      const double* rows = thread.work.rows.data();  // one set for every combination, those of the bra first
      for (int i = 0; i < bra.n_contractions; ++i)
        for (int c = 0; c < kets.n_contractions; ++c, rows += one_set) {
          for (int lane = 0; lane < kernels_.lanes; ++lane)
            batch.kets[lane] = &member(*thread.kets[static_cast<std::size_t>(lane < count ? k + lane : k)], c);
          digest_combination(thread, list, i, digest, batch, rows);
        }
    }
  }

  /// The rows of combination i of the bra, with the panels of all densities.
  void digest_combination(THREAD_T& thread, const PAIR_LIST_T& list, int i, kernels::DIGEST_ROWS digest,
                          const kernels::BATCH_T& batch, const double* rows) const {
    kernels::DIGEST_T target;
    target.na = list.na();
    target.nb = list.nb();
    const std::size_t first = static_cast<std::size_t>(i) * densities_.size() * panel_;
    target.dp = thread.density_panels.data() + first;
    target.kp = thread.exchange_panels.data() + first;
    for (std::size_t n = 0; n < densities_.size(); ++n, target.dp += panel_, target.kp += panel_)
      digest(batch, target, thread.work.scratch.data(), rows);
  }

  /// Smallest product of prefactors that matters to `count` kets from the k-th on: with the densities that they will meet,
  /// so that builds from a small change of the density leave out more.
  double primitive_cutoff(const THREAD_T& thread, int k, int count) const {
    double largest = 0.0;
    for (int n = k; n < k + count; ++n) {
      const SHELL_PAIR_T& ket = *thread.kets[static_cast<std::size_t>(n)];
      largest = std::max({largest, thread.weight[static_cast<std::size_t>(ket.shell_i)],
                          thread.weight[static_cast<std::size_t>(ket.shell_j)]});
    }
    return threshold_ * PRIMITIVE_SAFETY / largest;
  }

  std::pair<kernels::FRONT, kernels::DIGEST_ROWS> kernels_of(const PAIR_LIST_T& bras, const PAIR_LIST_T& kets) const {
    const kernels::QUARTET_KERNELS_T& table = *kernels_.table;
    if (data_.has_sp_shells) {
      const int ket_class = kernels::merged_class(kets.la, kets.lb);
      return {table.merged_front[kernels::merged_class(bras.la, bras.lb)][ket_class], table.merged_digest[ket_class]};
    }
    const int ket_class = kernels::pair_class(kets.la, kets.lb);
    return {table.front[kernels::pair_class(bras.la, bras.lb)][ket_class], table.digest_rows[ket_class]};
  }

  void digest_scalars(THREAD_T& thread, const SHELL_PAIR_T& bra) const {
    for (const SHELL_PAIR_T* ket : thread.kets) {
      scalar_block(data_, bra, *ket, thread.work.block);
      for (std::size_t n = 0; n < densities_.size(); ++n)
        digest_scalar_exchange(data_, bra, *ket, thread.work.block.data(), thread.density_panels.data() + n * panel_,
                               thread.exchange_panels.data() + n * panel_);
    }
  }

  const SHELL_PAIRS_T& data_;
  const KERNEL_CHOICE_T& kernels_;
  const std::vector<const MATRIX*>& densities_;
  double threshold_;
  kernels::BOYS_SERVICE_T boys_;
  MATRIX maxima_;
  std::size_t panel_;
};

}  // namespace

KERNEL_CHOICE_T choose_kernels(kernels::ISA isa) {
  return {&(*ZX_PICK(isa, quartet_kernels))(), &(*ZX_PICK(isa, spread_kernels))(), kernels::lane_count(isa)};
}

std::vector<MATRIX> exchange_direct(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels,
                                    const std::vector<const MATRIX*>& densities, double threshold) {
  const Eigen::Index n = data.n_components();
  const std::size_t n_densities = densities.size();
  if (n_densities == 0) return {};
  const DIRECT_BUILD build(data, kernels, densities, threshold);
  const std::vector<BRA_T> order = bra_order(data);
  const int threads = omp_get_max_threads();
  const std::size_t n_panels = n_densities * static_cast<std::size_t>(data.most_contractions());
  std::vector<THREAD_T> thread_data;
  thread_data.reserve(static_cast<std::size_t>(threads));
  for (int t = 0; t < threads; ++t) thread_data.emplace_back(data, kernels.lanes, n_panels);
  const VECTOR halves = sum_in_order(
      order.size(), static_cast<Eigen::Index>(n_densities) * n * n,
      [&](std::size_t thread, std::size_t b, VECTOR& targets) { build.bra(thread_data[thread], order[b], targets); });

  std::vector<MATRIX> exchange;
  const double* half = halves.data();
  for (std::size_t d = 0; d < n_densities; ++d, half += n * n) {
    const Eigen::Map<const MATRIX> triangle(half, n, n);
    exchange.emplace_back(triangle + triangle.transpose());
  }
  return exchange;
}

}  // namespace zentrix::INTEGRALS_2E

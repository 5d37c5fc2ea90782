#include <omp.h>

#include <algorithm>
#include <utility>

#include "integrals/eri_store.hpp"
#include "integrals/ordered_sum.hpp"
#include "integrals/scalar_quartet.hpp"

// J and K from the integral store: every block is read once and digested for all densities while it is in the cache.

namespace zentrix::INTEGRALS_2E {

namespace {

using BLOCKS = std::vector<double>;  // component blocks over pairs (SHELL_PAIR_T::block), with spare doubles at the end

/// D_ab of every pair, [a][b].
BLOCKS pair_blocks(const SHELL_PAIRS_T& data, const MATRIX& density) {
  BLOCKS blocks(static_cast<std::size_t>(data.block_doubles) + kernels::MAX_LANES);
  for (const PAIR_LIST_T& list : data.lists)
    for (const SHELL_PAIR_T& pair : list.pairs) {
      double* out = blocks.data() + pair.block;
      for (int a = 0; a < list.na(); ++a)
        for (int b = 0; b < list.nb(); ++b) *out++ = density(pair.first_i + a, pair.first_j + b);
    }
  return blocks;
}

/// The Coulomb matrix from its quarter (see kernels/digest.hpp).
MATRIX coulomb_from_blocks(const SHELL_PAIRS_T& data, const double* blocks) {
  MATRIX quarter = MATRIX::Zero(data.n_components(), data.n_components());
  for (const PAIR_LIST_T& list : data.lists)
    for (const SHELL_PAIR_T& pair : list.pairs) {
      const double* in = blocks + pair.block;
      for (int a = 0; a < list.na(); ++a)
        for (int b = 0; b < list.nb(); ++b) quarter(pair.first_i + a, pair.first_j + b) = *in++;
    }
  return 2.0 * (quarter + quarter.transpose());
}

/// Buffers of one thread.
struct THREAD_T {
  ALIGNED_DOUBLES scratch, density_panels, exchange_panels, bra_coulomb;
};

}  // namespace

class STORE_CONTRACTION {
 public:
  STORE_CONTRACTION(const ERI_STORE_T& store, const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels,
                    std::span<const MATRIX> for_j, std::span<const MATRIX> for_k)
      : store_(store), data_(data), kernels_(kernels), for_k_(for_k), panel_(panel_doubles(data)) {
    for (const MATRIX& density : for_j) pair_densities_.push_back(pair_blocks(data, density));
    for (const PAIR_LIST_T& list : data.lists) largest_block_ = std::max(largest_block_, list.block_size());
  }

  THREAD_T make_thread() const {
    THREAD_T thread;
    const auto lanes = static_cast<std::size_t>(kernels_.lanes);
    thread.scratch = ALIGNED_DOUBLES(scratch_doubles(data_.max_l, 1, kernels_.lanes));
    thread.density_panels = ALIGNED_DOUBLES(for_k_.size() * panel_ + 1);
    thread.exchange_panels = ALIGNED_DOUBLES(for_k_.size() * panel_ + 1);
    thread.bra_coulomb = ALIGNED_DOUBLES(pair_densities_.size() * static_cast<std::size_t>(largest_block_) * lanes + 1);
    return thread;
  }

  // The targets of a slot are one vector: component blocks of every Coulomb matrix, then the exchange matrices.
  Eigen::Index target_size() const { return static_cast<Eigen::Index>(exchange_offset(for_k_.size())); }
  std::size_t coulomb_offset(std::size_t n) const {
    return n * (static_cast<std::size_t>(data_.block_doubles) + kernels::MAX_LANES);
  }
  std::size_t exchange_offset(std::size_t n) const {
    const auto size = static_cast<std::size_t>(data_.n_components());
    return coulomb_offset(pair_densities_.size()) + n * size * size;
  }

  /// Segments first .. last, all of one bra.
  void bra(THREAD_T& thread, const STORE_SEGMENT_T* first, const STORE_SEGMENT_T* last, VECTOR& targets) const {
    const PAIR_LIST_T& list = data_.lists[static_cast<std::size_t>(first->bra.list)];
    const SHELL_PAIR_T& bra = list.pairs[static_cast<std::size_t>(first->bra.index)];
    const std::size_t n_ab = static_cast<std::size_t>(list.block_size());
    for (std::size_t n = 0; n < for_k_.size(); ++n)
      fill_panel(for_k_[n], bra, list.na(), list.nb(), thread.density_panels.data() + n * panel_);
    std::fill_n(thread.exchange_panels.data(), for_k_.size() * panel_, 0.0);
    const auto lanes = static_cast<std::size_t>(kernels_.lanes);
    std::fill_n(thread.bra_coulomb.data(), pair_densities_.size() * n_ab * lanes, 0.0);

    for (const STORE_SEGMENT_T* segment = first; segment != last; ++segment) {
      const PAIR_LIST_T& kets = data_.lists[static_cast<std::size_t>(segment->ket_list)];
      if (list.vectorised() && kets.vectorised())
        vectors(thread, *segment, bra, list, kets, targets);
      else
        scalars(thread, *segment, bra, list, kets, targets);
    }

    for (std::size_t n = 0; n < for_k_.size(); ++n)
      add_panel(thread.exchange_panels.data() + n * panel_, bra, list.na(), list.nb(),
                {targets.data() + exchange_offset(n), data_.n_components(), data_.n_components()});
    for (std::size_t n = 0; n < pair_densities_.size(); ++n)
      for (std::size_t ab = 0; ab < n_ab; ++ab) {
        double total = 0.0;
        for (std::size_t lane = 0; lane < lanes; ++lane) total += thread.bra_coulomb[(n * n_ab + ab) * lanes + lane];
        targets.data()[coulomb_offset(n) + static_cast<std::size_t>(bra.block) + ab] += total;
      }
  }

 private:
  void vectors(THREAD_T& thread, const STORE_SEGMENT_T& segment, const SHELL_PAIR_T& bra, const PAIR_LIST_T& list,
               const PAIR_LIST_T& kets, VECTOR& targets) const {
    const int ket_class = kernels::pair_class(kets.la, kets.lb);
    const std::size_t n_j = pair_densities_.size(), n_k = for_k_.size();
    const double* block = store_.values() + segment.offset;
    const std::size_t n_ab = static_cast<std::size_t>(list.block_size()), lanes = static_cast<std::size_t>(kernels_.lanes);
    kernels::DIGEST_T target;
    target.na = list.na();
    target.nb = list.nb();
    for (int k = 0; k < segment.kets;
         k += kernels_.lanes, block += n_ab * static_cast<std::size_t>(kets.block_size()) * lanes) {
      const SHELL_PAIR_T* pairs[kernels::MAX_LANES];
      const int count = std::min(kernels_.lanes, segment.kets - k);
      for (int lane = 0; lane < count; ++lane) pairs[lane] = &kets.pairs[static_cast<std::size_t>(k + lane)];
      const kernels::BATCH_T batch = make_batch(bra, pairs, count, 0.0);
      for (std::size_t n = 0; n < std::max(n_j, n_k); ++n) {
        if (n < n_j) {
          target.pair_density = pair_densities_[n].data();
          target.bra_density = target.pair_density + bra.block;
          target.pair_coulomb = targets.data() + coulomb_offset(n);
          target.bra_coulomb = thread.bra_coulomb.data() + n * n_ab * lanes;
        }
        if (n < n_k) {
          target.dp = thread.density_panels.data() + n * panel_;
          target.kp = thread.exchange_panels.data() + n * panel_;
        }
        const kernels::QUARTET_KERNELS_T& table = *kernels_.table;
        const auto digest = n >= n_k   ? table.digest_block_coulomb[ket_class]
                            : n >= n_j ? table.digest_block[ket_class]
                                       : table.digest_block_both[ket_class];
        digest(batch, target, thread.scratch.data(), block);
      }
    }
  }

  void scalars(THREAD_T& thread, const STORE_SEGMENT_T& segment, const SHELL_PAIR_T& bra, const PAIR_LIST_T& list,
               const PAIR_LIST_T& kets, VECTOR& targets) const {
    const double* block = store_.values() + segment.offset;
    for (int k = 0; k < segment.kets; ++k, block += list.block_size() * kets.block_size()) {
      const SHELL_PAIR_T& ket = kets.pairs[static_cast<std::size_t>(k)];
      for (std::size_t n = 0; n < for_k_.size(); ++n)
        digest_scalar_exchange(data_, bra, ket, block, thread.density_panels.data() + n * panel_,
                               thread.exchange_panels.data() + n * panel_);
      for (std::size_t n = 0; n < pair_densities_.size(); ++n)
        digest_scalar_coulomb(data_, bra, ket, block, pair_densities_[n].data(), targets.data() + coulomb_offset(n));
    }
  }

  const ERI_STORE_T& store_;
  const SHELL_PAIRS_T& data_;
  const KERNEL_CHOICE_T& kernels_;
  std::span<const MATRIX> for_k_;
  std::vector<BLOCKS> pair_densities_;
  std::size_t panel_;
  int largest_block_ = 1;
};

void ERI_STORE_T::contract(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels, std::span<const MATRIX> for_j,
                           std::span<const MATRIX> for_k, std::vector<MATRIX>& j, std::vector<MATRIX>& k) const {
  const STORE_CONTRACTION contraction(*this, data, kernels, for_j, for_k);
  std::vector<const STORE_SEGMENT_T*> first_of_bra;  // and the end
  for (const STORE_SEGMENT_T& segment : segments_)
    if (first_of_bra.empty() || segment.bra.list != first_of_bra.back()->bra.list ||
        segment.bra.index != first_of_bra.back()->bra.index)
      first_of_bra.push_back(&segment);
  const std::size_t n_bras = first_of_bra.size();
  first_of_bra.push_back(segments_.data() + segments_.size());

  const int threads = omp_get_max_threads();
  std::vector<THREAD_T> thread_data;
  thread_data.reserve(static_cast<std::size_t>(threads));
  for (int t = 0; t < threads; ++t) thread_data.push_back(contraction.make_thread());
  const VECTOR sum = sum_in_order(n_bras, contraction.target_size(), [&](std::size_t thread, std::size_t b, VECTOR& own) {
    contraction.bra(thread_data[thread], first_of_bra[b], first_of_bra[b + 1], own);
  });

  const double* total = sum.data();
  for (std::size_t d = 0; d < for_j.size(); ++d)
    j.push_back(coulomb_from_blocks(data, total + contraction.coulomb_offset(d)));
  const Eigen::Index n = data.n_components();
  for (std::size_t d = 0; d < for_k.size(); ++d) {
    const Eigen::Map<const MATRIX> half(total + contraction.exchange_offset(d), n, n);
    k.emplace_back(half + half.transpose());
  }
}

}  // namespace zentrix::INTEGRALS_2E

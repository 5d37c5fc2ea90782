#include "integrals/eri_store.hpp"

#include <omp.h>

#include <algorithm>
#include <new>

#include "integrals/scalar_quartet.hpp"
#include "report/stop.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

const PAIR_LIST_T& list_of(const SHELL_PAIRS_T& data, int list) { return data.lists[static_cast<std::size_t>(list)]; }

bool in_lanes(const SHELL_PAIRS_T& data, const STORE_SEGMENT_T& segment) {
  return list_of(data, segment.bra.list).vectorised() && list_of(data, segment.ket_list).vectorised();
}

}  // namespace

STORE_SIZE_T count_integrals(const SHELL_PAIRS_T& data, double threshold) {
  STORE_SIZE_T size;
  for (const BRA_T& bra : bra_order(data))
    for (int ket_list = 0; ket_list <= bra.list; ++ket_list) {
      const std::int64_t kets = surviving_kets(data, bra, ket_list, threshold);
      size.quartets += kets;
      size.integrals += kets * list_of(data, bra.list).block_size() * list_of(data, ket_list).block_size();
    }
  return size;
}

ERI_STORE_T::ERI_STORE_T(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels, double threshold)
    : lanes_(kernels.lanes), primitive_cutoff_(1e-3 * threshold) {
  for (const BRA_T& bra : bra_order(data))
    for (int ket_list = 0; ket_list <= bra.list; ++ket_list) {
      const int kets = surviving_kets(data, bra, ket_list, threshold);
      if (kets == 0) continue;
      segments_.push_back({bra, ket_list, kets, doubles_});
      const int width = in_lanes(data, segments_.back()) ? lanes_ : 1;
      const auto size =
          static_cast<std::size_t>(list_of(data, bra.list).block_size() * list_of(data, ket_list).block_size());
      const auto blocks = static_cast<std::size_t>((kets + width - 1) / width);
      quartets_ += kets;
      integrals_ += static_cast<std::int64_t>(size) * kets;
      doubles_ += blocks * size * static_cast<std::size_t>(width);
      doubles_ = (doubles_ + 7) / 8 * 8;  // every segment starts at a cache line
    }
}

QUARTET_INFO_T ERI_STORE_T::quartet(const SHELL_PAIRS_T& data, const STORE_SEGMENT_T& segment, int ket) const {
  const PAIR_LIST_T &bras = list_of(data, segment.bra.list), &kets = list_of(data, segment.ket_list);
  const SHELL_PAIR_T& b = bras.pairs[static_cast<std::size_t>(segment.bra.index)];
  const SHELL_PAIR_T& k = kets.pairs[static_cast<std::size_t>(ket)];
  QUARTET_INFO_T info;
  info.shell = {b.shell_i, b.shell_j, k.shell_i, k.shell_j};
  info.l = {bras.la, bras.lb, kets.la, kets.lb};
  info.components = {bras.na(), bras.nb(), kets.na(), kets.nb()};
  const auto width = static_cast<std::size_t>(in_lanes(data, segment) ? lanes_ : 1), at = static_cast<std::size_t>(ket);
  const auto size = static_cast<std::size_t>(bras.block_size() * kets.block_size());
  info.offset = segment.offset + at / width * size * width + at % width;
  info.stride = width;
  info.scale = b.symmetry * k.symmetry * (&b == &k ? 0.5 : 1.0);
  return info;
}

void ERI_STORE_T::fill_segment(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels, const STORE_SEGMENT_T& segment,
                               const kernels::BOYS_SERVICE_T& boys, QUARTET_WORK_T& work, std::vector<double>& block) {
  const PAIR_LIST_T &bras = list_of(data, segment.bra.list), &kets = list_of(data, segment.ket_list);
  const SHELL_PAIR_T& bra = bras.pairs[static_cast<std::size_t>(segment.bra.index)];
  double* out = values_.data() + segment.offset;
  if (!in_lanes(data, segment)) {
    for (int k = 0; k < segment.kets; ++k) {
      scalar_block(data, bra, kets.pairs[static_cast<std::size_t>(k)], block);
      out = std::copy(block.begin(), block.end(), out);
    }
    return;
  }
  const int ket_class = kernels::pair_class(kets.la, kets.lb);
  const auto front = kernels.table->front[kernels::pair_class(bras.la, bras.lb)][ket_class];
  for (int k = 0; k < segment.kets; k += lanes_) {
    const SHELL_PAIR_T* pairs[kernels::MAX_LANES];
    const int count = std::min(lanes_, segment.kets - k);
    for (int lane = 0; lane < count; ++lane) pairs[lane] = &kets.pairs[static_cast<std::size_t>(k + lane)];
    const kernels::BATCH_T batch = make_batch(bra, pairs, count, primitive_cutoff_);
    front(batch, boys, work.scratch.data(), work.rows.data());
    kernels.table->store_rows[ket_class](batch, bras.block_size(), work.rows.data(), out);
    out += bras.block_size() * kets.block_size() * lanes_;
  }
}

void ERI_STORE_T::fill(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels) {
  try {
    values_ = ALIGNED_DOUBLES(std::max<std::size_t>(doubles_, 8));
  } catch (const std::bad_alloc&) {
    throw run_stopped(" *** ERROR: Not enough memory for the integral store.\n            Run aborted.");
  }
  const kernels::BOYS_SERVICE_T boys = kernels::boys_service();
#pragma omp parallel
  {
    QUARTET_WORK_T work(data.max_l, data.max_primitives, lanes_);
    std::vector<double> block;
#pragma omp for schedule(dynamic, 8)
    for (const STORE_SEGMENT_T& segment : segments_) fill_segment(data, kernels, segment, boys, work, block);
  }
}

}  // namespace zentrix::INTEGRALS_2E

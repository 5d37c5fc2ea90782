#include "integrals/eri_store.hpp"

#include <omp.h>

#include <algorithm>
#include <new>

#include "integrals/scalar_quartet.hpp"
#include "report/machine_memory.hpp"
#include "report/stop.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

const PAIR_LIST_T& list_of(const SHELL_PAIRS_T& data, int list) { return data.lists[static_cast<std::size_t>(list)]; }

}  // namespace

bool in_lanes(const SHELL_PAIRS_T& data, const STORE_SEGMENT_T& segment) {
  return list_of(data, segment.bra.list).vectorised() && list_of(data, segment.ket_list).vectorised();
}

std::size_t segment_doubles(const SHELL_PAIRS_T& data, const STORE_SEGMENT_T& segment, int lanes) {
  const int width = in_lanes(data, segment) ? lanes : 1;
  const auto size =
      static_cast<std::size_t>(list_of(data, segment.bra.list).block_size() * list_of(data, segment.ket_list).block_size());
  const auto blocks = static_cast<std::size_t>((segment.kets + width - 1) / width);
  return (blocks * size * static_cast<std::size_t>(width) + 7) / 8 * 8;  // every segment starts at a cache line
}

void compute_segment(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels, const STORE_SEGMENT_T& segment,
                     double primitive_cutoff, const kernels::BOYS_SERVICE_T& boys, QUARTET_WORK_T& work, double* out) {
  const PAIR_LIST_T &bras = list_of(data, segment.bra.list), &kets = list_of(data, segment.ket_list);
  const SHELL_PAIR_T& bra = bras.pairs[static_cast<std::size_t>(segment.bra.index)];
  if (!in_lanes(data, segment)) {
    for (int k = 0; k < segment.kets; ++k) {
      scalar_block(data, bra, kets.pairs[static_cast<std::size_t>(k)], work.block);
      out = std::copy(work.block.begin(), work.block.end(), out);
    }
    return;
  }
  const int ket_class = kernels::pair_class(kets.la, kets.lb), lanes = kernels.lanes;
  const auto front = kernels.table->front[kernels::pair_class(bras.la, bras.lb)][ket_class];
  for (int k = 0; k < segment.kets; k += lanes) {
    const SHELL_PAIR_T* pairs[kernels::MAX_LANES];
    const int count = std::min(lanes, segment.kets - k);
    for (int lane = 0; lane < count; ++lane) pairs[lane] = &kets.pairs[static_cast<std::size_t>(k + lane)];
    const kernels::BATCH_T batch = make_batch(bra, pairs, count, primitive_cutoff);
    front(batch, boys, work.scratch.data(), work.rows.data());
    kernels.table->store_rows[ket_class](batch, bras.block_size(), work.rows.data(), out);
    out += bras.block_size() * kets.block_size() * lanes;
  }
}

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
    : lanes_(kernels.lanes), primitive_cutoff_(PRIMITIVE_SAFETY * threshold) {
  for (const BRA_T& bra : bra_order(data))
    for (int ket_list = 0; ket_list <= bra.list; ++ket_list) {
      const int kets = surviving_kets(data, bra, ket_list, threshold);
      if (kets == 0) continue;
      segments_.push_back({bra, ket_list, kets, doubles_});
      quartets_ += kets;
      integrals_ += std::int64_t{list_of(data, bra.list).block_size()} * list_of(data, ket_list).block_size() * kets;
      doubles_ += segment_doubles(data, segments_.back(), lanes_);
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

void ERI_STORE_T::fill(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels) {
  try {
    if (sizeof(double) * static_cast<double>(doubles_) > machine_memory()) throw std::bad_alloc();
    values_ = ALIGNED_DOUBLES(std::max<std::size_t>(doubles_, 8));
  } catch (const std::bad_alloc&) {
    throw run_stopped(" *** ERROR: Not enough memory for the integral store.\n            Run aborted.");
  }
  const kernels::BOYS_SERVICE_T boys = kernels::boys_service();
#pragma omp parallel
  {
    QUARTET_WORK_T work(data.max_l, data.max_primitives, lanes_);
#pragma omp for schedule(dynamic, 8)
    for (const STORE_SEGMENT_T& segment : segments_)
      compute_segment(data, kernels, segment, primitive_cutoff_, boys, work, values_.data() + segment.offset);
  }
}

}  // namespace zentrix::INTEGRALS_2E

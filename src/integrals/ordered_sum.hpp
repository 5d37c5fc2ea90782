#pragma once

#include <omp.h>

#include <cstddef>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "linalg/matrix.hpp"

namespace zentrix::INTEGRALS_2E {

/// Sum of what numbered slots of a threaded build contribute, added in the order of their numbers whichever thread is done
/// first: equal digits in every run. A part that must wait for an earlier one is kept, the memory of added ones goes to the
/// next slot; so there are hardly more parts at a time than threads. Safe to call from several threads.
class ORDERED_SUM_T {
 public:
  /// The sum has `size` numbers, zero at first.
  explicit ORDERED_SUM_T(Eigen::Index size) : total_(VECTOR::Zero(size)) {}

  /// Zeros for the contributions of a slot.
  VECTOR take() {
    VECTOR part;
    {
      const std::scoped_lock lock(mutex_);
      if (!spare_.empty()) {
        part = std::move(spare_.back());
        spare_.pop_back();
      }
    }
    part.setZero(total_.size());
    return part;
  }

  /// Hands in the contributions of slot 0, 1, 2, ..., each once.
  void give(int slot, VECTOR part) {
    const std::scoped_lock lock(mutex_);
    waiting_.emplace(slot, std::move(part));
    for (auto next = waiting_.find(next_); next != waiting_.end(); next = waiting_.find(next_)) {
      total_ += next->second;
      spare_.push_back(std::move(next->second));
      waiting_.erase(next);
      ++next_;
    }
  }

  /// The sum over all slots handed in; afterwards the object is empty.
  VECTOR take_total() { return std::move(total_); }

 private:
  std::mutex mutex_;
  VECTOR total_;
  int next_ = 0;                   ///< first slot not yet added
  std::map<int, VECTOR> waiting_;  ///< handed in, but an earlier one is missing
  std::vector<VECTOR> spare_;
};

/// Sum of `size` numbers to which work(thread, item, target) adds what item 0 .. n_items - 1 contributes, threaded. Item n
/// always goes to slot n mod slots, a slot is worked off in order by one thread (number `thread`, for buffers of its own),
/// and slots are added in order: equal thread counts give equal digits whichever thread takes which slot. More slots than
/// threads balance the load.
template <class WORK>
VECTOR sum_in_order(std::size_t n_items, Eigen::Index size, const WORK& work) {
  constexpr int slots_per_thread = 16;
  const int threads = omp_get_max_threads();
  const int slots = threads == 1 ? 1 : slots_per_thread * threads;
  ORDERED_SUM_T sum(size);
#pragma omp parallel for schedule(dynamic, 1)
  for (int slot = 0; slot < slots; ++slot) {
    VECTOR target = sum.take();
    for (auto item = static_cast<std::size_t>(slot); item < n_items; item += static_cast<std::size_t>(slots))
      work(static_cast<std::size_t>(omp_get_thread_num()), item, target);
    sum.give(slot, std::move(target));
  }
  return sum.take_total();
}

}  // namespace zentrix::INTEGRALS_2E

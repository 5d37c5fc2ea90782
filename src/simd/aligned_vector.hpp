#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace zentrix {

/// Allocator of memory that begins on a cache line, so that no vector load of a kernel straddles two.
template <class T>
struct CACHE_LINE_ALLOCATOR {
  using value_type = T;
  static constexpr std::align_val_t LINE{64};
  CACHE_LINE_ALLOCATOR() = default;
  template <class U>
  CACHE_LINE_ALLOCATOR(const CACHE_LINE_ALLOCATOR<U>&) {}
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), LINE)); }
  void deallocate(T* p, std::size_t) { ::operator delete(p, LINE); }
  bool operator==(const CACHE_LINE_ALLOCATOR&) const { return true; }
};

using ALIGNED_VECTOR = std::vector<double, CACHE_LINE_ALLOCATOR<double>>;

}  // namespace zentrix

#include "integrals/workspace.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <new>

namespace zentrix::INTEGRALS_2E {

namespace {

/// Components of the levels l .. top.
std::size_t components(int l, int top) {
  std::size_t n = 0;
  for (int level = l; level <= top; ++level) n += static_cast<std::size_t>(n_cartesian(level));
  return n;
}

}  // namespace

ALIGNED_DOUBLES::ALIGNED_DOUBLES(std::size_t n) : size_(n) {
  constexpr std::size_t line = 64, large_page = std::size_t{2} << 20;
  const std::size_t bytes = n * sizeof(double);
  const std::size_t alignment = bytes >= 8 * large_page ? large_page : line;
  const std::size_t rounded = (bytes + alignment - 1) / alignment * alignment;
  data_.reset(static_cast<double*>(std::aligned_alloc(alignment, std::max(rounded, alignment))));
  if (!data_) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
  if (alignment == large_page) (void)madvise(data_.get(), rounded, MADV_HUGEPAGE);  // a wish; nothing depends on it
#endif
}

std::size_t scratch_doubles(int l, int max_primitives, int lanes) {
  // Front: contracted [e|f], one buffer of the recursion per ket level (planes m over all e), transposed ket primitives,
  // their Boys values and the factors of merged shells.
  const auto top = static_cast<std::size_t>(2 * l);
  const std::size_t contracted = components(0, 2 * l) * components(0, 2 * l);
  const std::size_t work = components(0, 2 * l) * (2 * top + 1 + top * (top + 1) / 2);
  const std::size_t kets = (9 + 2 * top + 2 + 4) * static_cast<std::size_t>(max_primitives) + 4;
  // Back: densities and sums [c][a, b] and [d][a, b], rounded up to whole transposed blocks, and two blocks [c][d].
  const auto n = static_cast<std::size_t>(n_cartesian(l));
  const std::size_t back = 4 * (2 * n * n + 8) + 2 * (n * n + 8);
  return (contracted + work + std::max(kets, back)) * static_cast<std::size_t>(lanes);
}

std::size_t scratch_doubles(const SHELL_PAIRS_T& data, int lanes) {
  const std::size_t plain = scratch_doubles(data.max_l, data.max_primitives, lanes);
  if (data.most_contractions() == 1) return plain;
  // Beyond that, the sums of all combinations and of those of the ket, and the weights of the ket primitives.
  std::size_t widest = 0;
  for (const PAIR_LIST_T& list : data.lists)
    widest = std::max(widest, static_cast<std::size_t>(list.n_contractions) * components(list.la, list.la + list.lb));
  const auto weights = static_cast<std::size_t>(data.most_contractions() * data.max_primitives + kernels::MAX_LANES);
  return plain + (2 * widest * widest + weights) * static_cast<std::size_t>(lanes);
}

std::size_t gradient_scratch_doubles(int l, int max_primitives, int lanes, int n_densities) {
  // Transformed density products and contracted sums [e|f], the recursion's buffers with e and f one higher, densities of
  // the kets, ket primitives with their second exponents and Boys values.
  const auto top = static_cast<std::size_t>(2 * l + 1);
  const std::size_t products = 2 * components(0, 2 * l) * components(0, 2 * l);
  const std::size_t work = components(0, 2 * l + 1) * (2 * top + top * (top + 1) / 2);
  const std::size_t kets = (9 + 1 + 2 * top + 2) * static_cast<std::size_t>(max_primitives);
  const auto n = static_cast<std::size_t>(n_cartesian(l));
  const std::size_t densities = static_cast<std::size_t>(n_densities) * 2 * (2 * n * n + 8);
  return (products + work + kets + densities) * static_cast<std::size_t>(lanes);
}

std::size_t row_doubles(int l, int lanes) {
  const auto n = static_cast<std::size_t>(n_cartesian(l));
  return n * n * (components(0, 2 * l) + 1) * static_cast<std::size_t>(lanes);
}

std::size_t row_doubles(const SHELL_PAIRS_T& data, int lanes) {
  const std::size_t plain = row_doubles(data.max_l, lanes);
  if (data.most_contractions() == 1) return plain;
  int most_rows = 0, longest = 0;
  for (const PAIR_LIST_T& list : data.lists) {
    most_rows = std::max(most_rows, list.n_contractions * list.block_size());
    longest = std::max(longest, list.n_contractions * kernels::row_stride(list.la, list.lb));
  }
  return std::max(plain, static_cast<std::size_t>(most_rows) * static_cast<std::size_t>(longest * lanes));
}

}  // namespace zentrix::INTEGRALS_2E

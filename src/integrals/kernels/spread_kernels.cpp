#include "integrals/kernels/spread_kernels.hpp"

#include "integrals/kernels/components.hpp"

namespace zentrix::kernels::ZX_ISA {

namespace {

/// to[0 .. N) = the first N <= LANES elements of v, in accesses of 8, 4, 2 and 1 doubles: what lies behind belongs to
/// another ket.
template <int N>
ZX_INLINE void store_first(double* to, vec v) {
  using pair __attribute__((vector_size(16), aligned(8))) = double;
  if constexpr (N == LANES) {
    store(to, v);
  } else {
    int at = 0;
#if defined(__AVX512F__)
    using quad __attribute__((vector_size(32), aligned(8))) = double;
    if constexpr ((N & 4) != 0) {
      *reinterpret_cast<quad*>(to) = __builtin_shufflevector(v, v, 0, 1, 2, 3);
      v = __builtin_shufflevector(v, v, 4, 5, 6, 7, 0, 1, 2, 3);
      at = 4;
    }
#endif
    if constexpr ((N & 2) != 0) {
      *reinterpret_cast<pair*>(to + at) = __builtin_shufflevector(v, v, 0, 1);
      v[0] = v[2];
      at += 2;
    }
    if constexpr ((N & 1) != 0) to[at] = v[0];
  }
}

template <int LC, int LD>
struct SPREAD_OF_CLASS {
  static constexpr int NC = component_count(LC), ND = component_count(LD);

  /// Components d = AT .. of one row (ab|c.), transposed LANES at a time.
  template <int AT>
  static ZX_INLINE void row(const SPREAD_T& target, const double* block, double* out) {
    constexpr int n = ND - AT < LANES ? ND - AT : LANES;
    vec lanes[LANES];
    for (int d = 0; d < n; ++d) lanes[d] = load(block + (AT + d) * LANES);
    for (int d = n; d < LANES; ++d) lanes[d] = vec{};
    transpose(lanes);
    for (int lane = 0; lane < target.count; ++lane) store_first<n>(out + target.corner[lane] + AT, lanes[lane]);
    if constexpr (AT + n < ND) row<AT + n>(target, block, out);
  }

  static void run(const SPREAD_T& target, int n_rows, const double* block) {
    double* rectangle = target.panel;
    for (int ab = 0; ab < n_rows; ++ab, rectangle += target.ab_stride)
      for (int c = 0; c < NC; ++c, block += ND * LANES) {
        double* out = rectangle + c * target.row_stride;
        if constexpr (ND == 1) {
          for (int lane = 0; lane < target.count; ++lane) out[target.corner[lane]] = block[lane];
        } else {
          row<0>(target, block, out);
        }
      }
  }
};

/// The LANES x LANES corners at `lower` and `upper` become the sum of the first with the transpose of the second, and its
/// transpose.
ZX_INLINE void mirror_corners(double* lower, double* upper, long stride) {
  vec a[LANES], b[LANES];
  for (int i = 0; i < LANES; ++i) {
    a[i] = load(lower + i * stride);
    b[i] = load(upper + i * stride);
  }
  transpose(b);
  for (int i = 0; i < LANES; ++i) {
    a[i] += b[i];
    store(lower + i * stride, a[i]);
  }
  transpose(a);
  for (int i = 0; i < LANES; ++i) store(upper + i * stride, a[i]);
}

void mirror(double* square, int n, long stride) {
  for (int i = 0; i < n; i += LANES)
    for (int j = 0; j <= i; j += LANES) mirror_corners(square + i * stride + j, square + j * stride + i, stride);
}

template <int CLASS, int LC = 0, int LD = 0>
void fill(SPREAD_KERNELS_T& kernels) {
  if constexpr (CLASS < KERNEL_PAIR_CLASSES) {
    kernels.spread[CLASS] = SPREAD_OF_CLASS<LC, LD>::run;
    fill<CLASS + 1, (LD == LC ? LC + 1 : LC), (LD == LC ? 0 : LD + 1)>(kernels);
  }
}

}  // namespace

const SPREAD_KERNELS_T& spread_kernels() {
  static const SPREAD_KERNELS_T kernels = [] {
    SPREAD_KERNELS_T table{};
    fill<0>(table);
    table.mirror = mirror;
    return table;
  }();
  return kernels;
}

}  // namespace zentrix::kernels::ZX_ISA

#pragma once

#include <utility>

#include "integrals/kernels/boys_lanes.hpp"
#include "integrals/kernels/coulomb_kernels.hpp"

namespace zentrix::kernels::ZX_ISA {

constexpr int hermite_count(int order) { return (order + 1) * (order + 2) * (order + 3) / 6; }

/// Calls f(integral constant 0), ..., f(integral constant N - 1).
template <int N, class F>
ZX_INLINE void unroll(F&& f) {
  [&]<int... I>(std::integer_sequence<int, I...>) __attribute__((always_inline)) {
    (f(std::integral_constant<int, I>{}), ...);
  }
  (std::make_integer_sequence<int, N>{});
}

/// Keeps a loaded value in a register: without it gcc reads a value that is used twice twice from memory, and loads, not
/// multiply-adds, set the pace of the long products.
ZX_INLINE void keep(vec& value) {
#if defined(__AVX512F__)
  asm("" : "+v"(value));
#elif defined(__AVX2__)
  asm("" : "+x"(value));
#else
  (void)value;
#endif
}

/// The powers of all Hermite functions up to ORDER, in the order of the Hermite vectors (z fastest).
template <int ORDER>
struct HERMITE_POWERS_T {
  int t[hermite_count(ORDER)] = {};
  int u[hermite_count(ORDER)] = {};
  int v[hermite_count(ORDER)] = {};
  constexpr HERMITE_POWERS_T() {
    int n = 0;
    for (int i = 0; i <= ORDER; ++i)
      for (int j = 0; i + j <= ORDER; ++j)
        for (int k = 0; i + j + k <= ORDER; ++k, ++n) {
          t[n] = i;
          u[n] = j;
          v[n] = k;
        }
  }
};

/// What the R recursion of one block starts from: P - Q and base[m] = (-2 alpha)^m F_m(alpha |P-Q|^2) / sqrt(p + q) with
/// alpha = p q / (p + q). Filled in two steps: kernels take a few blocks through the first, then through the second, so that
/// the long chains of dependent operations of neighbouring blocks overlap.
template <int M>
struct INTERACTION_T {
  vec x, y, z;
  vec argument, scale, step;
  vec base[M + 1];

  ZX_INLINE void set_geometry(const COULOMB_BRA_T& bra, const double* geometry, vec weight) {
    const vec q = load(geometry);
    x = bra.center[0] - load(geometry + LANES);
    y = bra.center[1] - load(geometry + 2 * LANES);
    z = bra.center[2] - load(geometry + 3 * LANES);
    const vec root = rsqrt(bra.p + q);
    const vec alpha = (bra.p * root) * (q * root);
    argument = alpha * (x * x + y * y + z * z);
    scale = weight * root;
    step = -2.0 * alpha;
  }

  ZX_INLINE void set_base(const BOYS_SERVICE_T& boys) {
    boys_lanes<M>(boys, argument, base);
    vec factor = scale;
    for (int m = 0; m <= M; ++m) {
      base[m] *= factor;
      factor *= step;
    }
  }
};

}  // namespace zentrix::kernels::ZX_ISA

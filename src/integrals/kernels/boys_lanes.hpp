#pragma once

#include "integrals/kernels/boys_cells.hpp"
#include "simd/simd.hpp"

// The Boys function in vector lanes: degree-6 polynomial cells for the highest order, downward recursion for the others.

namespace zentrix::kernels::ZX_ISA {

/// Coefficient k of every lane's cell, `offset` doubles into the table: LANES cache lines, transposed.
ZX_INLINE void load_cells(const double* cells, mask offset, vec* coefficient) {
  // Through memory: one store and LANES loads are cheaper than taking a vector apart, and the barrier keeps them.
  alignas(sizeof(vec)) long long at[LANES];
  *reinterpret_cast<mask*>(at) = offset;
  __asm__("" : "+m"(at));
  for (int lane = 0; lane < LANES; ++lane) coefficient[lane] = load(cells + at[lane]);
  transpose(coefficient);
  if constexpr (LANES == 4) {
    for (int lane = 0; lane < LANES; ++lane) coefficient[4 + lane] = load(cells + at[lane] + 4);
    transpose(coefficient + 4);
  }
}

/// exp(-x/16) for |x| <= 1/2, Taylor polynomial of degree 7 (error 2e-17).
ZX_INLINE vec exp_inside_cell(vec x) {
  const vec y = x * (-1.0 / BOYS_CELLS_PER_UNIT);
  const vec y2 = y * y;
  const vec high = (y * (1.0 / 5040) + 1.0 / 720) * y2 + (y * (1.0 / 120) + 1.0 / 24);
  return high * (y2 * y2) + ((y * (1.0 / 6) + 0.5) * y2 + (y + 1.0));
}

/// F_M by the leading asymptotic term, (2M-1)!! / 2^(M+1) sqrt(pi / T^(2M+1)).
template <int M>
ZX_INLINE vec boys_asymptotic(vec t) {
  const vec r = rsqrt(t);
  const vec r2 = r * r;
  vec value = 0.88622692545275801365 * r;
  for (int n = 0; n < M; ++n) value *= (n + 0.5) * r2;
  return value;
}

/// F_0(t) .. F_M(t) into f[0 .. M], t >= 0 in every lane.
template <int M>
ZX_INLINE void boys_lanes(const BOYS_SERVICE_T& service, vec t, vec* f) {
  static_assert(M <= BOYS_LANES_MMAX);
  if (__builtin_expect(service.precise, 0)) {
    alignas(sizeof(vec)) double arguments[LANES], values[(M + 1) * LANES];
    store(arguments, t);
    boys_series_lanes(M, arguments, values, LANES);
    for (int m = 0; m <= M; ++m) f[m] = load(values + m * LANES);
    return;
  }
  constexpr double limit = boys_cell_limit(M);
  const mask beyond = t >= limit;
  const vec clamped = beyond ? broadcast(limit - 0.5 / BOYS_CELLS_PER_UNIT) : t;
  // The cell number by rounding at 2^52: it then stands in the low bits of the mantissa.
  constexpr double magic = 0x1.8p52;
  const vec scaled = clamped * static_cast<double>(BOYS_CELLS_PER_UNIT) - 0.5;
  const vec shifted = scaled + magic;
  const vec x = scaled - (shifted - magic);
  vec c[8];
  load_cells(service.cells[M], (reinterpret_cast<mask>(shifted) & 0xfffff) << 3, c);
  const vec x2 = x * x, x4 = x2 * x2;  // short chains instead of Horner's rule: the latency is what counts here
  vec top = (c[0] + c[1] * x) + (c[2] + c[3] * x) * x2 + ((c[4] + c[5] * x) + c[6] * x2) * x4;
  vec e = {};
  if constexpr (M > 0) e = c[7] * exp_inside_cell(x);
  if (__builtin_expect(any(beyond), 0)) {
    top = beyond ? boys_asymptotic<M>(beyond ? t : broadcast(limit)) : top;
    e = beyond ? vec{} : e;
  }
  f[M] = top;
  const vec twice = 2.0 * t;
#pragma GCC unroll 20
  for (int m = M - 1; m >= 0; --m) f[m] = (twice * f[m + 1] + e) * (1.0 / (2 * m + 1));
}

}  // namespace zentrix::kernels::ZX_ISA

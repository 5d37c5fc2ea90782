#pragma once

#include "integrals/kernels/boys_cells.hpp"
#include "integrals/kernels/simd.hpp"

// The Boys function in vector lanes: degree-6 polynomial cells for the highest order, downward recursion for the others.

namespace zentrix::kernels::ZX_ISA {

/// Coefficient k of every lane's cell: LANES cache lines, transposed.
ZX_INLINE void load_cells(const double* cells, const int* cell, vec* coefficient) {
  for (int lane = 0; lane < LANES; ++lane) coefficient[lane] = load(cells + 8 * static_cast<long>(cell[lane]));
  transpose(coefficient);
  if constexpr (LANES == 4) {
    for (int lane = 0; lane < LANES; ++lane) coefficient[4 + lane] = load(cells + 8 * static_cast<long>(cell[lane]) + 4);
    transpose(coefficient + 4);
  }
}

/// exp(-x/16) for |x| <= 1/2, Taylor polynomial of degree 7 (error 2e-17).
ZX_INLINE vec exp_inside_cell(vec x) {
  const vec y = x * (-1.0 / BOYS_CELLS_PER_UNIT);
  vec r = y * (1.0 / 5040) + 1.0 / 720;
  r = r * y + 1.0 / 120;
  r = r * y + 1.0 / 24;
  r = r * y + 1.0 / 6;
  r = r * y + 0.5;
  r = r * y + 1.0;
  return r * y + 1.0;
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
  const vec scaled = clamped * static_cast<double>(BOYS_CELLS_PER_UNIT);
  const index_vec index = __builtin_convertvector(scaled, index_vec);
  const vec x = scaled - (__builtin_convertvector(index, vec) + 0.5);
  alignas(64) int cell[LANES];
  for (int lane = 0; lane < LANES; ++lane) cell[lane] = index[lane];
  vec c[8];
  load_cells(service.cells[M], cell, c);
  vec top = c[6];
  for (int k = 5; k >= 0; --k) top = top * x + c[k];
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

#pragma once

#include <immintrin.h>

#ifndef ZX_ISA
#define ZX_ISA baseline
#endif

// Vectors of doubles by the compilers' vector extensions: + - * / and comparisons are written as for scalars, scalars are
// spread to all lanes. The width follows the instruction set that the file is compiled for.

#define ZX_INLINE __attribute__((always_inline)) inline

namespace zentrix::kernels::ZX_ISA {

#if defined(__AVX512F__)
inline constexpr int LANES = 8;
#else
inline constexpr int LANES = 4;  // two 128-bit registers in the baseline build
#endif

typedef double vec __attribute__((vector_size(8 * LANES)));
typedef long long mask __attribute__((vector_size(8 * LANES)));
typedef int index_vec __attribute__((vector_size(4 * LANES)));
typedef double unaligned_vec __attribute__((vector_size(8 * LANES), aligned(8)));

/// All lanes equal to x.
ZX_INLINE vec broadcast(double x) { return x - vec{}; }
/// LANES consecutive doubles at any address.
ZX_INLINE vec load(const double* p) { return *reinterpret_cast<const unaligned_vec*>(p); }
ZX_INLINE void store(double* p, vec v) { *reinterpret_cast<unaligned_vec*>(p) = v; }

ZX_INLINE bool any(mask m) {
#if defined(__AVX512F__)
  return _mm512_movepi64_mask(reinterpret_cast<__m512i>(m)) != 0;
#elif defined(__AVX2__)
  return _mm256_movemask_pd(reinterpret_cast<__m256d>(m)) != 0;
#else
  return (m[0] | m[1] | m[2] | m[3]) != 0;
#endif
}

ZX_INLINE vec select(mask m, vec yes, vec no) { return m ? yes : no; }
ZX_INLINE vec min(vec a, vec b) { return a < b ? a : b; }
ZX_INLINE vec max(vec a, vec b) { return a > b ? a : b; }

/// Sum over the lanes, in the fixed order ((0+4)+(2+6)) + ((1+5)+(3+7)) or its four-lane counterpart.
ZX_INLINE double sum(vec v) {
  if constexpr (LANES == 8)
    return ((v[0] + v[4 % LANES]) + (v[2] + v[6 % LANES])) + ((v[1] + v[5 % LANES]) + (v[3] + v[7 % LANES]));
  else
    return (v[0] + v[2]) + (v[1] + v[3]);
}

/// Largest |x| over the lanes.
ZX_INLINE double largest_magnitude(vec v) {
  vec m = max(v, -v);
#if defined(__AVX512F__)
  m = max(m, __builtin_shufflevector(m, m, 4, 5, 6, 7, 0, 1, 2, 3));
  m = max(m, __builtin_shufflevector(m, m, 2, 3, 0, 1, 6, 7, 4, 5));
  m = max(m, __builtin_shufflevector(m, m, 1, 0, 3, 2, 5, 4, 7, 6));
#else
  m = max(m, __builtin_shufflevector(m, m, 2, 3, 0, 1));
  m = max(m, __builtin_shufflevector(m, m, 1, 0, 3, 2));
#endif
  return m[0];
}

/// 1/sqrt(x) for positive normal x, to about one unit in the last place.
ZX_INLINE vec rsqrt(vec x) {
#if defined(__AVX512F__)
  vec r = _mm512_maskz_rsqrt14_pd(0xff, x);
  const vec h = 0.5 * x;
  r = r * (1.5 - h * r * r);
  const vec e = 0.5 - h * r * r;  // two Newton steps: 2^-14 -> 2^-27 -> 2^-53
  return r + r * e;
#elif defined(__AVX2__)
  return 1.0 / static_cast<vec>(_mm256_sqrt_pd(x));
#else
  const __m128d lo = _mm_sqrt_pd(__m128d{x[0], x[1]}), hi = _mm_sqrt_pd(__m128d{x[2], x[3]});
  return 1.0 / vec{lo[0], lo[1], hi[0], hi[1]};
#endif
}

/// In-place transpose of LANES vectors: row r, lane c <-> row c, lane r.
ZX_INLINE void transpose(vec* r) {
#if defined(__AVX512F__)
  vec s[8], t[8];
  for (int i = 0; i < 8; i += 2) {  // 2x2 blocks inside 128-bit quarters
    s[i] = __builtin_shufflevector(r[i], r[i + 1], 0, 8, 2, 10, 4, 12, 6, 14);
    s[i + 1] = __builtin_shufflevector(r[i], r[i + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  }
  for (int i = 0; i < 8; i += 4)  // quarters of rows i..i+3: even and odd quarters together
    for (int j = 0; j < 2; ++j) {
      t[i + j] = __builtin_shufflevector(s[i + j], s[i + j + 2], 0, 1, 4, 5, 8, 9, 12, 13);
      t[i + j + 2] = __builtin_shufflevector(s[i + j], s[i + j + 2], 2, 3, 6, 7, 10, 11, 14, 15);
    }
  for (int j = 0; j < 4; ++j) {
    r[j] = __builtin_shufflevector(t[j], t[j + 4], 0, 1, 4, 5, 8, 9, 12, 13);
    r[j + 4] = __builtin_shufflevector(t[j], t[j + 4], 2, 3, 6, 7, 10, 11, 14, 15);
  }
#else
  const vec s0 = __builtin_shufflevector(r[0], r[1], 0, 4, 2, 6), s1 = __builtin_shufflevector(r[0], r[1], 1, 5, 3, 7);
  const vec s2 = __builtin_shufflevector(r[2], r[3], 0, 4, 2, 6), s3 = __builtin_shufflevector(r[2], r[3], 1, 5, 3, 7);
  r[0] = __builtin_shufflevector(s0, s2, 0, 1, 4, 5);
  r[1] = __builtin_shufflevector(s1, s3, 0, 1, 4, 5);
  r[2] = __builtin_shufflevector(s0, s2, 2, 3, 6, 7);
  r[3] = __builtin_shufflevector(s1, s3, 2, 3, 6, 7);
#endif
}

}  // namespace zentrix::kernels::ZX_ISA

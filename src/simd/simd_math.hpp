#pragma once

#include "simd/simd.hpp"

// Elementary functions of vectors, to about one unit in the last place in every instruction set. Arguments are finite;
// log, sqrt and the cube roots want positive normal numbers and leave it to the caller to keep zero away. The polynomials
// interpolate at the Chebyshev points of the reduced range (computed in 50 digits, rounded once).

namespace zentrix::kernels::ZX_ISA {

using bit_vec __attribute__((vector_size(8 * LANES))) = unsigned long long;

ZX_INLINE bit_vec bits_of(vec x) { return reinterpret_cast<bit_vec>(x); }
ZX_INLINE vec from_bits(bit_vec b) { return reinterpret_cast<vec>(b); }

/// Number of a bit pattern below 2^52, by way of the mantissa of 2^52.
ZX_INLINE vec small_integer(bit_vec b) { return from_bits(b | 0x4330000000000000ULL) - 0x1p52; }

ZX_INLINE vec absolute(vec x) { return from_bits(bits_of(x) & 0x7fffffffffffffffULL); }

ZX_INLINE vec sqrt(vec x) {
#if defined(__AVX512F__)
  return static_cast<vec>(_mm512_maskz_sqrt_pd(0xff, x));
#elif defined(__AVX2__)
  return static_cast<vec>(_mm256_sqrt_pd(x));
#else
  const __m128d lo = _mm_sqrt_pd(__m128d{x[0], x[1]}), hi = _mm_sqrt_pd(__m128d{x[2], x[3]});
  return vec{lo[0], lo[1], hi[0], hi[1]};
#endif
}

/// 1/cbrt(x): a third of the exponent and the leading mantissa bits taken off a constant, which is good to 4 %, then two
/// steps y (1 + e/3 + 2 e^2/9 + ...), e = 1 - x y^3, of the binomial series.
ZX_INLINE vec inverse_cbrt(vec x) {
  const vec guess = 1430186360.832 - small_integer(bits_of(x) >> 32) * (1.0 / 3.0);
  vec y = from_bits(bits_of(guess + 0x1p52) << 32);
  vec e = 1.0 - x * y * (y * y);
  y = y + y * e * (1.0 / 3.0 + e * (2.0 / 9.0 + e * (14.0 / 81.0 + e * (35.0 / 243.0))));
  e = 1.0 - x * y * (y * y);
  return y + y * e * (1.0 / 3.0 + e * (2.0 / 9.0));
}

/// cbrt(x) from y = 1/cbrt(x): x y^2 with one Newton correction.
ZX_INLINE vec cbrt_from_inverse(vec x, vec y) {
  const vec t = x * y * y;
  return t - (t * t * t - x) * (y * y) * (1.0 / 3.0);
}

ZX_INLINE vec cbrt(vec x) { return cbrt_from_inverse(x, inverse_cbrt(x)); }

/// log(1 + f + tail) + k log 2 for f in [sqrt(1/2) - 1, sqrt(2) - 1] and a tail below rounding: with s = f / (2 + f) the
/// logarithm is 2 atanh(s), arranged so that the leading terms f - f^2/2 carry no error of s.
ZX_INLINE vec log_of_parts(vec f, vec tail, vec k) {
  const vec s = f / (2.0 + f), z = s * s, half_square = 0.5 * f * f;
  const vec even =
      0.3999999999989889 +
      z * (0.28571428626253836 +
           z * (0.22222211089379493 + z * (0.18182892432537032 + z * (0.15331611722050653 + z * 0.14617807153462828))));
  const vec r = z * (0.666666666666667 + z * even);
  return k * 6.93147180369123816490e-01 -
         ((half_square - (s * (half_square + r) + (k * 1.90821492927058770002e-10 + tail))) - f);
}

/// Splits x = 2^k (1 + f) with 1 + f in [sqrt(1/2), sqrt(2)).
ZX_INLINE void split_exponent(vec x, vec& f, vec& k) {
  const bit_vec shifted = bits_of(x) + (0x3ff0000000000000ULL - 0x3fe6a09e667f3bcdULL);  // sqrt(1/2) becomes 1
  k = small_integer(shifted >> 52) - 1023.0;
  f = from_bits((shifted & 0x000fffffffffffffULL) + 0x3fe6a09e667f3bcdULL) - 1.0;
}

ZX_INLINE vec log(vec x) {
  vec f, k;
  split_exponent(x, f, k);
  return log_of_parts(f, vec{}, k);
}

/// log(1 + x) for x > -1: what rounding took from 1 + x comes back as the tail.
ZX_INLINE vec log1p(vec x) {
  const vec u = 1.0 + x;
  const vec lost = x > 1.0 ? 1.0 - (u - x) : x - (u - 1.0);
  vec f, k;
  split_exponent(u, f, k);
  return log_of_parts(f, lost / u, k);
}

/// asinh(x) for x >= 0.
ZX_INLINE vec asinh(vec x) { return log1p(x + x * x / (1.0 + sqrt(1.0 + x * x))); }

/// exp(r) - 1 for |r| <= log(2)/2.
ZX_INLINE vec expm1_reduced(vec r) {
  const vec r2 = r * r;
  const vec low = (0.5 + r * 0.1666666666666667) + r2 * (0.04166666666666667 + r * 0.008333333333326136);
  const vec mid =
      (0.0013888888888883748 + r * 0.00019841269874820627) + r2 * (2.4801587325547743e-05 + r * 2.7557255400206422e-06);
  const vec high = (2.75572736431103e-07 + r * 2.5105217004720745e-08) + r2 * 2.0914686968086876e-09;
  return r + r2 * (low + (r2 * r2) * (mid + (r2 * r2) * high));
}

/// x = k log 2 + r with |r| <= log(2)/2; power = 2^k. For |x| <= 708.
ZX_INLINE vec reduce_exponential(vec x, vec& power) {
  const vec shifted = x * 1.44269504088896338700 + 0x1.8p52;  // k in the last bits
  const vec k = shifted - 0x1.8p52;
  power = from_bits((bits_of(shifted) << 52) + 0x3ff0000000000000ULL);
  return (x - k * 6.93147180369123816490e-01) - k * 1.90821492927058770002e-10;
}

/// exp(x); 0 below -708, and the value at 708 beyond.
ZX_INLINE vec exp(vec x) {
  vec power;
  const vec r = reduce_exponential(min(max(x, broadcast(-708.0)), broadcast(708.0)), power);
  const vec e = power + power * expm1_reduced(r);
  return x < -708.0 ? vec{} : e;
}

/// exp(x) - 1, with full relative accuracy near 0; the value at 708 beyond.
ZX_INLINE vec expm1(vec x) {
  vec power;
  const vec r = reduce_exponential(min(max(x, broadcast(-708.0)), broadcast(708.0)), power);
  return power * expm1_reduced(r) + (power - 1.0);
}

/// atan(x) for x >= 0, reduced to |x| <= tan(pi/8) by steps of pi/4.
ZX_INLINE vec atan(vec x) {
  const mask big = x > 2.41421356237309504880, middle = x > 0.41421356237309504880;
  const vec numerator = big ? broadcast(-1.0) : middle ? x - 1.0 : x;
  const vec denominator = big ? x : middle ? x + 1.0 : broadcast(1.0);
  const vec t = numerator / denominator, z = t * t, z2 = z * z;
  const vec low = (-0.3333333333333333 + z * 0.19999999999995516) + z2 * (-0.14285714284665682 + z * 0.11111111015187018);
  const vec mid = (-0.09090904575306488 + z * 0.07692183125376885) + z2 * (-0.06664510525508843 + z * 0.058581409048656254);
  const vec high = (-0.050854078345862384 + z * 0.039230447784709195) - z2 * 0.01917540471101196;
  const vec angle = big ? broadcast(1.57079632679489661923) : middle ? broadcast(0.78539816339744830962) : vec{};
  const vec rest = big ? broadcast(6.123233995736766036e-17) : middle ? broadcast(3.061616997868383018e-17) : vec{};
  return angle + (t + (t * z * (low + (z2 * z2) * (mid + (z2 * z2) * high)) + rest));
}

}  // namespace zentrix::kernels::ZX_ISA

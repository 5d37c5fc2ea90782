#pragma once

#include "simd/simd_math.hpp"

// Forward-mode automatic differentiation: a value with its first and, on demand, second derivatives along a few directions.
//
// JET_T<DIRECTIONS, ORDER> carries the directions whose bits are set in DIRECTIONS and no others. A product of a quantity
// that depends on directions 0 and 1 with one that depends on direction 2 carries all three; what depends on one variable
// only costs one derivative. The sets are part of the type, so nothing is decided at run time. A formula written with `auto`
// and the functions below is thereby differentiated exactly (A. Griewank, A. Walther, Evaluating Derivatives, SIAM 2008).

namespace zentrix::kernels::ZX_ISA {

/// A derivative that is zero by type.
struct ZERO_T {};
ZX_INLINE ZERO_T operator*(ZERO_T, ZERO_T) { return {}; }
ZX_INLINE ZERO_T operator*(vec, ZERO_T) { return {}; }
ZX_INLINE ZERO_T operator*(ZERO_T, vec) { return {}; }
ZX_INLINE ZERO_T operator+(ZERO_T, ZERO_T) { return {}; }
ZX_INLINE vec operator+(vec a, ZERO_T) { return a; }
ZX_INLINE vec operator+(ZERO_T, vec b) { return b; }
ZX_INLINE ZERO_T operator-(ZERO_T, ZERO_T) { return {}; }
ZX_INLINE vec operator-(vec a, ZERO_T) { return a; }
ZX_INLINE vec operator-(ZERO_T, vec b) { return -b; }
ZX_INLINE vec as_vec(vec a) { return a; }
ZX_INLINE vec as_vec(ZERO_T) { return vec{}; }

constexpr int bit_count(unsigned bits) { return bits == 0 ? 0 : static_cast<int>(bits & 1U) + bit_count(bits >> 1); }
/// Position of direction d among the set bits.
constexpr int position(unsigned bits, int d) { return bit_count(bits & ((1U << d) - 1U)); }
/// Packed index of the symmetric pair i, j.
constexpr int pair_index(int i, int j) { return i >= j ? i * (i + 1) / 2 + j : j * (j + 1) / 2 + i; }

template <unsigned DIRECTIONS, int ORDER>
struct JET_T {
  static constexpr int N = bit_count(DIRECTIONS), STORED = N > 0 ? N : 1;
  vec value;
  vec first[STORED];
  vec second[ORDER == 2 ? STORED * (STORED + 1) / 2 : 1];
};

/// Calls f.operator()<D>() for every direction of the set.
template <unsigned DIRECTIONS, int D = 0, class F>
ZX_INLINE void for_directions(F&& f) {
  if constexpr ((DIRECTIONS >> D) != 0) {
    if constexpr (((DIRECTIONS >> D) & 1U) != 0) f.template operator()<D>();
    for_directions<DIRECTIONS, D + 1>(f);
  }
}

template <int D, unsigned A, int O>
ZX_INLINE auto slope(const JET_T<A, O>& a) {
  if constexpr (((A >> D) & 1U) != 0)
    return a.first[position(A, D)];
  else
    return ZERO_T{};
}

template <int D, int E, unsigned A, int O>
ZX_INLINE auto curvature(const JET_T<A, O>& a) {
  if constexpr (((A >> D) & (A >> E) & 1U) != 0)
    return a.second[pair_index(position(A, D), position(A, E))];
  else
    return ZERO_T{};
}

/// Fills the derivatives of r from two rules, called for every direction and for every pair D >= E.
template <unsigned R, int O, class FIRST, class SECOND>
ZX_INLINE void fill(JET_T<R, O>& r, FIRST&& first, SECOND&& second) {
  for_directions<R>([&]<int D>() __attribute__((always_inline)) {
    r.first[position(R, D)] = as_vec(first.template operator()<D>());
    if constexpr (O == 2)
      for_directions<(R & ((2U << D) - 1U))>([&]<int E>() __attribute__((always_inline)) {
        r.second[pair_index(position(R, D), position(R, E))] = as_vec(second.template operator()<D, E>());
      });
  });
}

/// The independent variable of direction D, scaled: d(value)/d(direction) = rate.
template <int D, int O>
ZX_INLINE JET_T<(1U << D), O> variable(vec value, double rate = 1.0) {
  return {value, {broadcast(rate)}, {vec{}}};
}

/// g(a) from the value and derivatives of g at a.value.
template <unsigned A, int O>
ZX_INLINE JET_T<A, O> chain(const JET_T<A, O>& a, vec g, vec dg, vec ddg) {
  JET_T<A, O> r;
  r.value = g;
  fill(
      r, [&]<int D>() __attribute__((always_inline)) { return dg * slope<D>(a); },
      [&]<int D, int E>()
          __attribute__((always_inline)) { return dg * curvature<D, E>(a) + ddg * (slope<D>(a) * slope<E>(a)); });
  return r;
}

/// f(a) where f is cheaper to differentiate along one direction than along those of a.
template <unsigned A, int O, class F>
ZX_INLINE auto compose(const JET_T<A, O>& a, F&& f) {
  if constexpr (bit_count(A) <= 1) {
    return f(a);
  } else {
    const auto g = f(variable<0, O>(a.value));
    if constexpr (O == 2)
      return chain(a, g.value, g.first[0], g.second[0]);
    else
      return chain(a, g.value, g.first[0], vec{});
  }
}

#define ZX_JETS template <unsigned A, unsigned B, int O>
#define ZX_JET template <unsigned A, int O>

ZX_JETS ZX_INLINE JET_T<(A | B), O> operator+(const JET_T<A, O>& a, const JET_T<B, O>& b) {
  JET_T<(A | B), O> r;
  r.value = a.value + b.value;
  fill(
      r, [&]<int D>() __attribute__((always_inline)) { return slope<D>(a) + slope<D>(b); },
      [&]<int D, int E>() __attribute__((always_inline)) { return curvature<D, E>(a) + curvature<D, E>(b); });
  return r;
}

ZX_JETS ZX_INLINE JET_T<(A | B), O> operator-(const JET_T<A, O>& a, const JET_T<B, O>& b) {
  JET_T<(A | B), O> r;
  r.value = a.value - b.value;
  fill(
      r, [&]<int D>() __attribute__((always_inline)) { return slope<D>(a) - slope<D>(b); },
      [&]<int D, int E>() __attribute__((always_inline)) { return curvature<D, E>(a) - curvature<D, E>(b); });
  return r;
}

ZX_JETS ZX_INLINE JET_T<(A | B), O> operator*(const JET_T<A, O>& a, const JET_T<B, O>& b) {
  JET_T<(A | B), O> r;
  r.value = a.value * b.value;
  fill(
      r, [&]<int D>() __attribute__((always_inline)) { return a.value * slope<D>(b) + slope<D>(a) * b.value; },
      [&]<int D, int E>() __attribute__((always_inline)) {
        return (a.value * curvature<D, E>(b) + curvature<D, E>(a) * b.value) +
               (slope<D>(a) * slope<E>(b) + slope<E>(a) * slope<D>(b));
      });
  return r;
}

ZX_JETS ZX_INLINE JET_T<(A | B), O> operator/(const JET_T<A, O>& a, const JET_T<B, O>& b) {
  JET_T<(A | B), O> r;
  const vec inverse = 1.0 / b.value;
  r.value = a.value * inverse;
  fill(
      r, [&]<int D>() __attribute__((always_inline)) { return (slope<D>(a) - r.value * slope<D>(b)) * inverse; },
      [&]<int D, int E>() __attribute__((always_inline)) {
        constexpr int d = position(A | B, D), e = position(A | B, E);
        return ((curvature<D, E>(a) - r.value * curvature<D, E>(b)) -
                (r.first[d] * slope<E>(b) + r.first[e] * slope<D>(b))) *
               inverse;
      });
  return r;
}

ZX_JET ZX_INLINE JET_T<A, O> operator*(double c, const JET_T<A, O>& a) {
  JET_T<A, O> r;
  r.value = c * a.value;
  fill(
      r, [&]<int D>() __attribute__((always_inline)) { return c * slope<D>(a); },
      [&]<int D, int E>() __attribute__((always_inline)) { return c * curvature<D, E>(a); });
  return r;
}
ZX_JET ZX_INLINE JET_T<A, O> operator*(const JET_T<A, O>& a, double c) { return c * a; }
ZX_JET ZX_INLINE JET_T<A, O> operator-(const JET_T<A, O>& a) { return -1.0 * a; }
ZX_JET ZX_INLINE JET_T<A, O> operator+(const JET_T<A, O>& a, double c) {
  JET_T<A, O> r = a;
  r.value += c;
  return r;
}
ZX_JET ZX_INLINE JET_T<A, O> operator+(double c, const JET_T<A, O>& a) { return a + c; }
ZX_JET ZX_INLINE JET_T<A, O> operator-(const JET_T<A, O>& a, double c) { return a + -c; }
ZX_JET ZX_INLINE JET_T<A, O> operator-(double c, const JET_T<A, O>& a) { return c + -1.0 * a; }
ZX_JET ZX_INLINE JET_T<A, O> operator/(const JET_T<A, O>& a, double c) { return (1.0 / c) * a; }

ZX_JET ZX_INLINE JET_T<A, O> inverse(const JET_T<A, O>& a) {
  const vec g = 1.0 / a.value, square = g * g;
  return chain(a, g, -square, 2.0 * square * g);
}
ZX_JET ZX_INLINE JET_T<A, O> operator/(double c, const JET_T<A, O>& a) { return c * inverse(a); }

ZX_JET ZX_INLINE JET_T<A, O> sqrt(const JET_T<A, O>& a) {
  const vec g = sqrt(a.value), half = 0.5 / g;
  return chain(a, g, half, -0.5 * half / a.value);
}

/// a^(-1/4).
ZX_JET ZX_INLINE JET_T<A, O> inverse_fourth_root(const JET_T<A, O>& a) {
  const vec g = 1.0 / sqrt(sqrt(a.value)), slope_ratio = -0.25 / a.value;
  return chain(a, g, g * slope_ratio, 5.0 * g * slope_ratio * slope_ratio);
}

ZX_JET ZX_INLINE JET_T<A, O> cbrt(const JET_T<A, O>& a) {
  const vec y = inverse_cbrt(a.value), y2 = y * y;
  return chain(a, cbrt_from_inverse(a.value, y), (1.0 / 3.0) * y2, (-2.0 / 9.0) * y2 * y2 * y);
}

ZX_JET ZX_INLINE JET_T<A, O> inverse_cbrt(const JET_T<A, O>& a) {
  const vec y = inverse_cbrt(a.value), y4 = (y * y) * (y * y);
  return chain(a, y, (-1.0 / 3.0) * y4, (4.0 / 9.0) * y4 * y * y * y);
}

ZX_JET ZX_INLINE JET_T<A, O> log(const JET_T<A, O>& a) {
  const vec g = 1.0 / a.value;
  return chain(a, log(a.value), g, -g * g);
}
ZX_JET ZX_INLINE JET_T<A, O> log1p(const JET_T<A, O>& a) {
  const vec g = 1.0 / (1.0 + a.value);
  return chain(a, log1p(a.value), g, -g * g);
}
ZX_JET ZX_INLINE JET_T<A, O> exp(const JET_T<A, O>& a) {
  const vec g = exp(a.value);
  return chain(a, g, g, g);
}
ZX_JET ZX_INLINE JET_T<A, O> expm1(const JET_T<A, O>& a) {
  const vec g = expm1(a.value);
  return chain(a, g, g + 1.0, g + 1.0);
}
ZX_JET ZX_INLINE JET_T<A, O> atan(const JET_T<A, O>& a) {
  const vec g = 1.0 / (1.0 + a.value * a.value);
  return chain(a, atan(a.value), g, -2.0 * a.value * g * g);
}

ZX_INLINE double square(double x) { return x * x; }
ZX_INLINE double cube(double x) { return x * x * x; }
ZX_JET ZX_INLINE JET_T<A, O> square(const JET_T<A, O>& a) {
  return chain(a, a.value * a.value, 2.0 * a.value, broadcast(2.0));
}
ZX_JET ZX_INLINE JET_T<A, O> cube(const JET_T<A, O>& a) {
  const vec a2 = a.value * a.value;
  return chain(a, a2 * a.value, 3.0 * a2, 6.0 * a.value);
}

ZX_JETS ZX_INLINE JET_T<(A | B), O> select(mask m, const JET_T<A, O>& a, const JET_T<B, O>& b) {
  JET_T<(A | B), O> r;
  r.value = select(m, a.value, b.value);
  fill(
      r, [&]<int D>() __attribute__((always_inline)) { return select(m, as_vec(slope<D>(a)), as_vec(slope<D>(b))); },
      [&]<int D, int E>()
          __attribute__((always_inline)) { return select(m, as_vec(curvature<D, E>(a)), as_vec(curvature<D, E>(b))); });
  return r;
}

/// a with its value raised to the bound where it lies below; the derivatives stay, so that they are those of the formula at
/// the bound.
ZX_JET ZX_INLINE JET_T<A, O> raised_to(vec bound, const JET_T<A, O>& a) {
  JET_T<A, O> r = a;
  r.value = max(a.value, bound);
  return r;
}
ZX_JET ZX_INLINE JET_T<A, O> raised_to(double bound, const JET_T<A, O>& a) { return raised_to(broadcast(bound), a); }

#undef ZX_JETS
#undef ZX_JET

}  // namespace zentrix::kernels::ZX_ISA

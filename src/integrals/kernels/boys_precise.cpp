#include "integrals/kernels/boys_precise.hpp"

#include "simd/simd_math.hpp"

// The precise mode of the Boys function in vector lanes: power series and asymptotic form, no tabulated values of F.

namespace zentrix::kernels::ZX_ISA {

namespace {

/// Beyond it F_0 = sqrt(pi / T) / 2 to double precision.
constexpr int SERIES_LIMIT = 35;
constexpr int CHAINS = 8;

/// Coefficients c_k = 1 / ((M+1/2) (M+3/2) ... (M+k+1/2)) of F_M(T) = e^-T / 2 sum_k c_k T^k, and how many of them an
/// argument needs: all terms are positive, what is left out is bounded by a geometric series.
template <int M>
struct BOYS_SERIES_T {
  static constexpr int MOST_BLOCKS = 14;
  double coefficient[MOST_BLOCKS * CHAINS] = {};
  /// blocks[i]: groups of CHAINS coefficients for T <= i + 1; the rest is below 1e-17 of the sum.
  int blocks[SERIES_LIMIT + 1] = {};

  constexpr BOYS_SERIES_T() {
    double denominator = M + 0.5, value = 1.0 / denominator;
    for (double& c : coefficient) {
      c = value;
      denominator += 1.0;
      value /= denominator;
    }
    for (int i = 0; i <= SERIES_LIMIT; ++i) blocks[i] = blocks_for(i < SERIES_LIMIT ? i + 1 : SERIES_LIMIT);
  }

  static constexpr int blocks_for(double t) {
    double denominator = M + 0.5, term = 1.0 / denominator, sum = term;
    for (int k = 1;; ++k) {
      denominator += 1.0;
      term *= t / denominator;
      sum += term;
      const double ratio = t / (denominator + 1.0);
      if (ratio < 1.0 && term * ratio < 1e-17 * sum * (1.0 - ratio)) return k / CHAINS + 1;
    }
  }
};

/// sum_k c_k t^k for 0 <= t <= SERIES_LIMIT: CHAINS independent Horner chains in t^8, put together pairwise.
template <int M>
ZX_INLINE vec power_series(vec t) {
  static constexpr BOYS_SERIES_T<M> series;
  static_assert(series.blocks[SERIES_LIMIT] <= BOYS_SERIES_T<M>::MOST_BLOCKS);
  int block = series.blocks[static_cast<int>(largest_magnitude(t))] - 1;
  const vec t2 = t * t, t4 = t2 * t2, t8 = t4 * t4;
  const double* c = series.coefficient + block * CHAINS;
  vec chain[CHAINS];
  for (int i = 0; i < CHAINS; ++i) chain[i] = broadcast(c[i]);
  for (; block > 0; --block) {
    c -= CHAINS;
    for (int i = 0; i < CHAINS; ++i) chain[i] = chain[i] * t8 + c[i];
  }
  const vec low = (chain[0] + chain[1] * t) + (chain[2] + chain[3] * t) * t2;
  const vec high = (chain[4] + chain[5] * t) + (chain[6] + chain[7] * t) * t2;
  return low + high * t4;
}

/// F_M for t >= SERIES_LIMIT: F_0 from its asymptotic form, then F_(m+1) = ((2m+1) F_m - e^-T) / 2T, which is stable there.
template <int M>
ZX_INLINE vec asymptotic(vec t, vec e) {
  const vec r = rsqrt(t);
  vec value = 0.88622692545275801365 * r;
  const vec half_inverse = 0.5 * r * r, shift = e * half_inverse;
#pragma GCC unroll 20
  for (int m = 0; m < M; ++m) value = value * ((2 * m + 1) * half_inverse) - shift;
  return value;
}

template <int M>
void evaluate(const double* arguments, double* f) {
  const vec t = load(arguments);
  const mask beyond = t > SERIES_LIMIT;
  const vec e = exp(-t);
  vec top = {};
  if (!any(beyond)) {
    top = (0.5 * e) * power_series<M>(t);
  } else {
    top = asymptotic<M>(beyond ? t : broadcast(SERIES_LIMIT), e);
    if (any(t <= SERIES_LIMIT)) top = beyond ? top : (0.5 * e) * power_series<M>(beyond ? vec{} : t);
  }
  store(f + M * LANES, top);
  const vec twice = 2.0 * t;
#pragma GCC unroll 20
  for (int m = M - 1; m >= 0; --m) {
    top = (twice * (1.0 / (2 * m + 1))) * top + e * (1.0 / (2 * m + 1));
    store(f + m * LANES, top);
  }
}

using EVALUATE_T = void (*)(const double*, double*);

/// One function per highest order.
struct EVALUATORS_T {
  EVALUATE_T of_order[BOYS_LANES_MMAX + 1] = {};
  template <int M = BOYS_LANES_MMAX>
  constexpr void fill() {
    of_order[M] = evaluate<M>;
    if constexpr (M > 0) fill<M - 1>();
  }
  constexpr EVALUATORS_T() { fill(); }
};

constexpr EVALUATORS_T evaluators;

}  // namespace

void boys_precise(int m, const double* t, double* f) { evaluators.of_order[m](t, f); }

}  // namespace zentrix::kernels::ZX_ISA

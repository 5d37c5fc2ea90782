#include "integrals/kernels/coulomb_low.hpp"

#include "integrals/kernels/coulomb_common.hpp"

// Low orders: everything unrolled, R_tuv in registers as far as they reach.

namespace zentrix::kernels::ZX_ISA {

namespace {

/// One step of R_tuv^(m) = (t-1) R_(t-2)uv^(m+1) + x R_(t-1)uv^(m+1) and its likes in y and z, for every function of degree
/// >= 1 and <= ORDER, highest degree first so that it can be done in place.
template <int ORDER>
struct RAISING_STEPS_T {
  static constexpr int COUNT = hermite_count(ORDER) - 1;
  int target[COUNT + 1] = {};
  int direction[COUNT + 1] = {};
  int lower1[COUNT + 1] = {};
  int lower2[COUNT + 1] = {};
  int factor[COUNT + 1] = {};

  static constexpr int position(const int* power) {
    const HERMITE_POWERS_T<ORDER> all;
    for (int n = 0; n < hermite_count(ORDER); ++n)
      if (all.t[n] == power[0] && all.u[n] == power[1] && all.v[n] == power[2]) return n;
    return 0;
  }

  constexpr RAISING_STEPS_T() {
    int n = 0;
    for (int degree = ORDER; degree >= 1; --degree)
      for (int t = degree; t >= 0; --t)
        for (int u = degree - t; u >= 0; --u, ++n) {
          int power[3] = {t, u, degree - t - u};
          // The smallest non-zero power: with power 1 there is no second term.
          int d = -1;
          for (int k = 0; k < 3; ++k)
            if (power[k] > 0 && (d < 0 || power[k] < power[d])) d = k;
          target[n] = position(power);
          direction[n] = d;
          factor[n] = power[d] - 1;
          power[d] -= 1;
          lower1[n] = position(power);
          if (factor[n] > 0) {
            power[d] -= 1;
            lower2[n] = position(power);
          }
        }
  }
};

/// Number of steps of RAISING_STEPS_T<ORDER> that concern degrees above `degree` (they come first).
constexpr int steps_above(int order, int degree) { return hermite_count(order) - hermite_count(degree); }

/// All R_tuv^(0) of degree <= M from the auxiliary integrals.
template <int M>
ZX_INLINE void raise(const INTERACTION_T<M>& s, vec* r) {
  static constexpr RAISING_STEPS_T<M> steps;
  r[0] = s.base[M];
  unroll<M>([&](auto level) __attribute__((always_inline)) {
    constexpr int degree = level + 1;  // highest degree known after this level
    constexpr int skipped = steps_above(M, degree);
    unroll<hermite_count(degree) - 1>([&](auto step) __attribute__((always_inline)) {
      constexpr int n = skipped + step;
      constexpr int d = steps.direction[n];
      const vec distance = d == 0 ? s.x : d == 1 ? s.y : s.z;
      vec value = distance * r[steps.lower1[n]];
      if constexpr (steps.factor[n] == 1) value += r[steps.lower2[n]];
      if constexpr (steps.factor[n] > 1) value += static_cast<double>(steps.factor[n]) * r[steps.lower2[n]];
      r[steps.target[n]] = value;
    });
    r[0] = s.base[M - degree];
  });
}

/// Position of the sum of Hermite function t of order BRA and u of order KET among those of order BRA + KET.
template <int BRA, int KET>
struct SUM_TABLE_T {
  int position[hermite_count(BRA)][hermite_count(KET)] = {};
  constexpr SUM_TABLE_T() {
    const HERMITE_POWERS_T<BRA> bra;
    const HERMITE_POWERS_T<KET> ket;
    const HERMITE_POWERS_T<BRA + KET> sum;
    for (int i = 0; i < hermite_count(BRA); ++i)
      for (int j = 0; j < hermite_count(KET); ++j)
        for (int k = 0; k < hermite_count(BRA + KET); ++k)
          if (sum.t[k] == bra.t[i] + ket.t[j] && sum.u[k] == bra.u[i] + ket.u[j] && sum.v[k] == bra.v[i] + ket.v[j])
            position[i][j] = k;
  }
};

/// Bra functions that share one pass over the kets: as many as the registers hold beside the values in flight.
constexpr int ROWS = LANES == 8 ? 10 : 4;

/// Both products of one block with one density.
template <int BRA, int KET>
ZX_INLINE void multiply(const vec* r, const double* h_bra, double* j_bra, const double* h_ket, double* j_ket) {
  constexpr int NT = hermite_count(BRA);
  constexpr int NU = hermite_count(KET);
  constexpr int PASSES = (NT + ROWS - 1) / ROWS;
  static constexpr SUM_TABLE_T<BRA, KET> sum;
  unroll<PASSES>([&](auto pass) __attribute__((always_inline)) {
    constexpr int begin = pass * NT / PASSES;
    constexpr int rows = (pass + 1) * NT / PASSES - begin;
    vec h[rows], j[rows];
    unroll<rows>([&](auto t) __attribute__((always_inline)) {
      h[t] = broadcast(h_bra[begin + t]);
      j[t] = load(j_bra + (begin + t) * LANES);
    });
    unroll<NU>([&](auto u) __attribute__((always_inline)) {
      const vec hu = load(h_ket + u * LANES);
      vec ju = load(j_ket + u * LANES);
      unroll<rows>([&](auto t) __attribute__((always_inline)) {
        j[t] += r[sum.position[begin + t][u]] * hu;
        ju += r[sum.position[begin + t][u]] * h[t];
      });
      store(j_ket + u * LANES, ju);
    });
    unroll<rows>([&](auto t) __attribute__((always_inline)) { store(j_bra + (begin + t) * LANES, j[t]); });
  });
}

template <int BRA, int KET>
void low_kernel(const BOYS_SERVICE_T& boys, const COULOMB_BRA_T& bra, const COULOMB_KETS_T& kets, int n_densities,
                double* /*scratch*/) {
  constexpr int M = BRA + KET;
  constexpr int NT = hermite_count(BRA);
  constexpr int NU = hermite_count(KET);
  constexpr int TOGETHER = 4;  // blocks whose Boys functions are under way at once
  INTERACTION_T<M> interactions[TOGETHER];
  const vec weight = load(kets.weight);
  for (int first = kets.begin; first < kets.end; first += TOGETHER) {
    const int n = kets.end - first < TOGETHER ? kets.end - first : TOGETHER;
    for (int k = 0; k < n; ++k)
      interactions[k].set_geometry(bra, kets.geometry + static_cast<long>(first + k) * 4 * LANES, weight);
    for (int k = 0; k < n; ++k) interactions[k].set_base(boys);
    for (int k = 0; k < n; ++k) {
      vec r[hermite_count(M)];
      raise<M>(interactions[k], r);
      for (int d = 0; d < n_densities; ++d) {
        const long offset = (static_cast<long>(first + k) * n_densities + d) * NU * LANES;
        multiply<BRA, KET>(r, bra.h + d * bra.h_stride, bra.j + d * NT * LANES, kets.h + offset, kets.j + offset);
      }
    }
  }
}

constexpr int LOW_MAX = 5;

template <int BRA, int KET>
COULOMB_KERNEL pick(int bra_order, int ket_order) {
  if (bra_order == BRA && ket_order == KET) return low_kernel<BRA, KET>;
  if constexpr (KET < BRA && BRA + KET < LOW_MAX)
    return pick<BRA, KET + 1>(bra_order, ket_order);
  else if constexpr (BRA < LOW_MAX)
    return pick<BRA + 1, 0>(bra_order, ket_order);
  return nullptr;
}

}  // namespace

COULOMB_KERNEL coulomb_low_kernel(int bra_order, int ket_order) { return pick<0, 0>(bra_order, ket_order); }

}  // namespace zentrix::kernels::ZX_ISA

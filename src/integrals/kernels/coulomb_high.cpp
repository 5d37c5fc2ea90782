#include "integrals/kernels/coulomb_common.hpp"
#include "integrals/kernels/coulomb_low.hpp"

// Higher orders: R_tuv in a cube with strides (M+1)^2, M+1, 1, so that the place of t + u is the sum of the places of t and
// u, and loops over tables of such places instead of unrolled code.

namespace zentrix::kernels::ZX_ISA {

namespace {

constexpr int M_MAX = 2 * COULOMB_ORDER_MAX;
/// Highest total order whose R recursion is unrolled.
constexpr int UNROLLED_CUBE = 8;

/// t! / (i! (t - 2i)! 2^i): R_t^(0) = sum_i of it times x^(t-2i) R_0^(t-i), the closed form of the recursion in one
/// direction.
struct CLOSED_FORM_T {
  double c[M_MAX + 1][M_MAX / 2 + 1] = {};
  constexpr CLOSED_FORM_T() {
    c[0][0] = 1.0;
    for (int t = 1; t <= M_MAX; ++t)
      for (int i = 0; 2 * i <= t; ++i) {
        // From R_t = x R_(t-1) + (t-1) R_(t-2), one level up.
        if (2 * i <= t - 1) c[t][i] += c[t - 1][i];
        if (i > 0) c[t][i] += (t - 1) * c[t - 2][i - 1];
      }
  }
};
constexpr CLOSED_FORM_T CLOSED_FORM;

/// Fills cube[(n S + u) S + v], S = m + 1. On the way n is the auxiliary level: first R_00v^(n), then R_0uv^(n); at last
/// level n is overwritten by R_nuv^(0), which needs no level above n.
ZX_INLINE void fill_cube(int m, vec x, vec y, vec z, const vec* base, vec* cube) {
  const int s = m + 1;
  const int s2 = s * s;
  for (int n = 0; n <= m; ++n) cube[n * s2] = base[n];
  for (int v = 1; v <= m; ++v)
    for (int n = 0; n + v <= m; ++n) {
      vec value = z * cube[(n + 1) * s2 + v - 1];
      if (v > 1) value += static_cast<double>(v - 1) * cube[(n + 1) * s2 + v - 2];
      cube[n * s2 + v] = value;
    }
  for (int u = 1; u <= m; ++u)
    for (int n = 0; n + u <= m; ++n) {
      const vec* one = cube + (n + 1) * s2 + (u - 1) * s;
      vec* to = cube + n * s2 + u * s;
      if (u == 1) {
        for (int v = 0; n + u + v <= m; ++v) to[v] = y * one[v];
      } else {
        const vec* two = one - s;
        const vec factor = broadcast(u - 1);
        for (int v = 0; n + u + v <= m; ++v) to[v] = y * one[v] + factor * two[v];
      }
    }
  vec power[M_MAX + 1];
  power[0] = broadcast(1.0);
  for (int t = 1; t <= m; ++t) power[t] = power[t - 1] * x;
  for (int t = m; t >= 1; --t) {
    vec factor[M_MAX / 2 + 1] = {};
    factor[0] = power[t];
    for (int i = 1; 2 * i <= t; ++i) factor[i] = CLOSED_FORM.c[t][i] * power[t - 2 * i];
    for (int u = 0; t + u <= m; ++u) {
      vec* to = cube + t * s2 + u * s;
      for (int v = 0; t + u + v <= m; ++v) {
        vec value = factor[0] * to[v];
        for (int i = 1; 2 * i <= t; ++i) value += factor[i] * to[v - i * s2];
        to[v] = value;
      }
    }
  }
}

/// The same with all loops unrolled, for the orders that matter most.
template <int M>
ZX_INLINE void fill_cube(vec x, vec y, vec z, const vec* base, vec* cube) {
  constexpr int S = M + 1;
  constexpr int S2 = S * S;
  unroll<M + 1>([&](auto n) __attribute__((always_inline)) { cube[n * S2] = base[n]; });
  unroll<M>([&](auto iv) __attribute__((always_inline)) {
    constexpr int v = iv + 1;
    unroll<M - v + 1>([&](auto n) __attribute__((always_inline)) {
      vec value = z * cube[(n + 1) * S2 + v - 1];
      if constexpr (v > 1) value += static_cast<double>(v - 1) * cube[(n + 1) * S2 + v - 2];
      cube[n * S2 + v] = value;
    });
  });
  unroll<M>([&](auto iu) __attribute__((always_inline)) {
    constexpr int u = iu + 1;
    unroll<M - u + 1>([&](auto in) __attribute__((always_inline)) {
      constexpr int n = in;
      unroll<M - u - n + 1>([&](auto v) __attribute__((always_inline)) {
        vec value = y * cube[(n + 1) * S2 + (u - 1) * S + v];
        if constexpr (u > 1) value += static_cast<double>(u - 1) * cube[(n + 1) * S2 + (u - 2) * S + v];
        cube[n * S2 + u * S + v] = value;
      });
    });
  });
  vec power[M + 1];
  power[0] = broadcast(1.0);
  unroll<M>([&](auto t) __attribute__((always_inline)) { power[t + 1] = power[t] * x; });
  unroll<M>([&](auto it) __attribute__((always_inline)) {
    constexpr int t = M - it;
    vec factor[t / 2 + 1];
    unroll<t / 2 + 1>([&](auto i) __attribute__((always_inline)) { factor[i] = CLOSED_FORM.c[t][i] * power[t - 2 * i]; });
    unroll<M - t + 1>([&](auto iu) __attribute__((always_inline)) {
      constexpr int u = iu;
      unroll<M - t - u + 1>([&](auto v) __attribute__((always_inline)) {
        constexpr int place = t * S2 + u * S + v;
        vec value = factor[0] * cube[place];
        unroll<t / 2>([&](auto i) __attribute__((always_inline)) { value += factor[i + 1] * cube[place - (i + 1) * S2]; });
        cube[place] = value;
      });
    });
  });
}

/// Places of all Hermite functions of one order in the cube of total order m, in doubles.
ZX_INLINE void fill_places(int order, int m, int* places) {
  const int s = m + 1;
  int n = 0;
  for (int t = 0; t <= order; ++t)
    for (int u = 0; t + u <= order; ++u)
      for (int v = 0; t + u + v <= order; ++v) places[n++] = ((t * s + u) * s + v) * LANES;
}

constexpr int ROWS = 5;

/// N bra functions against all of one ket block.
template <int N>
ZX_INLINE void multiply_rows(const double* cube, const int* bra_places, const double* h_bra, double* j_bra, int nu,
                             const int* ket_places, const double* h_ket, double* j_ket) {
  const double* r[N];
  vec j[N], h[N];
  for (int k = 0; k < N; ++k) {
    r[k] = cube + bra_places[k];
    j[k] = load(j_bra + k * LANES);
    h[k] = broadcast(h_bra[k]);
  }
  for (int u = 0; u < nu; ++u) {
    const vec hk = load(h_ket + u * LANES);
    vec jk = load(j_ket + u * LANES);
    for (int k = 0; k < N; ++k) {
      vec value = load(r[k] + ket_places[u]);
      keep(value);
      j[k] += value * hk;
      jk += value * h[k];
    }
    store(j_ket + u * LANES, jk);
  }
  for (int k = 0; k < N; ++k) store(j_bra + k * LANES, j[k]);
}

/// All bra functions, ROWS at a time: each value of R, each ket density and each load and store of a ket potential then
/// serve several multiply-adds. REST is what is left over.
template <int REST>
inline void multiply(const double* cube, int nt, const int* bra_places, const double* h_bra, double* j_bra, int nu,
                     const int* ket_places, const double* h_ket, double* j_ket) {
  int t = 0;
  for (; t + ROWS <= nt; t += ROWS)
    multiply_rows<ROWS>(cube, bra_places + t, h_bra + t, j_bra + t * LANES, nu, ket_places, h_ket, j_ket);
  if constexpr (REST > 0)
    multiply_rows<REST>(cube, bra_places + t, h_bra + t, j_bra + t * LANES, nu, ket_places, h_ket, j_ket);
}

template <int BRA, int KET>
struct PLACES_T {
  int bra[hermite_count(BRA)] = {};
  int ket[hermite_count(KET)] = {};
  constexpr PLACES_T() {
    constexpr int s = BRA + KET + 1;
    const HERMITE_POWERS_T<BRA> b;
    const HERMITE_POWERS_T<KET> k;
    for (int n = 0; n < hermite_count(BRA); ++n) bra[n] = ((b.t[n] * s + b.u[n]) * s + b.v[n]) * LANES;
    for (int n = 0; n < hermite_count(KET); ++n) ket[n] = ((k.t[n] * s + k.u[n]) * s + k.v[n]) * LANES;
  }
};

/// The R cube of one block for a total order known at compile time.
template <int M>
__attribute__((noinline)) void make_cube(const BOYS_SERVICE_T& boys, const COULOMB_BRA_T& bra, const double* geometry,
                                         const double* weight, double* cube) {
  INTERACTION_T<M> s;
  s.set_geometry(bra, geometry, load(weight));
  s.set_base(boys);
  vec* r = reinterpret_cast<vec*>(cube);
  if constexpr (M <= UNROLLED_CUBE)
    fill_cube<M>(s.x, s.y, s.z, s.base, r);
  else
    fill_cube(M, s.x, s.y, s.z, s.base, r);
}

template <int BRA, int KET>
void high_kernel(const BOYS_SERVICE_T& boys, const COULOMB_BRA_T& bra, const COULOMB_KETS_T& kets, int n_densities,
                 double* cube) {
  constexpr int NT = hermite_count(BRA);
  constexpr int NU = hermite_count(KET);
  static constexpr PLACES_T<BRA, KET> places;
  for (int block = kets.begin; block < kets.end; ++block) {
    make_cube<BRA + KET>(boys, bra, kets.geometry + static_cast<long>(block) * 4 * LANES, kets.weight, cube);
    for (int d = 0; d < n_densities; ++d) {
      const long offset = (static_cast<long>(block) * n_densities + d) * NU * LANES;
      multiply<NT % ROWS>(cube, NT, places.bra, bra.h + d * bra.h_stride, bra.j + d * NT * LANES, NU, places.ket,
                          kets.h + offset, kets.j + offset);
    }
  }
}

template <int M>
void make_cube_of(int m, const BOYS_SERVICE_T& boys, const COULOMB_BRA_T& bra, const double* geometry, const double* weight,
                  double* cube) {
  if (m == M) return make_cube<M>(boys, bra, geometry, weight, cube);
  if constexpr (M > 0) make_cube_of<M - 1>(m, boys, bra, geometry, weight, cube);
}

/// Any orders, taken at run time: h functions.
void generic_kernel(const BOYS_SERVICE_T& boys, const COULOMB_BRA_T& bra, const COULOMB_KETS_T& kets, int n_densities,
                    double* cube) {
  const int m = bra.order + kets.order;
  const int nt = hermite_count(bra.order);
  const int nu = hermite_count(kets.order);
  int bra_places[hermite_count(COULOMB_ORDER_MAX)];
  int ket_places[hermite_count(COULOMB_ORDER_MAX)];
  fill_places(bra.order, m, bra_places);
  fill_places(kets.order, m, ket_places);
  for (int block = kets.begin; block < kets.end; ++block) {
    make_cube_of<M_MAX>(m, boys, bra, kets.geometry + static_cast<long>(block) * 4 * LANES, kets.weight, cube);
    for (int d = 0; d < n_densities; ++d) {
      const long offset = (static_cast<long>(block) * n_densities + d) * nu * LANES;
      const auto product = nt % ROWS == 0 ? &multiply<0> : &multiply<1>;  // 220 and 286 functions of orders 9 and 10
      product(cube, nt, bra_places, bra.h + d * bra.h_stride, bra.j + d * nt * LANES, nu, ket_places, kets.h + offset,
              kets.j + offset);
    }
  }
}

template <int BRA, int KET>
COULOMB_KERNEL pick(int bra_order, int ket_order) {
  if (bra_order == BRA && ket_order == KET) return high_kernel<BRA, KET>;
  if constexpr (KET < BRA)
    return pick<BRA, KET + 1>(bra_order, ket_order);
  else if constexpr (BRA < COULOMB_UNROLLED_ORDER_MAX)
    return pick<BRA + 1, 0>(bra_order, ket_order);
  return generic_kernel;
}

}  // namespace

COULOMB_KERNEL coulomb_kernel(int bra_order, int ket_order) {
  if (COULOMB_KERNEL low = coulomb_low_kernel(bra_order, ket_order)) return low;
  return pick<0, 0>(bra_order, ket_order);
}

}  // namespace zentrix::kernels::ZX_ISA

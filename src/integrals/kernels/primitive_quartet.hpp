#pragma once

#include "integrals/kernels/quartet_kernels.hpp"
#include "integrals/kernels/vertical.hpp"

// Primitive quartets of a batch: one bra primitive pair with the ket primitive pairs of LANES kets.

namespace zentrix::kernels::ZX_ISA {

/// Ket primitives of a batch, one vector per field; the largest |prefactor| of the lanes decides how far loops run.
struct KET_PRIMITIVE_T {
  vec field[8];
  double largest_prefactor = 0.0;
  double unused[LANES - 1];
};

inline constexpr PRIMITIVE_PAIR_T NO_PRIMITIVE{};

/// Transposes primitive k of every ket, prefactors scaled.
ZX_INLINE void load_ket_primitive(const BATCH_T& batch, int k, vec scale, KET_PRIMITIVE_T& ket) {
  vec* f = ket.field;
  for (int lane = 0; lane < LANES; ++lane) {
    const SHELL_PAIR_T& pair = *batch.kets[lane];
    const double* line = &(k < pair.n_primitives ? pair.primitives + k : &NO_PRIMITIVE)->exponent;
    f[lane] = load(line);
    if constexpr (LANES == 4) f[(lane + 4) % 8] = load(line + 4);
  }
  transpose(f);
  if constexpr (LANES == 4) transpose(f + 4);
  f[4] *= scale;
  ket.largest_prefactor = largest_magnitude(f[4]);
}

/// Most primitives of a ket of the batch.
ZX_INLINE int ket_primitives(const BATCH_T& batch) {
  int n = 0;
  for (int lane = 0; lane < LANES; ++lane) n = batch.kets[lane]->n_primitives > n ? batch.kets[lane]->n_primitives : n;
  return n;
}

ZX_INLINE void distance(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, vec* pq) {
  for (int i = 0; i < 3; ++i) pq[i] = bra.center[i] - ket.field[1 + i];
}

/// Boys values up to order L of a primitive quartet, scaled, and 1/(p+q).
template <int L>
struct RADIAL_T {
  vec inverse;
  vec f[L + 1];

  ZX_INLINE void evaluate(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, const BOYS_SERVICE_T& boys) {
    const vec q = ket.field[0];
    const vec root = rsqrt(bra.exponent + q);  // (p + q)^(-1/2)
    vec pq[3];
    distance(bra, ket, pq);
    const vec r2 = pq[0] * pq[0] + pq[1] * pq[1] + pq[2] * pq[2];
    inverse = root * root;
    boys_lanes<L>(boys, (bra.exponent * q) * inverse * r2, f);
    const vec prefactor = (bra.prefactor * ket.field[4]) * root;
    for (int m = 0; m <= L; ++m) f[m] *= prefactor;
  }
};

/// The factors of the recursion up to bra level E; those of the second ket step when the ket goes beyond level 1.
template <int E, bool SECOND>
ZX_INLINE void set_factors(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, vec inverse, QUARTET_FACTORS_T<E>& k) {
  const vec q = ket.field[0];
  const vec p_part = bra.exponent * inverse, q_part = q * inverse;  // p/(p+q), q/(p+q)
  vec pq[3];
  distance(bra, ket, pq);
  for (int i = 0; i < 3; ++i) {
    k.pa[i] = broadcast(bra.from_first[i]);
    k.wp[i] = -q_part * pq[i];
    k.qc[i] = ket.field[5 + i];
    k.wq[i] = p_part * pq[i];
  }
  const double half_p = 0.5 / bra.exponent;
  k.half_p = broadcast(half_p);
  k.half_p_rho = half_p * q_part;
  if constexpr (SECOND) {
    k.half_q = 0.5 / q;
    k.half_q_rho = k.half_q * p_part;
  }
  k.half_pq[0] = vec{};
  for (int n = 1; n <= E; ++n) k.half_pq[n] = (0.5 * n) * inverse;
}

/// Transposes the ket primitives of a batch; stops behind those that no bra primitive can use and returns their number.
__attribute__((noinline)) inline int load_ket_primitives(const BATCH_T& batch, int n_ket, KET_PRIMITIVE_T* kets) {
  const vec scale = load(batch.scale);
  const double largest_bra = __builtin_fabs(batch.bra->primitives[0].prefactor);
  int loaded = 0;
  for (; loaded < n_ket; ++loaded) {
    load_ket_primitive(batch, loaded, scale, kets[loaded]);
    if (kets[loaded].largest_prefactor * largest_bra < batch.primitive_cutoff) break;
  }
  return loaded;
}

template <int L>
__attribute__((noinline)) void evaluate_radial(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T* kets, int n,
                                               const BOYS_SERVICE_T& boys, RADIAL_T<L>* radial) {
  for (int k = 0; k < n; ++k) radial[k].evaluate(bra, kets[k], boys);
}

/// body(number of the bra primitive, number of the ket primitive, ket primitive, radial part) for every primitive quartet
/// whose product of prefactors reaches the batch's cut-off. `scratch` takes the transposed ket primitives and their Boys
/// values.
template <int L, class BODY, class END>
ZX_INLINE void for_each_primitive(const BATCH_T& batch, const BOYS_SERVICE_T& boys, vec* scratch, BODY&& body, END&& end) {
  const SHELL_PAIR_T& bra = *batch.bra;
  const int n_ket = ket_primitives(batch);
  KET_PRIMITIVE_T* kets = reinterpret_cast<KET_PRIMITIVE_T*>(scratch);
  RADIAL_T<L>* radial = reinterpret_cast<RADIAL_T<L>*>(kets + n_ket);
  const int loaded = load_ket_primitives(batch, n_ket, kets);
  // Boys values of all ket primitives first, recursions after: more independent work in the processor's window.
  for (int b = 0; b < bra.n_primitives; ++b) {
    const double size = __builtin_fabs(bra.primitives[b].prefactor);
    int used = 0;
    while (used < loaded && size * kets[used].largest_prefactor >= batch.primitive_cutoff) ++used;
    evaluate_radial<L>(bra.primitives[b], kets, used, boys, radial);
    for (int k = 0; k < used; ++k) body(b, k, kets[k], radial[k]);
    if (used > 0) end(b);
  }
}

template <int L, class BODY>
ZX_INLINE void for_each_primitive(const BATCH_T& batch, const BOYS_SERVICE_T& boys, vec* scratch, BODY&& body) {
  for_each_primitive<L>(batch, boys, scratch, body, [](int) __attribute__((always_inline)){});
}

}  // namespace zentrix::kernels::ZX_ISA

#pragma once

#include "integrals/kernels/horizontal.hpp"
#include "integrals/kernels/quartet_kernels.hpp"
#include "integrals/kernels/vertical.hpp"

// Front of a quartet class: primitives, contraction and bra transfer of one bra pair with LANES ket pairs.

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

/// Bra transfer of every column f: rows[ab][f] from contracted[f][e].
template <int LA, int LB>
__attribute__((noinline)) void transfer_bra(const double* separation, int nf, int stride, const vec* contracted, vec* rows) {
  using BRA = HORIZONTAL<LA, LB>;
  const vec ab[3] = {broadcast(separation[0]), broadcast(separation[1]), broadcast(separation[2])};
  for (int f = 0; f < nf; ++f, contracted += BRA::NE, ++rows) {
    const auto source = [&](int e) __attribute__((always_inline)) { return contracted[e]; };
    vec temporary[BRA::TEMPORARIES];
    BRA::intermediates(source, temporary, ab);
    loop<0, BRA::NA, (BRA::NA <= 6)>([&](int a) __attribute__((always_inline)) {
      unroll<0, BRA::NB>([&](auto index) __attribute__((always_inline)) {
        constexpr int b = decltype(index)::value;
        rows[(a * BRA::NB + b) * stride] = BRA::template last<b>(source, temporary, ab, a);
      });
    });
  }
}

template <int LA, int LB, int LC, int LD>
struct FRONT_OF_CLASS {
  using RECURSION = VERTICAL<LA, LA + LB, LC, LC + LD>;
  static constexpr int E = LA + LB, L = LA + LB + LC + LD;

  /// Boys values of a primitive quartet, scaled, and 1/(p+q).
  struct RADIAL_T {
    vec inverse;
    vec f[L + 1];
  };

  static ZX_INLINE void distance(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, vec* pq) {
    for (int i = 0; i < 3; ++i) pq[i] = bra.center[i] - ket.field[1 + i];
  }

  static ZX_INLINE void radial_part(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, const BOYS_SERVICE_T& boys,
                                    RADIAL_T& radial) {
    const vec q = ket.field[0];
    const vec root = rsqrt(bra.exponent + q);  // (p + q)^(-1/2)
    vec pq[3];
    distance(bra, ket, pq);
    const vec r2 = pq[0] * pq[0] + pq[1] * pq[1] + pq[2] * pq[2];
    radial.inverse = root * root;
    boys_lanes<L>(boys, (bra.exponent * q) * radial.inverse * r2, radial.f);
    const vec prefactor = (bra.prefactor * ket.field[4]) * root;
    for (int m = 0; m <= L; ++m) radial.f[m] *= prefactor;
  }

  static ZX_INLINE void primitive_quartet(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, const RADIAL_T& radial,
                                          vec* work, vec* contracted) {
    for (int m = 0; m <= L; ++m) work[m * RECURSION::NE] = radial.f[m];
    const vec q = ket.field[0], inverse = radial.inverse;
    const vec p_part = bra.exponent * inverse, q_part = q * inverse;  // p/(p+q), q/(p+q)
    vec pq[3];
    distance(bra, ket, pq);
    typename RECURSION::FACTORS k;
    for (int i = 0; i < 3; ++i) {
      k.pa[i] = broadcast(bra.from_first[i]);
      k.wp[i] = -q_part * pq[i];
      k.qc[i] = ket.field[5 + i];
      k.wq[i] = p_part * pq[i];
    }
    const double half_p = 0.5 / bra.exponent;
    k.half_p = broadcast(half_p);
    k.half_p_rho = half_p * q_part;
    if constexpr (LC + LD > 1) {
      k.half_q = 0.5 / q;
      k.half_q_rho = k.half_q * p_part;
    }
    k.half_pq[0] = vec{};
    for (int n = 1; n <= E; ++n) k.half_pq[n] = (0.5 * n) * inverse;
    RECURSION::run(k, work, contracted);
  }

  /// Small classes keep the contracted sums in registers, and the buffers of the recursion where stores can be left out.
  static constexpr bool SMALL = unroll_tree(E, LC + LD);

  static void run(const BATCH_T& batch, const BOYS_SERVICE_T& boys, double* scratch, double* rows) {
    vec* contracted = reinterpret_cast<vec*>(scratch);
    vec* work = contracted + RECURSION::NC * RECURSION::NF;
    KET_PRIMITIVE_T* kets = reinterpret_cast<KET_PRIMITIVE_T*>(work + RECURSION::WORK);
    vec sums[SMALL ? RECURSION::NC * RECURSION::NF : 1];
    if constexpr (SMALL) contracted = sums;
    for (int n = 0; n < RECURSION::NC * RECURSION::NF; ++n) contracted[n] = vec{};

    const SHELL_PAIR_T& bra = *batch.bra;
    int n_ket = 0;
    for (int lane = 0; lane < LANES; ++lane)
      n_ket = batch.kets[lane]->n_primitives > n_ket ? batch.kets[lane]->n_primitives : n_ket;
    const vec scale = load(batch.scale);
    const double largest_bra = __builtin_fabs(bra.primitives[0].prefactor);
    int loaded = 0;
    for (; loaded < n_ket; ++loaded) {
      load_ket_primitive(batch, loaded, scale, kets[loaded]);
      if (kets[loaded].largest_prefactor * largest_bra < batch.primitive_cutoff) break;
    }
    // Boys values of all ket primitives first, recursions after: more independent work in the processor's window.
    RADIAL_T* radial = reinterpret_cast<RADIAL_T*>(kets + n_ket);
    for (int b = 0; b < bra.n_primitives; ++b) {
      const double size = __builtin_fabs(bra.primitives[b].prefactor);
      int used = 0;
      for (; used < loaded && size * kets[used].largest_prefactor >= batch.primitive_cutoff; ++used)
        radial_part(bra.primitives[b], kets[used], boys, radial[used]);
      for (int k = 0; k < used; ++k) {
        if constexpr (SMALL) {
          vec local[RECURSION::WORK];
          primitive_quartet(bra.primitives[b], kets[k], radial[k], local, sums);
        } else {
          primitive_quartet(bra.primitives[b], kets[k], radial[k], work, contracted);
        }
      }
    }
    transfer_bra<LA, LB>(bra.separation, RECURSION::NF, row_stride(LC, LD), contracted, reinterpret_cast<vec*>(rows));
  }
};

/// Enters the fronts of bra class (LA, LB) into the table; defined in front_<bra>.cpp, one file each.
template <int LA, int LB>
struct FRONTS_OF_BRA {
  template <int CLASS>
  static void fill(FRONT* row) {
    constexpr int lc = CLASS >= 10 ? 4 : CLASS >= 6 ? 3 : CLASS >= 3 ? 2 : CLASS >= 1 ? 1 : 0;
    constexpr int ld = CLASS - lc * (lc + 1) / 2;
    if constexpr (bra_before_ket(LA, LB, lc, ld)) row[CLASS] = FRONT_OF_CLASS<LA, LB, lc, ld>::run;
    if constexpr (CLASS > 0) fill<CLASS - 1>(row);
  }
};

}  // namespace zentrix::kernels::ZX_ISA

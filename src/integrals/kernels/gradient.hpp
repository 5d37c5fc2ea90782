#pragma once

#include "integrals/kernels/gradient_kernels.hpp"
#include "integrals/kernels/gradient_vertical.hpp"
#include "integrals/kernels/horizontal.hpp"
#include "integrals/kernels/lane_runs.hpp"
#include "integrals/kernels/primitive_quartet.hpp"

// Exchange gradient of one bra pair with LANES ket pairs.
//
// With G_abcd = sum_s (D_ac D_bd + D_ad D_bc), the sum of G_abcd (ab|cd) over a quartet is the sum of x_ef (e0|f0), where x
// follows from G by the transposed horizontal recursions and depends on A-B and C-D alone. So the horizontal work is done
// once per contracted quartet, before the primitives; with the primitives' exponents a + b = p and c + d = q
//
//   bra as a whole:  sum x_ef (2p [e+1|f] + 2b (A-B) [e|f] - e [e-1|f])
//   B alone:         sum x_ef  2b ([e+1|f] + (A-B) [e|f])  +  the change of x with B at fixed (e0|f0)
//   D alone:         sum x_ef  2d ([e|f+1] + (C-D) [e|f])  +  the change of x with D
//
// from d/dB [ab| = 2b [a,b+1| - b [a,b-1| and (a,b+1| = (a+1,b| + (A-B) (ab|. Terms with exponents are dot products of x
// with the primitives; the others take contracted sums of [e|f] and are forward horizontal recursions of one level less.

namespace zentrix::kernels::ZX_ISA {

/// Densities of the kets in lanes: [c][a.., b..] and [d][a.., b..], one density after the other, each rounded up to whole
/// transposed blocks.
__attribute__((noinline)) inline void load_densities(const BATCH_T& batch, const GRADIENT_DENSITIES_T& densities, int nab,
                                                     int nc, int nd, vec* to_c, vec* to_d) {
  for (int s = 0; s < densities.count; ++s) {
    const double *from_c[LANES], *from_d[LANES];
    for (int lane = 0; lane < LANES; ++lane) {
      from_c[lane] = densities.panels + s * densities.stride + static_cast<long>(batch.kets[lane]->first_i) * nab;
      from_d[lane] = densities.panels + s * densities.stride + static_cast<long>(batch.kets[lane]->first_j) * nab;
    }
    load_runs(from_c, nc * nab, to_c + s * whole_blocks(nc * nab));
    load_runs(from_d, nd * nab, to_d + s * whole_blocks(nd * nab));
  }
}

/// The parts that know of the bra alone, for columns f = 0 .. nf.
template <int LA, int LB>
struct BRA_SIDE {
  using BRA = HORIZONTAL<LA, LB>;
  static constexpr int NA = BRA::NA, NB = BRA::NB, NX = BRA::NE, E0 = BRA::E0;

  /// x_ef, columns of NX, from the half-transformed products rows[ab][f].
  static __attribute__((noinline)) void gather(const vec* ab, int nf, int stride, const vec* rows, vec* x) {
    for (int f = 0; f < nf; ++f, x += NX) {
      vec temporary[BRA::TEMPORARIES];
      BRA::gather(
          [&](int a, int b) __attribute__((always_inline)) { return rows[(a * NB + b) * stride + f]; }, temporary, ab, x);
    }
  }

  /// force -= sum x_ef e [e-1|f]. `contracted` is the column of level LA, columns `column` vectors apart.
  static __attribute__((noinline)) void polynomial_of_bra(int nf, const vec* x, const vec* contracted, int column,
                                                          vec* force) {
    if constexpr (LA > 0)
      for (int f = 0; f < nf; ++f, x += NX, contracted += column)
        for (int e = 0; e < NX; ++e) {
          const COMPONENT_T& c = component(E0 + e);
          for (int i = 0; i < 3; ++i)
            if (c.power[i] > 0) force[i] -= (1.0 * c.power[i]) * x[e] * contracted[c.lower[i] - E0];
        }
  }

  /// force -= sum over (a, b, f) of the half-transformed products times b (a, b-1|f].
  static __attribute__((noinline)) void polynomial_of_b(const vec* ab, int nf, int stride, const vec* rows,
                                                        const vec* contracted, int column, vec* force) {
    if constexpr (LB > 0) {
      using LOWER = HORIZONTAL<LA, LB - 1>;
      for (int f = 0; f < nf; ++f, contracted += column) {
        const auto source = [&](int e) __attribute__((always_inline)) { return contracted[e]; };
        vec temporary[LOWER::TEMPORARIES];
        LOWER::intermediates(source, temporary, ab);
        loop<0, NA, (NA <= 6)>([&](int a) __attribute__((always_inline)) {
          unroll<0, LOWER::NB>([&](auto index) __attribute__((always_inline)) {
            constexpr COMPONENT_T c = component(level_offset(LB - 1) + decltype(index)::value);
            const vec value = LOWER::template last<decltype(index)::value>(source, temporary, ab, a);
            const vec* row = rows + a * NB * stride + f;
            unroll<0, 3>([&](auto i) __attribute__((always_inline)) {
              constexpr int raised = c.raise[decltype(i)::value] - level_offset(LB);
              force[decltype(i)::value] -= (c.power[decltype(i)::value] + 1.0) * value * row[raised * stride];
            });
          });
        });
      }
    }
  }
};

template <int LA, int LB, int LC, int LD>
struct GRADIENT_OF_CLASS {
  using RECURSION = GRADIENT_VERTICAL<LA, LB, LC, LD>;
  static constexpr int NA = component_count(LA), NB = component_count(LB), NAB = NA + NB;
  static constexpr int NC = component_count(LC), ND = component_count(LD);
  static constexpr int E0 = level_offset(LA), F0 = RECURSION::F0, S0 = RECURSION::S0;
  static constexpr int NX = RECURSION::NX, NF = RECURSION::NF, NS = RECURSION::NS;
  static constexpr int STRIDE = row_stride(LC, LD);
  static constexpr int L = LA + LB + LC + LD + 1;
  static constexpr bool SMALL = RECURSION::UNROLLED;

  /// Densities of the kets in lanes, [c][a.., b..] and [d][a.., b..], one density after the other.
  struct DENSITY_LANES_T {
    const vec *c, *d;
    int count;
    static constexpr int C = whole_blocks(NC * NAB), D = whole_blocks(ND * NAB);

    /// G_abcd of one pair (a, b) as [c][d].
    ZX_INLINE void products(int a, int b, vec* g) const {
      add_products<true>(c, d, a, NA + b, g);
      for (int s = 1; s < count; ++s) add_products<false>(c + s * C, d + s * D, a, NA + b, g);
    }
    template <bool FIRST>
    static ZX_INLINE void add_products(const vec* dc, const vec* dd, int a, int b, vec* g) {
      loop<0, NC, (LC <= 2)>([&](int ic) __attribute__((always_inline)) {
        const vec ac = dc[ic * NAB + a], bc = dc[ic * NAB + b];
        unroll<0, ND>([&](auto id) __attribute__((always_inline)) {
          constexpr int n = decltype(id)::value;
          const vec product = ac * dd[n * NAB + b] + bc * dd[n * NAB + a];
          if constexpr (FIRST)
            g[ic * ND + n] = product;
          else
            g[ic * ND + n] += product;
        });
      });
    }
  };

  /// x_ef, columns of NX; rows[ab][f] keeps the half-transformed products.
  static ZX_INLINE void transform(const DENSITY_LANES_T& densities, const vec* ab, const vec* cd, vec* rows, vec* x) {
    using KET = HORIZONTAL<LC, LD>;
    for (int a = 0; a < NA; ++a)
      for (int b = 0; b < NB; ++b) {
        vec g[NC * ND], temporary[KET::TEMPORARIES];
        densities.products(a, b, g);
        KET::gather(
            [&](int c, int d) __attribute__((always_inline)) { return g[c * ND + d]; }, temporary, cd,
            rows + (a * NB + b) * STRIDE);
      }
    BRA_SIDE<LA, LB>::gather(ab, NF, STRIDE, rows, x);
  }

  /// d -= sum of G_abcd d (ab|c, d-1); overwrites rows.
  static ZX_INLINE void polynomial_of_d(const DENSITY_LANES_T& densities, const double* separation, const vec* cd,
                                        const vec* contracted, vec* rows, vec* d) {
    if constexpr (LD > 0) {
      using LOWER = HORIZONTAL<LC, LD - 1>;
      transfer_bra<LA, LB>(separation, level_offset(LC + LD) - F0, STRIDE, contracted + E0 - S0, NS, rows);
      for (int a = 0; a < NA; ++a)
        for (int b = 0; b < NB; ++b, rows += STRIDE) {
          vec g[NC * ND], temporary[LOWER::TEMPORARIES];
          densities.products(a, b, g);
          const auto source = [&](int f) __attribute__((always_inline)) { return rows[f]; };
          LOWER::intermediates(source, temporary, cd);
          loop<0, NC, (LC <= 2)>([&](int c) __attribute__((always_inline)) {
            unroll<0, LOWER::NB>([&](auto index) __attribute__((always_inline)) {
              constexpr COMPONENT_T lower = component(level_offset(LD - 1) + decltype(index)::value);
              const vec value = LOWER::template last<decltype(index)::value>(source, temporary, cd, c);
              unroll<0, 3>([&](auto i) __attribute__((always_inline)) {
                constexpr int raised = lower.raise[decltype(i)::value] - level_offset(LD);
                d[decltype(i)::value] -= (lower.power[decltype(i)::value] + 1.0) * value * g[c * ND + raised];
              });
            });
          });
        }
    }
  }

  /// Derivatives as they come together.
  struct FORCES_T {
    vec bra[3] = {}, b[3] = {}, d[3] = {};
  };

  static ZX_INLINE void add_primitive(const GRADIENT_SUMS_T& s, double p, double beta, vec delta, const vec* ab,
                                      const vec* cd, FORCES_T& forces) {
    for (int i = 0; i < 3; ++i) {
      const vec shifted = ab[i] * s.v;
      forces.bra[i] += 2.0 * (p * s.u[i] + beta * shifted);
      forces.b[i] += (2.0 * beta) * (s.u[i] + shifted);
      forces.d[i] += 2.0 * delta * (s.z[i] + cd[i] * s.v);
    }
  }

  static ZX_INLINE void primitive_quartet(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial,
                                          vec* work, const vec* x, vec* contracted, GRADIENT_SUMS_T& sums) {
    for (int m = 0; m <= L; ++m) work[m * RECURSION::NE] = radial.f[m];
    typename RECURSION::FACTORS k;
    set_factors<RECURSION::E, (LC + LD > 0)>(bra, ket, radial.inverse, k);
    RECURSION::run(k, work, x, contracted, sums);
  }

  static void run(const BATCH_T& batch, const BOYS_SERVICE_T& boys, const GRADIENT_DENSITIES_T& target, double* scratch,
                  double* rows_out, double* forces_out) {
    vec* free = reinterpret_cast<vec*>(scratch);
    const auto take = [&](int n) {
      vec* taken = free;
      free += n;
      return taken;
    };
    vec* rows = reinterpret_cast<vec*>(rows_out);
    vec ab[3], cd[3];
    for (int i = 0; i < 3; ++i) {
      ab[i] = broadcast(batch.bra->separation[i]);
      for (int lane = 0; lane < LANES; ++lane) cd[i][lane] = batch.kets[lane]->separation[i];
    }
    vec* c = take(target.count * DENSITY_LANES_T::C);
    vec* d = take(target.count * DENSITY_LANES_T::D);
    load_densities(batch, target, NAB, NC, ND, c, d);
    const DENSITY_LANES_T densities{c, d, target.count};

    vec own_x[SMALL ? NX * NF : 1], own_contracted[SMALL ? NS * NF + 1 : 1] = {};
    vec* x = SMALL ? own_x : take(NX * NF);
    vec* contracted = SMALL ? own_contracted : take(NS * NF);
    vec* work = SMALL ? nullptr : take(RECURSION::WORK);
    transform(densities, ab, cd, rows, x);
    for (int n = 0; n < NS * NF; ++n) contracted[n] = vec{};

    const int n_ket = ket_primitives(batch);
    vec* delta = take(n_ket);
    for (int k = 0; k < n_ket; ++k)
      for (int lane = 0; lane < LANES; ++lane)
        delta[k][lane] = k < batch.kets[lane]->n_primitives ? batch.kets[lane]->second[k] : 0.0;
    FORCES_T forces;
    for_each_primitive<L>(
        batch, boys,
        free, [&](int b, int k, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial) __attribute__((always_inline)) {
          const PRIMITIVE_PAIR_T& bra = batch.bra->primitives[b];
          GRADIENT_SUMS_T sums;
          if constexpr (SMALL) {
            vec local[RECURSION::WORK];
            primitive_quartet(bra, ket, radial, local, own_x, own_contracted, sums);
          } else {
            primitive_quartet(bra, ket, radial, work, x, contracted, sums);
          }
          add_primitive(sums, bra.exponent, batch.bra->second[b], delta[k], ab, cd, forces);
        });
    BRA_SIDE<LA, LB>::polynomial_of_bra(NF, x, contracted + E0 - S0, NS, forces.bra);
    BRA_SIDE<LA, LB>::polynomial_of_b(ab, NF, STRIDE, rows, contracted + E0 - S0, NS, forces.b);
    polynomial_of_d(densities, batch.bra->separation, cd, contracted, rows, forces.d);
    for (int i = 0; i < 3; ++i) {
      store(forces_out + i * LANES, forces.bra[i]);
      store(forces_out + (3 + i) * LANES, forces.b[i]);
      store(forces_out + (6 + i) * LANES, forces.d[i]);
    }
  }
};

/// Enters the kernels of bra class (LA, LB) into the table; defined in gradient_<bra>.cpp, one file each.
template <int LA, int LB>
struct GRADIENTS_OF_BRA {
  template <int CLASS>
  static void fill(EXCHANGE_GRADIENT* row) {
    constexpr int lc = CLASS >= 10 ? 4 : CLASS >= 6 ? 3 : CLASS >= 3 ? 2 : CLASS >= 1 ? 1 : 0;
    constexpr int ld = CLASS - lc * (lc + 1) / 2;
    if constexpr (bra_before_ket(LA, LB, lc, ld)) row[CLASS] = GRADIENT_OF_CLASS<LA, LB, lc, ld>::run;
    if constexpr (CLASS > 0) fill<CLASS - 1>(row);
  }
};

}  // namespace zentrix::kernels::ZX_ISA

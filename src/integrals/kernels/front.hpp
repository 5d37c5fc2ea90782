#pragma once

#include "integrals/kernels/horizontal.hpp"
#include "integrals/kernels/lane_runs.hpp"
#include "integrals/kernels/primitive_quartet.hpp"

// Front of a quartet class: primitives, contraction and bra transfer of one bra pair with LANES ket pairs. Shells that are
// contractions of the same primitives (general contraction, Raffenetti, J. Chem. Phys. 58 (1973) 4452) may come as one.

namespace zentrix::kernels::ZX_ISA {

template <int LA, int LB, int LC, int LD>
struct FRONT_OF_CLASS {
  using RECURSION = VERTICAL<LA, LA + LB, LC, LC + LD>;
  static constexpr int E = LA + LB, L = LA + LB + LC + LD;
  static constexpr int SIZE = RECURSION::NC * RECURSION::NF;  ///< of a block of contracted sums [f][e]
  static constexpr int STRIDE = row_stride(LC, LD);

  /// Adds one primitive quartet to a block of sums, or with ADD off replaces the block by it.
  template <bool ADD = true>
  static ZX_INLINE void primitive_quartet(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial,
                                          vec* work, vec* contracted) {
    for (int m = 0; m <= L; ++m) work[m * RECURSION::NE] = radial.f[m];
    typename RECURSION::FACTORS k;
    set_factors<E, (LC + LD > 1)>(bra, ket, radial.inverse, k);
    VERTICAL<LA, LA + LB, LC, LC + LD, ADD>::run(k, work, contracted);
  }
  /// The same as a function, which large classes share among their uses.
  template <bool ADD = true>
  static __attribute__((noinline)) void large_quartet(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket,
                                                      const RADIAL_T<L>& radial, vec* work, vec* contracted) {
    primitive_quartet<ADD>(bra, ket, radial, work, contracted);
  }

  /// Small classes keep the contracted sums in registers, and the buffers of the recursion where stores can be left out.
  static constexpr bool SMALL = unroll_tree(E, LC + LD);

  static void run(const BATCH_T& batch, const BOYS_SERVICE_T& boys, double* scratch, double* rows) {
    if (batch.bra->n_contractions * batch.kets[0]->n_contractions > 1)
      general(batch, boys, scratch, reinterpret_cast<vec*>(rows));
    else
      plain(batch, boys, scratch, rows);
  }

 private:
  static void plain(const BATCH_T& batch, const BOYS_SERVICE_T& boys, double* scratch, double* rows) {
    vec* contracted = reinterpret_cast<vec*>(scratch);
    vec* work = contracted + SIZE;
    vec sums[SMALL ? SIZE : 1];
    if constexpr (SMALL) contracted = sums;
    for (int n = 0; n < SIZE; ++n) contracted[n] = vec{};
    for_each_primitive<L>(
        batch, boys, work + RECURSION::WORK,
        [&](int b, int, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial) __attribute__((always_inline)) {
          const PRIMITIVE_PAIR_T& bra = batch.bra->primitives[b];
          if constexpr (SMALL) {
            vec local[RECURSION::WORK];
            primitive_quartet(bra, ket, radial, local, sums);
          } else {
            large_quartet(bra, ket, radial, work, contracted);
          }
        });
    transfer_bra<LA, LB>(batch.bra->separation, RECURSION::NF, STRIDE, contracted, RECURSION::NC,
                         reinterpret_cast<vec*>(rows));
  }

  /// Several contractions over the same primitives: the sums of all combinations are made in two steps, over the ket for
  /// each bra primitive, then over the bra. Leaves one set of rows for every combination, those of the bra first.
  static void general(const BATCH_T& batch, const BOYS_SERVICE_T& boys, double* scratch, vec* rows) {
    const int n_bra = batch.bra->n_contractions, n_ket = batch.kets[0]->n_contractions;
    vec* sums = reinterpret_cast<vec*>(scratch);
    vec* by_ket = sums + n_bra * n_ket * SIZE;
    vec* fresh = by_ket + n_ket * SIZE;
    vec* work = fresh + SIZE;
    vec* weights = work + RECURSION::WORK;
    vec* free = weights + load_weights(batch, n_ket, weights);
    for (int n = 0; n < (n_bra + 1) * n_ket * SIZE; ++n) sums[n] = vec{};
    for_each_primitive<L>(
        batch, boys, free,
        [&](int b, int number, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial) __attribute__((always_inline)) {
          const PRIMITIVE_PAIR_T& bra = batch.bra->primitives[b];
          if constexpr (SMALL) {
            vec local[RECURSION::WORK], values[SIZE];
            primitive_quartet<false>(bra, ket, radial, local, values);
            add_weighted(n_ket, weights + n_ket * number, values, by_ket);
          } else if (n_ket == 1) {
            large_quartet(bra, ket, radial, work, by_ket);
          } else {
            large_quartet<false>(bra, ket, radial, work, fresh);
            add_weighted(n_ket, weights + n_ket * number, fresh, by_ket);
          }
        },
        [&](int number) __attribute__((always_inline)) {
          for (int i = 0; i < n_bra; ++i) {
            const double weight = n_bra > 1 ? batch.bra->weights[n_bra * number + i] : 1.0;
            for (int n = 0; n < n_ket * SIZE; ++n) sums[i * n_ket * SIZE + n] += weight * by_ket[n];
          }
          for (int n = 0; n < n_ket * SIZE; ++n) by_ket[n] = vec{};
        });
    for (int n = 0; n < n_bra * n_ket; ++n)
      transfer_bra<LA, LB>(batch.bra->separation, RECURSION::NF, STRIDE, sums + n * SIZE, RECURSION::NC,
                           rows + n * component_count(LA) * component_count(LB) * STRIDE);
  }

  /// Ket weights of a batch, n_ket for each primitive; those of missing primitives are any numbers, since the prefactor is 0
  /// there. Returns the number of vectors written.
  static int load_weights(const BATCH_T& batch, int n_ket, vec* out) {
    const int n = n_ket * ket_primitives(batch);
    if (n_ket == 1) {
      for (int k = 0; k < n; ++k) out[k] = broadcast(1.0);
      return n;
    }
    const double* from[LANES];
    for (int lane = 0; lane < LANES; ++lane) from[lane] = batch.kets[lane]->weights;
    load_runs(from, n, out);
    return whole_blocks(n);
  }

  static ZX_INLINE void add_weighted(int n_ket, const vec* weights, const vec* values, vec* by_ket) {
    for (int c = 0; c < n_ket; ++c, by_ket += SIZE)
      for (int n = 0; n < SIZE; ++n) by_ket[n] += weights[c] * values[n];
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

#pragma once

#include "integrals/kernels/horizontal.hpp"
#include "integrals/kernels/primitive_quartet.hpp"

// Front of a quartet class with merged shells. One vertical recursion serves all combinations of the shells that were
// merged; they differ in the factors with which its [e0|f0] enter the contracted sums: a combination (la, lb) of the bra
// takes the levels e = la .. la + lb, a combination of the ket likewise. The sums are made in two steps, over the ket for
// each bra primitive, then over the bra. `contracted` sums and rows hold the combinations one after the other.

namespace zentrix::kernels::ZX_ISA {

/// The combinations of a pair of kinds, in the order of SHELL_PAIR_T::weights.
template <int KA, int KB>
struct COMBINATIONS {
  static constexpr int COUNT = shells_in(KA) * shells_in(KB);
  static constexpr int LOWEST = lowest_l(KA), HIGHEST = highest_l(KA) + highest_l(KB);
  static constexpr int first(int n) { return n / shells_in(KB); }
  static constexpr int second(int n) { return n % shells_in(KB); }
  static constexpr int la(int n) { return l_of(KA, first(n)); }
  static constexpr int lb(int n) { return l_of(KB, second(n)); }
  /// First function of either shell in its kind.
  static constexpr int a0(int n) { return first_function(KA, first(n)); }
  static constexpr int b0(int n) { return first_function(KB, second(n)); }
  /// Components of the levels of combination n, and of all before it.
  static constexpr int size(int n) { return level_offset(la(n) + lb(n) + 1) - level_offset(la(n)); }
  static constexpr int offset(int n) {
    int at = 0;
    for (int m = 0; m < n; ++m) at += size(m);
    return at;
  }
  static constexpr int SIZE = offset(COUNT);
  /// Where the first level of combination n stands among the levels from LOWEST on.
  static constexpr int source(int n) { return level_offset(la(n)) - level_offset(LOWEST); }
};

/// Bra transfer of one combination: rows[(a NB + b) stride + f] from contracted[f][e].
template <class BRA, int N, int NB>
__attribute__((noinline)) void transfer_combination(const double* separation, int nf, int stride, const vec* contracted,
                                                    vec* rows) {
  using TRANSFER = HORIZONTAL<BRA::la(N), BRA::lb(N)>;
  const vec ab[3] = {broadcast(separation[0]), broadcast(separation[1]), broadcast(separation[2])};
  rows += (BRA::a0(N) * NB + BRA::b0(N)) * stride;
  contracted += BRA::offset(N);
  for (int f = 0; f < nf; ++f, contracted += BRA::SIZE, ++rows) {
    const auto source = [&](int e) __attribute__((always_inline)) { return contracted[e]; };
    vec temporary[TRANSFER::TEMPORARIES];
    TRANSFER::intermediates(source, temporary, ab);
    unroll<0, TRANSFER::NA>([&](auto a) __attribute__((always_inline)) {
      unroll<0, TRANSFER::NB>([&](auto b) __attribute__((always_inline)) {
        rows[(decltype(a)::value * NB + decltype(b)::value) * stride] =
            TRANSFER::template last<decltype(b)::value>(source, temporary, ab, decltype(a)::value);
      });
    });
  }
}

template <int KA, int KB, int KC, int KD>
struct FRONT_OF_MERGED_CLASS {
  using BRA = COMBINATIONS<KA, KB>;
  using KET = COMBINATIONS<KC, KD>;
  using RECURSION = VERTICAL<BRA::LOWEST, BRA::HIGHEST, KET::LOWEST, KET::HIGHEST, KET::COUNT == 1>;
  static constexpr int E = BRA::HIGHEST, F = KET::HIGHEST, L = E + F;
  static constexpr int NC = RECURSION::NC, NF = RECURSION::NF;
  static constexpr bool MERGED_BRA = BRA::COUNT > 1, MERGED_KET = KET::COUNT > 1;

  /// Ket factors of a batch, vectors: four for each primitive. Those of missing primitives are any numbers, since the
  /// prefactor is 0 there. A vector of eight lanes reads two primitives at once, the last one with four spare doubles behind
  /// it.
  static constexpr int WEIGHTS = 4, AT_ONCE = LANES / WEIGHTS;
  static void load_weights(const BATCH_T& batch, int n, vec* out) {
    static constexpr double none[LANES] = {};
    for (int k = 0; k < n; k += AT_ONCE, out += LANES) {
      for (int lane = 0; lane < LANES; ++lane) {
        const SHELL_PAIR_T& ket = *batch.kets[lane];
        out[lane] = load(k < ket.n_primitives ? ket.weights + WEIGHTS * k : none);
      }
      transpose(out);
    }
  }

  /// by_ket[f of all ket combinations][e] += factor times [e|f].
  static ZX_INLINE void add_ket(const vec* weights, const vec* fresh, vec* by_ket) {
    unroll<0, KET::COUNT>([&](auto combination) __attribute__((always_inline)) {
      constexpr int c = decltype(combination)::value;
      const vec w = weights[c];
      const vec* from = fresh + KET::source(c) * NC;
      vec* to = by_ket + KET::offset(c) * NC;
      for (int n = 0; n < KET::size(c) * NC; ++n) to[n] += w * from[n];
    });
  }

  /// sums[f][e of all bra combinations] += factor times by_ket[f][e].
  static ZX_INLINE void add_bra(const double* weights, const vec* by_ket, vec* sums) {
    for (int f = 0; f < KET::SIZE; ++f, by_ket += NC, sums += BRA::SIZE)
      unroll<0, BRA::COUNT>([&](auto combination) __attribute__((always_inline)) {
        constexpr int c = decltype(combination)::value;
        for (int n = 0; n < BRA::size(c); ++n) sums[BRA::offset(c) + n] += weights[c] * by_ket[BRA::source(c) + n];
      });
  }

  /// Small classes keep the buffers of the recursion where stores can be left out.
  static constexpr bool SMALL = unroll_tree(E, F);

  /// fresh = (with a merged ket) or += the [e|f] of a primitive quartet.
  static ZX_INLINE void primitive_quartet(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial,
                                          vec* work, vec* fresh) {
    for (int m = 0; m <= L; ++m) work[m * RECURSION::NE] = radial.f[m];
    typename RECURSION::FACTORS k;
    set_factors<E, (F > 1)>(bra, ket, radial.inverse, k);
    RECURSION::run(k, work, fresh);
  }

  static void run(const BATCH_T& batch, const BOYS_SERVICE_T& boys, double* scratch, double* rows_out) {
    vec* free = reinterpret_cast<vec*>(scratch);
    const auto take = [&](int n) {
      vec* taken = free;
      free += n;
      return taken;
    };
    vec* sums = take(KET::SIZE * BRA::SIZE);
    vec* by_ket = MERGED_BRA ? take(KET::SIZE * NC) : sums;
    vec* fresh = MERGED_KET ? take(NF * NC) : by_ket;
    vec* work = take(RECURSION::WORK);
    const int n_ket = ket_primitives(batch);
    vec* weights = take(MERGED_KET ? WEIGHTS * (n_ket + AT_ONCE - 1) : 0);
    if constexpr (MERGED_KET) load_weights(batch, n_ket, weights);
    for (int n = 0; n < KET::SIZE * BRA::SIZE; ++n) sums[n] = vec{};
    if constexpr (MERGED_BRA)
      for (int n = 0; n < KET::SIZE * NC; ++n) by_ket[n] = vec{};
    for_each_primitive<L>(
        batch, boys, free,
        [&](int b, int number, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial) __attribute__((always_inline)) {
          const PRIMITIVE_PAIR_T& bra = batch.bra->primitives[b];
          if constexpr (SMALL && MERGED_KET) {
            vec local[RECURSION::WORK], values[NF * NC];
            primitive_quartet(bra, ket, radial, local, values);
            add_ket(weights + WEIGHTS * number, values, by_ket);
          } else {
            vec local[SMALL ? RECURSION::WORK : 1];
            primitive_quartet(bra, ket, radial, SMALL ? local : work, fresh);
            if constexpr (MERGED_KET) add_ket(weights + WEIGHTS * number, fresh, by_ket);
          }
        },
        [&](int number) __attribute__((always_inline)) {
          if constexpr (MERGED_BRA) {
            add_bra(batch.bra->weights + WEIGHTS * number, by_ket, sums);
            for (int n = 0; n < KET::SIZE * NC; ++n) by_ket[n] = vec{};
          }
        });
    unroll<0, BRA::COUNT>([&](auto combination) __attribute__((always_inline)) {
      transfer_combination<BRA, decltype(combination)::value, function_count(KB)>(
          batch.bra->separation, KET::SIZE, row_stride(KC, KD), sums, reinterpret_cast<vec*>(rows_out));
    });
  }
};

/// Enters the fronts of one merged bra class into the table.
template <int KA, int KB>
struct MERGED_FRONTS_OF_BRA {
  template <int CLASS = 0>
  static void fill(FRONT* row) {
    constexpr KINDS_T ket = merged_kinds(CLASS);
    constexpr bool merged = KA == SP_SHELL || KB == SP_SHELL || ket.first == SP_SHELL || ket.second == SP_SHELL;
    if constexpr (merged && pair_rank(KA, KB) >= pair_rank(ket.first, ket.second))
      row[CLASS] = FRONT_OF_MERGED_CLASS<KA, KB, ket.first, ket.second>::run;
    if constexpr (CLASS + 1 < MERGED_PAIR_CLASSES) fill<CLASS + 1>(row);
  }
};

}  // namespace zentrix::kernels::ZX_ISA

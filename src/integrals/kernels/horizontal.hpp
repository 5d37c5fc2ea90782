#pragma once

#include "integrals/kernels/components.hpp"

// Horizontal recursion (Head-Gordon, Pople, J. Chem. Phys. 89 (1988) 5777): (a, b + 1_i) = (a + 1_i, b) + (A-B)_i (a, b), on
// contracted numbers, from (e, 0) with e = LA .. LA + LB to the block (a, b). The same code serves the bra, whose A - B is
// one number for all lanes, and the ket, whose C - D is a vector.

namespace zentrix::kernels::ZX_ISA {

template <int LA, int LB>
struct HORIZONTAL {
  static constexpr int E0 = level_offset(LA);
  static constexpr int NE = level_offset(LA + LB + 1) - E0;
  static constexpr int NA = component_count(LA), NB = component_count(LB);

  // Intermediate (e, b) with b of level beta, e = LA .. LA + LB - beta, at table(beta) + (e - E0) count(beta) + b.
  static constexpr int elements(int beta) { return (level_offset(LA + LB - beta + 1) - E0) * component_count(beta); }
  static constexpr int table(int beta) {
    int at = 0;
    for (int level = 1; level < beta; ++level) at += elements(level);
    return at;
  }
  static constexpr int TEMPORARIES = LB > 1 ? table(LB) : 1;

  /// Direction in which (., b) is raised to: the first non-zero power.
  static constexpr int direction(int b) {
    const COMPONENT_T c = component(b);
    return c.power[0] > 0 ? 0 : c.power[1] > 0 ? 1 : 2;
  }

  /// Element (e, b) of level BETA from the level below. `source` reads (e, 0) by e - E0; e is a constant in unrolled code.
  template <int BETA, int B, class SOURCE, class SEPARATION>
  static ZX_INLINE vec element(const SOURCE& source, const vec* temporary, const SEPARATION* separation, int e) {
    if constexpr (BETA == 0) {
      return source(e - E0);
    } else {
      constexpr int b = level_offset(BETA) + B, i = direction(b), lower = component(b).lower[i];
      const int up = component(e).raise[i];
      if constexpr (BETA == 1) {
        return source(up - E0) + separation[i] * source(e - E0);
      } else {
        constexpr int n = component_count(BETA - 1), below = lower - level_offset(BETA - 1);
        const vec* t = temporary + table(BETA - 1);
        return t[(up - E0) * n + below] + separation[i] * t[(e - E0) * n + below];
      }
    }
  }

  /// All intermediates below the last level.
  template <class SOURCE, class SEPARATION>
  static ZX_INLINE void intermediates(const SOURCE& source, vec* temporary, const SEPARATION* separation) {
    unroll<1, LB>([&](auto level) __attribute__((always_inline)) {
      constexpr int beta = decltype(level)::value, n = component_count(beta);
      loop<E0, level_offset(LA + LB - beta + 1), (NA <= 6)>([&](int e) __attribute__((always_inline)) {
        vec* out = temporary + table(beta) + (e - E0) * n;
        unroll<0, n>([&](auto index) __attribute__((always_inline)) {
          out[decltype(index)::value] = element<beta, decltype(index)::value>(source, temporary, separation, e);
        });
      });
    });
  }

  /// The transposed recursion: x(e) = sum over the block of block(a, b) d(a,b)/d(e,0), so that sum_ab block(a, b) (a,b)
  /// equals sum_e x(e) (e,0).
  template <class BLOCK, class SEPARATION>
  static ZX_INLINE void gather(const BLOCK& block, vec* temporary, const SEPARATION* separation, vec* x) {
    if constexpr (LB == 0) {
      loop<0, NA, (NA <= 6)>([&](int a) __attribute__((always_inline)) { x[a] = block(a, 0); });
    } else {
      loop<0, NE, (NA <= 6)>([&](int e) __attribute__((always_inline)) { x[e] = vec{}; });
      if constexpr (LB > 1)
        loop<0, TEMPORARIES, (NA <= 6)>([&](int n) __attribute__((always_inline)) { temporary[n] = vec{}; });
      unroll<0, LB>([&](auto down) __attribute__((always_inline)) {
        gather_level<LB - decltype(down)::value>(block, temporary, separation, x);
      });
    }
  }
  /// Hands the elements of level BETA down to the level below.
  template <int BETA, class BLOCK, class SEPARATION>
  static ZX_INLINE void gather_level(const BLOCK& block, vec* temporary, const SEPARATION* separation, vec* x) {
    constexpr int n = component_count(BETA);
    loop<E0, level_offset(LA + LB - BETA + 1), (NA <= 6)>([&](int e) __attribute__((always_inline)) {
      unroll<0, n>([&](auto index) __attribute__((always_inline)) {
        constexpr int b = level_offset(BETA) + decltype(index)::value, i = direction(b), lower = component(b).lower[i];
        const int up = component(e).raise[i];
        vec value;
        if constexpr (BETA == LB)
          value = block(e - E0, decltype(index)::value);
        else
          value = temporary[table(BETA) + (e - E0) * n + decltype(index)::value];
        if constexpr (BETA == 1) {
          x[up - E0] += value;
          x[e - E0] += separation[i] * value;
        } else {
          constexpr int m = component_count(BETA - 1), below = lower - level_offset(BETA - 1);
          vec* t = temporary + table(BETA - 1);
          t[(up - E0) * m + below] += value;
          t[(e - E0) * m + below] += separation[i] * value;
        }
      });
    });
  }

  /// Element (a, b) of the block, a and b counted inside their shells.
  template <int B, class SOURCE, class SEPARATION>
  static ZX_INLINE vec last(const SOURCE& source, const vec* temporary, const SEPARATION* separation, int a) {
    return element<LB, B>(source, temporary, separation, E0 + a);
  }
};

/// Bra transfer of every column f: rows[ab][f] from contracted[f][e], columns `column` vectors apart.
template <int LA, int LB>
__attribute__((noinline)) void transfer_bra(const double* separation, int nf, int stride, const vec* contracted, int column,
                                            vec* rows) {
  using BRA = HORIZONTAL<LA, LB>;
  const vec ab[3] = {broadcast(separation[0]), broadcast(separation[1]), broadcast(separation[2])};
  for (int f = 0; f < nf; ++f, contracted += column, ++rows) {
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

}  // namespace zentrix::kernels::ZX_ISA

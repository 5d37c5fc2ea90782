#pragma once

#include "integrals/kernels/vertical.hpp"

// Vertical recursion of the exchange gradient: [e|f] = [e0|f0] with e one above LA + LB or f one above LC + LD, but not
// both. Each column f is multiplied with the transformed density products x_ef as soon as it is there.

namespace zentrix::kernels::ZX_ISA {

/// Largest sum of the top levels of e and f for which the tree over f becomes straight-line code.
constexpr bool unroll_gradient_tree(int e, int f) {
#ifdef ZX_BASELINE_ONLY
  return e + f <= 2;
#else
  return e + f <= 5;
#endif
}

/// Sums over (e, f) of one primitive quartet: v of x_ef [e|f], u of x_ef [e+1|f], z of x_ef [e|f+1].
struct GRADIENT_SUMS_T {
  vec v = {};
  vec u[3] = {};
  vec z[3] = {};
};

/// The products of one column f with the density products. Z is the set of directions (bits) in which f has a column below
/// it, BRA says whether it has density products of its own.
template <int LA, int LB>
struct GRADIENT_COLUMN {
  static constexpr int E0 = level_offset(LA), NX = level_offset(LA + LB + 1) - E0;

  /// r: the column, x: its density products, below[i]: those of the column one lower in direction i.
  template <bool BRA, int Z>
  static ZX_INLINE void inlined(const vec* __restrict r, const vec* __restrict x, const vec* const* below,
                                GRADIENT_SUMS_T& __restrict sums) {
    GRADIENT_SUMS_T s = sums;
    const vec *bx = nullptr, *by = nullptr, *bz = nullptr;
    if constexpr ((Z & 1) != 0) bx = below[0];
    if constexpr ((Z & 2) != 0) by = below[1];
    if constexpr ((Z & 4) != 0) bz = below[2];
    loop<0, NX, unroll_components(LA + LB + 1)>([&](int e) __attribute__((always_inline)) {
      const vec value = r[E0 + e];
      if constexpr (BRA) {
        const COMPONENT_T& c = component(E0 + e);
        const vec weight = x[e];
        s.v += weight * value;
        s.u[0] += weight * r[c.raise[0]];
        s.u[1] += weight * r[c.raise[1]];
        s.u[2] += weight * r[c.raise[2]];
      }
      if constexpr ((Z & 1) != 0) s.z[0] += bx[e] * value;
      if constexpr ((Z & 2) != 0) s.z[1] += by[e] * value;
      if constexpr ((Z & 4) != 0) s.z[2] += bz[e] * value;
    });
    sums = s;
  }

  template <bool BRA, int Z>
  static __attribute__((noinline)) void shared(const vec* r, const vec* x, const vec* const* below, GRADIENT_SUMS_T& sums) {
    inlined<BRA, Z>(r, x, below, sums);
  }
  using FUNCTION = void (*)(const vec* r, const vec* x, const vec* const* below, GRADIENT_SUMS_T& sums);
  static constexpr FUNCTION OF[2][8] = {{nullptr, shared<false, 1>, shared<false, 2>, shared<false, 3>, shared<false, 4>,
                                         shared<false, 5>, shared<false, 6>, shared<false, 7>},
                                        {shared<true, 0>, shared<true, 1>, shared<true, 2>, shared<true, 3>, shared<true, 4>,
                                         shared<true, 5>, shared<true, 6>, shared<true, 7>}};
};

/// One ket step: planes m < `planes` for the levels LOW .. E of e, and one more that lacks level E.
template <int E, int DIRECTION, bool SECOND, int LOW>
struct GRADIENT_STEP {
  static constexpr int NE = level_offset(E + 1);
  static ZX_INLINE void inlined(const QUARTET_FACTORS_T<E>& k, vec* out, const vec* parent, const vec* grand, int planes,
                                int parent_power) {
    KET_STEP<E, DIRECTION, SECOND, LOW, false>::inlined(k, out, parent, grand, planes, parent_power);
    KET_STEP<E, DIRECTION, SECOND, LOW, false, E - 1>::inlined(k, out + planes * NE, parent + planes * NE,
                                                               grand + planes * NE, 1, parent_power);
  }
  static __attribute__((noinline)) void shared(const QUARTET_FACTORS_T<E>& k, vec* out, const vec* parent, const vec* grand,
                                               int planes, int parent_power) {
    inlined(k, out, parent, grand, planes, parent_power);
  }
};

template <int LA, int LB, int LC, int LD>
struct GRADIENT_VERTICAL {
  static constexpr int E = LA + LB + 1, F = LC + LD + 1;
  static constexpr int NE = level_offset(E + 1);
  using COLUMN = GRADIENT_COLUMN<LA, LB>;
  using ROOT = VERTICAL<0, E, 0, F - 1>;  // makes [e|0]^m, m up to E + F - 1 - |e|
  using FACTORS = QUARTET_FACTORS_T<E>;
  static constexpr int NX = COLUMN::NX;
  static constexpr int F0 = level_offset(LC), NF = level_offset(F) - F0;
  static constexpr bool UNROLLED = unroll_gradient_tree(E, F);

  // Contracted sums of [e|f], f = LC .. LC + LD, for the derivatives of the polynomials: from one level below LA up to
  // LA + LB, which the highest f and kets with LD = 0 do without.
  static constexpr bool SUMMED = LA > 0 || LD > 0;
  static constexpr int S0 = level_offset(LA > 0 ? LA - 1 : 0);
  static constexpr int NS = SUMMED ? level_offset(LD > 0 ? LA + LB + 1 : LA + LB) - S0 : 0;
  static constexpr int NS_LAST = SUMMED ? level_offset(LA + LB) - S0 : 0;

  /// First vector of the buffer of ket level f: planes m = 0 .. F - f.
  static constexpr int buffer(int f) {
    int at = 0;
    for (int level = 0; level < f; ++level) at += (level == 0 ? E + F : F - level + 1) * NE;
    return at;
  }
  static constexpr int WORK = buffer(F + 1);
  /// Lowest bra level that ket level f needs.
  static constexpr int lowest(int f) { return LA - (F - f) > 0 ? LA - (F - f) : 0; }

  template <int N>
  static ZX_INLINE void add(const vec* r, vec* contracted) {
    for (int e = 0; e < N; ++e) contracted[e] += r[S0 + e];
  }

  template <int K>
  static ZX_INLINE void visit(const FACTORS& k, vec* work, const vec* x, vec* contracted, GRADIENT_SUMS_T& sums) {
    constexpr NODE_T node = TREE<F>.node[K];
    constexpr int level = node.level, column = node.component - F0;
    constexpr COMPONENT_T c = component(node.component);
    const vec* parent = work + buffer(level - 1);
    const vec* grand = level > 1 ? work + buffer(level > 1 ? level - 2 : 0) : parent;
    vec* out = work + buffer(level);
    GRADIENT_STEP<E, node.direction, (node.parent_power > 0), lowest(level)>::inlined(k, out, parent, grand, F - level,
                                                                                      node.parent_power);
    if constexpr (level >= LC) {
      constexpr int z = level > LC ? (c.power[0] > 0) + 2 * (c.power[1] > 0) + 4 * (c.power[2] > 0) : 0;
      const vec* below[3] = {};
      if constexpr ((z & 1) != 0) below[0] = x + (c.lower[0] - F0) * NX;
      if constexpr ((z & 2) != 0) below[1] = x + (c.lower[1] - F0) * NX;
      if constexpr ((z & 4) != 0) below[2] = x + (c.lower[2] - F0) * NX;
      if constexpr (level < F) {
        add<level == F - 1 ? NS_LAST : NS>(out, contracted + column * NS);
        COLUMN::template inlined<true, z>(out, x + column * NX, below, sums);
      } else {
        COLUMN::template inlined<false, z>(out, nullptr, below, sums);
      }
    }
  }

  /// One primitive quartet per lane; work[m * NE] holds the scaled Boys values.
  static ZX_INLINE void run(const FACTORS& k, vec* work, const vec* x, vec* contracted, GRADIENT_SUMS_T& sums) {
    ROOT::build_bra(k, work);
    if constexpr (LC == 0) {
      add<F == 1 ? NS_LAST : NS>(work, contracted);
      COLUMN::template inlined<true, 0>(work, x, nullptr, sums);
    }
    if constexpr (UNROLLED)
      unroll<0, TREE<F>.SIZE>([&](auto index) __attribute__((always_inline)) {
        visit<decltype(index)::value>(k, work, x, contracted, sums);
      });
    else
      walk(k, work, x, contracted, sums);
  }

  /// The same tree at run time.
  static ZX_INLINE void walk(const FACTORS& k, vec* work, const vec* x, vec* contracted, GRADIENT_SUMS_T& sums) {
    for (int at = 0; at < TREE<F>.SIZE; ++at) {
      const NODE_T node = TREE<F>.node[at];
      const int level = node.level, column = node.component - F0;
      const vec* parent = work + LAYOUT.buffer[level - 1];
      const vec* grand = work + LAYOUT.buffer[level > 1 ? level - 2 : 0];
      vec* out = work + LAYOUT.buffer[level];
      STEPS.of[level][node.direction][node.parent_power > 0](k, out, parent, grand, F - level, node.parent_power);
      if (level < LC) continue;
      if (level < F - 1) add<NS>(out, contracted + column * NS);
      if (level == F - 1) add<NS_LAST>(out, contracted + column * NS);
      const vec* below[3] = {};
      int z = 0;
      if (level > LC)
        for (int i = 0; i < 3; ++i)
          if (component(node.component).power[i] > 0) {
            below[i] = x + (component(node.component).lower[i] - F0) * NX;
            z |= 1 << i;
          }
      COLUMN::OF[level < F][z](out, x + column * NX, below, sums);
    }
  }

  using STEP = void (*)(const FACTORS& k, vec* out, const vec* parent, const vec* grand, int planes, int parent_power);
  struct STEP_TABLE {
    STEP of[F + 1][3][2];
  };
  template <int LEVEL>
  static constexpr void fill_level(STEP_TABLE& table) {
    constexpr int low = lowest(LEVEL);
    table.of[LEVEL][0][0] = GRADIENT_STEP<E, 0, false, low>::shared;
    table.of[LEVEL][1][0] = GRADIENT_STEP<E, 1, false, low>::shared;
    table.of[LEVEL][2][0] = GRADIENT_STEP<E, 2, false, low>::shared;
    if constexpr (LEVEL > 1) {
      table.of[LEVEL][0][1] = GRADIENT_STEP<E, 0, true, low>::shared;
      table.of[LEVEL][1][1] = GRADIENT_STEP<E, 1, true, low>::shared;
      table.of[LEVEL][2][1] = GRADIENT_STEP<E, 2, true, low>::shared;
      fill_level<LEVEL - 1>(table);
    }
  }
  static constexpr STEP_TABLE make_steps() {
    STEP_TABLE table{};
    fill_level<F>(table);
    return table;
  }
  static constexpr STEP_TABLE STEPS = make_steps();

  struct LAYOUT_T {
    int buffer[F + 1];
  };
  static constexpr LAYOUT_T make_layout() {
    LAYOUT_T layout{};
    for (int level = 0; level <= F; ++level) layout.buffer[level] = buffer(level);
    return layout;
  }
  static constexpr LAYOUT_T LAYOUT = make_layout();
};

}  // namespace zentrix::kernels::ZX_ISA

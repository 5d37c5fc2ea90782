#pragma once

#include "integrals/kernels/boys_lanes.hpp"
#include "integrals/kernels/components.hpp"

// Vertical recursion of one primitive quartet per lane (Obara, Saika, J. Chem. Phys. 84 (1986) 3963): [e0|f0] for e = EMIN
// .. E and f = FMIN .. F, added to the contracted sums.
//
// The ket powers f are walked as a tree, depth first: every f is built from f - 1_i and f - 2_i, and with the choice of i in
// components.hpp these are its parent and its parent's parent. So only the path to the current f is alive, one buffer per
// level with planes m = 0 .. F - |f| over all e, and the whole working set stays in the first-level cache up to (dd|dd).

namespace zentrix::kernels::ZX_ISA {

/// Whether loops over e become straight-line code. Beyond, they run over the tables of components.hpp.
constexpr bool unroll_components(int e) {
#ifdef ZX_BASELINE_ONLY
  return e <= 1;
#else
  return e <= 4;
#endif
}
/// Whether the tree over f becomes straight-line code too.
constexpr bool unroll_tree(int e, int f) {
#ifdef ZX_BASELINE_ONLY
  return e + f <= 1;
#else
  return e + f <= 4;
#endif
}

/// Everything of a primitive quartet that the recursion uses, in lanes.
template <int E>
struct QUARTET_FACTORS_T {
  vec pa[3], wp[3];    ///< P - A, W - P
  vec qc[3], wq[3];    ///< Q - C, W - Q
  vec half_p;          ///< 1 / (2p)
  vec half_p_rho;      ///< rho / (2 p^2)
  vec half_q;          ///< 1 / (2q)
  vec half_q_rho;      ///< rho / (2 q^2)
  vec half_pq[E + 1];  ///< n / (2 (p + q)), n = power of e
};

/// The tree of ket components up to level F in the order of the walk, the root left out.
struct NODE_T {
  short component;
  unsigned char level;
  unsigned char direction;
  unsigned char parent_power;  ///< power of the parent in that direction
};
template <int F>
struct TREE_T {
  static constexpr int SIZE = level_offset(F + 1) - 1;
  NODE_T node[SIZE + 1];
};
template <int F>
constexpr int add_children(TREE_T<F>& tree, int at, int parent) {
  if (component(parent).level == F) return at;
  for (int i = 0; i < 3; ++i) {
    const int n = component(parent).raise[i];
    if (component(n).direction != i || component(n).lower[i] != parent) continue;
    tree.node[at++] = {static_cast<short>(n), component(n).level, component(n).direction, component(parent).power[i]};
    at = add_children<F>(tree, at, n);
  }
  return at;
}
template <int F>
constexpr TREE_T<F> make_tree() {
  TREE_T<F> tree{};
  add_children<F>(tree, 0, 0);
  return tree;
}
template <int F>
inline constexpr TREE_T<F> TREE = make_tree<F>();

/// One ket step: out = [e|f]^m, m < planes, for the levels LOW .. E of e, from the buffers of its parent and its parent's
/// parent. A leaf goes to the column of the contracted sums instead, which starts at level LOW; it is added there unless ADD
/// is off. TOP below E leaves out the highest levels.
template <int E, int DIRECTION, bool SECOND, int LOW, bool LEAF, int TOP = E, bool ADD = true>
struct KET_STEP {
  static constexpr int NE = level_offset(E + 1), E0 = level_offset(LOW), END = level_offset(TOP + 1);

  static ZX_INLINE void inlined(const QUARTET_FACTORS_T<E>& k, vec* __restrict out, const vec* __restrict parent,
                                const vec* __restrict grand, int planes, int parent_power) {
    const vec qc = k.qc[DIRECTION], wq = k.wq[DIRECTION];
    vec second = {}, second_rho = {};
    if constexpr (SECOND) {
      second = k.half_q * (1.0 * parent_power);
      second_rho = k.half_q_rho * (1.0 * parent_power);
    }
    for (int m = 0; m < planes; ++m, parent += NE, grand += NE, out += NE) {
      const auto value = [&](int n, int power, int below) __attribute__((always_inline)) {
        vec v = qc * parent[n] + wq * parent[NE + n];
        if (power > 0) v += k.half_pq[power] * parent[NE + below];
        if constexpr (SECOND) v += second * grand[n] - second_rho * grand[NE + n];
        if constexpr (LEAF && ADD)
          out[n - E0] += v;
        else
          out[LEAF ? n - E0 : n] = v;
      };
      if constexpr (unroll_components(E))
        unroll<E0, END>([&](auto index) __attribute__((always_inline)) {
          constexpr COMPONENT_T c = component(decltype(index)::value);
          value(decltype(index)::value, c.power[DIRECTION], c.lower[DIRECTION]);
        });
      else
        for (int n = E0; n < END; ++n) value(n, component(n).power[DIRECTION], component(n).lower[DIRECTION]);
    }
  }

  /// The same as a function that all classes with this E share.
  static __attribute__((noinline)) void shared(const QUARTET_FACTORS_T<E>& k, vec* __restrict out,
                                               const vec* __restrict parent, const vec* __restrict grand, int planes,
                                               int parent_power) {
    inlined(k, out, parent, grand, planes, parent_power);
  }
};

/// The whole recursion. ADD off: what the contracted sums held before is replaced.
template <int EMIN, int E, int FMIN, int F, bool ADD = true>
struct VERTICAL {
  static constexpr int NE = level_offset(E + 1);
  static constexpr int E0 = level_offset(EMIN);
  static constexpr int NC = NE - E0;  ///< bra components that are contracted
  static constexpr int F0 = level_offset(FMIN);
  static constexpr int NF = level_offset(F + 1) - F0;
  using FACTORS = QUARTET_FACTORS_T<E>;

  /// First vector of the buffer of ket level f; the root's has planes m = 0 .. E + F.
  static constexpr int buffer(int f) {
    int at = 0;
    for (int level = 0; level < f; ++level) at += (level == 0 ? E + F + 1 : F - level + 1) * NE;
    return at;
  }
  static constexpr int WORK = buffer(F + 1);
  /// Lowest bra level that ket level f still needs: each later ket step can lower e by one.
  static constexpr int lowest(int f) { return EMIN - (F - f) > 0 ? EMIN - (F - f) : 0; }

  /// [e|0]^m for all e from the scaled Boys values in plane elements [m][0].
  static ZX_INLINE void build_bra(const FACTORS& k, vec* r) {
    if constexpr (unroll_components(E)) {
      unroll<1, NE>([&](auto index) __attribute__((always_inline)) {
        constexpr COMPONENT_T c = component(decltype(index)::value);
        constexpr int n = decltype(index)::value, i = c.direction, parent = c.lower[i];
        constexpr int power = component(parent).power[i], grand = component(parent).lower[i];
#pragma GCC unroll 9
        for (int m = 0; m <= E + F - c.level; ++m) {
          vec v = k.pa[i] * r[m * NE + parent] + k.wp[i] * r[(m + 1) * NE + parent];
          if constexpr (power == 1) v += k.half_p * r[m * NE + grand] - k.half_p_rho * r[(m + 1) * NE + grand];
          if constexpr (power > 1)
            v += (1.0 * power) * (k.half_p * r[m * NE + grand] - k.half_p_rho * r[(m + 1) * NE + grand]);
          r[m * NE + n] = v;
        }
      });
    } else {
      for (int n = 1; n < NE; ++n) {
        const COMPONENT_T& c = component(n);
        const int i = c.direction, parent = c.lower[i], power = component(parent).power[i],
                  grand = component(parent).lower[i];
        for (int m = 0; m <= E + F - c.level; ++m) {
          vec v = k.pa[i] * r[m * NE + parent] + k.wp[i] * r[(m + 1) * NE + parent];
          if (power > 0) v += (1.0 * power) * (k.half_p * r[m * NE + grand] - k.half_p_rho * r[(m + 1) * NE + grand]);
          r[m * NE + n] = v;
        }
      }
    }
  }

  static ZX_INLINE void contract(const vec* fresh, vec* column) {
    for (int n = 0; n < NC; ++n) column[n] = ADD ? column[n] + fresh[n] : fresh[n];
  }

  /// The step of a tree node, with the addition to the contracted sums.
  template <int K>
  static ZX_INLINE void visit(const FACTORS& k, vec* work, vec* contracted) {
    constexpr NODE_T node = TREE<F>.node[K];
    constexpr int level = node.level;
    constexpr bool leaf = level == F;
    const vec* parent = work + buffer(level - 1);
    const vec* grand = level > 1 ? work + buffer(level > 1 ? level - 2 : 0) : parent;
    vec* column = contracted + (node.component - F0) * NC;
    if constexpr (leaf) {
      KET_STEP<E, node.direction, (node.parent_power > 0), EMIN, true, E, ADD>::inlined(k, column, parent, grand, 1,
                                                                                        node.parent_power);
    } else {
      vec* out = work + buffer(level);
      KET_STEP<E, node.direction, (node.parent_power > 0), lowest(level), false>::inlined(k, out, parent, grand,
                                                                                          F - level + 1, node.parent_power);
      if constexpr (level >= FMIN) contract(out + E0, column);
    }
  }
  /// Adds one primitive quartet per lane; work[m * NE] holds the scaled Boys values.
  static ZX_INLINE void run(const FACTORS& k, vec* work, vec* contracted) {
    build_bra(k, work);
    if constexpr (FMIN == 0) contract(work + E0, contracted);
    if constexpr (F > 0) {
      if constexpr (unroll_tree(E, F))
        unroll<0, TREE<F>.SIZE>([&](auto index)
                                    __attribute__((always_inline)) { visit<decltype(index)::value>(k, work, contracted); });
      else
        walk(k, work, contracted);
    }
  }

  /// The same tree at run time.
  static ZX_INLINE void walk(const FACTORS& k, vec* work, vec* contracted) {
    for (int at = 0; at < TREE<F>.SIZE; ++at) {
      const NODE_T node = TREE<F>.node[at];
      const vec* parent = work + LAYOUT.buffer[node.level - 1];
      const vec* grand = work + LAYOUT.buffer[node.level > 1 ? node.level - 2 : 0];
      vec* column = contracted + (node.component - F0) * NC;
      const STEP step = STEPS.of[node.level][node.direction][node.parent_power > 0];
      if (node.level == F) {
        step(k, column, parent, grand, 1, node.parent_power);
        continue;
      }
      vec* out = work + LAYOUT.buffer[node.level];
      step(k, out, parent, grand, F - node.level + 1, node.parent_power);
      if (node.level >= FMIN) contract(out + E0, column);
    }
  }

  using STEP = void (*)(const FACTORS& k, vec* out, const vec* parent, const vec* grand, int planes, int parent_power);
  struct STEP_TABLE {
    STEP of[F + 1][3][2];
  };
  template <int LEVEL, int DIRECTION, bool SECOND>
  static constexpr STEP step_of() {
    if constexpr (LEVEL == F)
      return KET_STEP<E, DIRECTION, SECOND, EMIN, true, E, ADD>::shared;
    else
      return KET_STEP<E, DIRECTION, SECOND, lowest(LEVEL), false>::shared;
  }
  template <int LEVEL>
  static constexpr void fill_level(STEP_TABLE& table) {
    table.of[LEVEL][0][0] = step_of<LEVEL, 0, false>();
    table.of[LEVEL][1][0] = step_of<LEVEL, 1, false>();
    table.of[LEVEL][2][0] = step_of<LEVEL, 2, false>();
    if constexpr (LEVEL > 1) {
      table.of[LEVEL][0][1] = step_of<LEVEL, 0, true>();
      table.of[LEVEL][1][1] = step_of<LEVEL, 1, true>();
      table.of[LEVEL][2][1] = step_of<LEVEL, 2, true>();
      fill_level<LEVEL - 1>(table);
    }
  }
  static constexpr STEP_TABLE make_steps() {
    STEP_TABLE table{};
    if constexpr (F > 0) fill_level<F>(table);
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

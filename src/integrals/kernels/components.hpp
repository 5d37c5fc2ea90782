#pragma once

#include <utility>

#include "simd/simd.hpp"

// Cartesian components of all levels 0 .. E in one numbering (level after level, lexicographic inside a level) and the
// neighbours that the recursions need, as compile-time tables.

namespace zentrix::kernels::ZX_ISA {

/// Components of the levels below l: also the number of the first component of level l.
constexpr int level_offset(int l) { return l * (l + 1) * (l + 2) / 6; }
constexpr int component_count(int l) { return (l + 1) * (l + 2) / 2; }

inline constexpr int MAX_LEVEL = 9;  // two g functions, one differentiated
inline constexpr int MAX_COMPONENTS = level_offset(MAX_LEVEL + 1);

struct COMPONENT_T {
  unsigned char level;
  unsigned char power[3];
  short lower[3];  ///< number of the component with one power less in x, y, z; 0 where there is none
  short raise[3];  ///< with one power more (meaningful below MAX_LEVEL)
  /// The direction in which the vertical recursion builds this component: the smallest non-zero power, so that most
  /// components have no term with two powers less.
  unsigned char direction;
};

struct COMPONENT_TABLE_T {
  COMPONENT_T c[MAX_COMPONENTS];
};

constexpr int component_number(int x, int y, int z) { return level_offset(x + y + z) + (y + z) * (y + z + 1) / 2 + z; }

constexpr COMPONENT_TABLE_T make_components() {
  COMPONENT_TABLE_T table{};
  int n = 0;
  for (int l = 0; l <= MAX_LEVEL; ++l)
    for (int x = l; x >= 0; --x)
      for (int y = l - x; y >= 0; --y) {
        const int p[3] = {x, y, l - x - y};
        COMPONENT_T& c = table.c[n++];
        c.level = static_cast<unsigned char>(l);
        int best = -1;
        for (int i = 0; i < 3; ++i) {
          c.power[i] = static_cast<unsigned char>(p[i]);
          const int d[3] = {i == 0, i == 1, i == 2};
          c.lower[i] = p[i] > 0 ? static_cast<short>(component_number(p[0] - d[0], p[1] - d[1], p[2] - d[2])) : short{0};
          c.raise[i] = static_cast<short>(component_number(p[0] + d[0], p[1] + d[1], p[2] + d[2]));
          if (p[i] > 0 && (best < 0 || p[i] < p[best])) best = i;
        }
        c.direction = static_cast<unsigned char>(best < 0 ? 0 : best);
      }
  return table;
}

inline constexpr COMPONENT_TABLE_T COMPONENTS = make_components();
constexpr const COMPONENT_T& component(int n) { return COMPONENTS.c[n]; }

/// A compile-time index handed to the bodies of unrolled loops.
template <int I>
struct INDEX {
  static constexpr int value = I;
};

/// body(INDEX<FIRST>{}), ..., body(INDEX<LAST - 1>{}) in straight-line code.
template <int FIRST, int LAST, class BODY>
ZX_INLINE void unroll(BODY&& body) {
  if constexpr (FIRST < LAST) [&]<int... I>(std::integer_sequence<int, I...>) __attribute__((always_inline)) {
      (body(INDEX<FIRST + I>{}), ...);
    }
  (std::make_integer_sequence<int, LAST - FIRST>{});
}

/// body(i) for FIRST <= i < LAST, as straight-line code with constant i or as a loop.
template <int FIRST, int LAST, bool UNROLLED, class BODY>
ZX_INLINE void loop(BODY&& body) {
  if constexpr (UNROLLED)
    unroll<FIRST, LAST>([&](auto index) __attribute__((always_inline)) { body(decltype(index)::value); });
  else
    for (int i = FIRST; i < LAST; ++i) body(i);
}

}  // namespace zentrix::kernels::ZX_ISA

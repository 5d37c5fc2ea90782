#pragma once

#include "dft/kernels/cell_kernels.hpp"
#include "simd/simd.hpp"

// Products of Becke's step functions at LANES points; what the kernels of weights and of their gradient share.

namespace zentrix::kernels::ZX_ISA {

// A cell whose product falls below this part of the sum of all cells is left out of it.
constexpr double NEGLIGIBLE_CELL = 1e-18;
// Where all products are that small, every atom is equally far away and no density is left.
constexpr double EMPTY_SPACE = 1e-280;

/// Square root of positive x.
ZX_INLINE vec root(vec x) {
#if defined(__AVX512F__)
  return _mm512_maskz_sqrt_pd(0xff, x);
#elif defined(__AVX2__)
  return _mm256_sqrt_pd(x);
#else
  const __m128d lo = _mm_sqrt_pd(__m128d{x[0], x[1]}), hi = _mm_sqrt_pd(__m128d{x[2], x[3]});
  return vec{lo[0], lo[1], hi[0], hi[1]};
#endif
}

/// 1 - nu of a pair of atoms from mu.
ZX_INLINE vec complement(vec mu, double adjustment) { return (1.0 - mu) * (1.0 - adjustment * (1.0 + mu)); }

/// Becke's polynomial p(nu) = (3 nu - nu^3)/2 in terms of e = 1 - nu: 1 - p = e^2 (3 - e)/2. It keeps its full relative
/// accuracy where the step function is tiny.
template <class T>
ZX_INLINE T smoothed(T e) {
  return e * e * (1.5 - 0.5 * e);
}

/// s(nu) = (1 - p(p(p(nu))))/2 for the pair of a cell and another atom at distances r and r_other.
ZX_INLINE vec cell_factor(vec r, vec r_other, double inverse_distance, double adjustment) {
  const vec e = smoothed(smoothed(complement((r - r_other) * inverse_distance, adjustment)));
  return e * e * (0.75 - 0.25 * e);
}

/// Coordinates of LANES points; lanes beyond the last point repeat the first of them.
ZX_INLINE vec load_points(const double* p, int count) {
  if (count == LANES) return load(p);
  vec v = broadcast(p[0]);
  for (int lane = 1; lane < count; ++lane) v[lane] = p[lane];
  return v;
}

/// The cells at LANES points.
struct BLOCK {
  const FUZZY_CELLS_T& cells;
  const vec* r;  // distances from all atoms
  int nearest;   // the atom nearest to the first point

  /// Atoms by rising distance from the nearest one, which comes first itself.
  ZX_INLINE const int* neighbours() const { return cells.neighbours + static_cast<long>(nearest) * cells.n_atoms; }

  /// Product of the step functions of `cell`; zero as soon as it is below `floor` at every point. Near atoms come first:
  /// they make the product of a cell that does not matter small soon.
  ZX_INLINE vec product(int cell, vec floor) const {
    const int n = cells.n_atoms;
    const int* order = neighbours();
    const double* inverse_distance = cells.inverse_distance + static_cast<long>(cell) * n;
    const double* adjustment = cells.adjustment + static_cast<long>(cell) * n;
    const vec r_cell = r[cell];
    vec result = broadcast(1.0);
    for (int k = 0; k < n; ++k) {
      const int other = order[k];
      if (other == cell) continue;
      result *= cell_factor(r_cell, r[other], inverse_distance[other], adjustment[other]);
      if ((k & 3) == 3 && !any(result > floor)) return vec{};
    }
    return result;
  }
};

}  // namespace zentrix::kernels::ZX_ISA

#include "dft/kernels/partition_kernels.hpp"

#include "simd/simd.hpp"

namespace zentrix::kernels::ZX_ISA {

namespace {

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

/// s(nu) for the pair of a cell and another atom at distances r and r_other. With e = 1 - nu, Becke's polynomial
/// p(nu) = (3 nu - nu^3)/2 becomes 1 - p = e^2 (3 - e)/2, so that three iterations and s = (1 - p(p(p(nu))))/2 keep their
/// full relative accuracy where s is tiny.
ZX_INLINE vec cell_factor(vec r, vec r_other, double inverse_distance, double adjustment) {
  const vec mu = (r - r_other) * inverse_distance;
  vec e = (1.0 - mu) * (1.0 - adjustment * (1.0 + mu));
  e = e * e * (1.5 - 0.5 * e);
  e = e * e * (1.5 - 0.5 * e);
  e = e * e * (1.5 - 0.5 * e);
  return 0.5 * e;
}

/// The cells at LANES points.
struct BLOCK {
  const FUZZY_CELLS_T& cells;
  const vec* r;           // distances from all atoms
  const int* neighbours;  // of the atom nearest to the block

  /// Product of the step functions of `cell`; zero as soon as it is below `floor` at every point.
  ZX_INLINE vec product(int cell, vec floor) const {
    const int n = cells.n_atoms;
    const double* inverse_distance = cells.inverse_distance + static_cast<long>(cell) * n;
    const double* adjustment = cells.adjustment + static_cast<long>(cell) * n;
    const vec r_cell = r[cell];
    vec result = broadcast(1.0);
    for (int k = 0; k < n; ++k) {
      const int other = neighbours[k];
      if (other == cell) continue;
      result *= cell_factor(r_cell, r[other], inverse_distance[other], adjustment[other]);
      if ((k & 3) == 3 && !any(result > floor)) return vec{};
    }
    return result;
  }
};

/// Distances from all atoms to the points; returns the atom nearest to them.
ZX_INLINE int distances(const FUZZY_CELLS_T& cells, vec x, vec y, vec z, vec* r) {
  int nearest = 0;
  double shortest = 1e300;
  for (int atom = 0; atom < cells.n_atoms; ++atom) {
    const vec dx = x - cells.x[atom], dy = y - cells.y[atom], dz = z - cells.z[atom];
    r[atom] = root(dx * dx + dy * dy + dz * dz);
    if (r[atom][0] < shortest) {
      shortest = r[atom][0];
      nearest = atom;
    }
  }
  return nearest;
}

ZX_INLINE vec block_weights(const FUZZY_CELLS_T& cells, int owner, double negligible, int nearest, const vec* r) {
  const BLOCK block{cells, r, cells.neighbours + static_cast<long>(nearest) * cells.n_atoms};
  const vec first = block.product(nearest, vec{});
  const vec own = owner == nearest ? first : block.product(owner, negligible * first);
  if (!any(own > 0.0)) return vec{};
  vec sum = owner == nearest ? own : own + first;
  for (int k = 1; k < cells.n_atoms; ++k) {
    const int cell = block.neighbours[k];
    if (cell != owner) sum += block.product(cell, NEGLIGIBLE_CELL * sum);
  }
  return select(sum > EMPTY_SPACE, own / sum, vec{});
}

}  // namespace

void cell_weights(const FUZZY_CELLS_T& cells, const CELL_POINTS_T& points, double* scratch, double* weight) {
  vec* r = reinterpret_cast<vec*>(scratch);
  for (int p = 0; p < points.n; p += LANES) {
    const int count = points.n - p < LANES ? points.n - p : LANES;
    vec x = broadcast(points.x[p]), y = broadcast(points.y[p]), z = broadcast(points.z[p]);
    if (count == LANES) {
      x = load(points.x + p);
      y = load(points.y + p);
      z = load(points.z + p);
    } else {
      for (int lane = 0; lane < count; ++lane) {
        x[lane] = points.x[p + lane];
        y[lane] = points.y[p + lane];
        z[lane] = points.z[p + lane];
      }
    }
    const int nearest = distances(cells, x, y, z, r);
    const vec w = block_weights(cells, points.owner, points.negligible, nearest, r);
    for (int lane = 0; lane < count; ++lane) weight[p + lane] = w[lane];
  }
}

}  // namespace zentrix::kernels::ZX_ISA

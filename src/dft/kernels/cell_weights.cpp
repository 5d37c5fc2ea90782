#include "dft/kernels/cell_kernels.hpp"
#include "dft/kernels/fuzzy_cells.hpp"

namespace zentrix::kernels::ZX_ISA {

namespace {

/// Distances from all atoms to the points; returns the atom nearest to the first of them.
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

ZX_INLINE vec block_weights(const BLOCK& block, int owner, double negligible) {
  const vec first = block.product(block.nearest, vec{});
  const vec own = owner == block.nearest ? first : block.product(owner, negligible * first);
  if (!any(own > 0.0)) return vec{};
  vec sum = owner == block.nearest ? own : own + first;
  for (int k = 1; k < block.cells.n_atoms; ++k) {
    const int cell = block.neighbours()[k];
    if (cell != owner) sum += block.product(cell, NEGLIGIBLE_CELL * sum);
  }
  return select(sum > EMPTY_SPACE, own / sum, vec{});
}

}  // namespace

void cell_weights(const FUZZY_CELLS_T& cells, const CELL_POINTS_T& points, double negligible, double* scratch,
                  double* weight) {
  vec* r = reinterpret_cast<vec*>(scratch);
  for (int p = 0; p < points.n; p += LANES) {
    const int count = points.n - p < LANES ? points.n - p : LANES;
    const int nearest = distances(cells, load_points(points.x + p, count), load_points(points.y + p, count),
                                  load_points(points.z + p, count), r);
    const vec w = block_weights({cells, r, nearest}, points.owner, negligible);
    for (int lane = 0; lane < count; ++lane) weight[p + lane] = w[lane];
  }
}

}  // namespace zentrix::kernels::ZX_ISA

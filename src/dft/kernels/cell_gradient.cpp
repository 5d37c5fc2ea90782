#include "dft/kernels/cell_kernels.hpp"
#include "dft/kernels/fuzzy_cells.hpp"

// With w_A = P_A / sum_B P_B the logarithmic derivative is
//   d ln w_A = sum_(B /= A) w_B (d ln P_A - d ln P_B),   d ln P_B = sum_j (s'/s)(nu_Bj) (1 - 2 a mu_Bj) d mu_Bj,
// and at a fixed point, with unit vectors u_B from nucleus B to the point and n from nucleus j to nucleus B,
//   d mu_Bj / d X_B = -(u_B + mu n) / R,   d mu_Bj / d X_j = (u_j + mu n) / R.
// A point that moves along with its owner makes the sum over all nuclei zero.

namespace zentrix::kernels::ZX_ISA {

namespace {

// Cells with a smaller weight at all points of a block are left out.
constexpr double NEGLIGIBLE_WEIGHT = 1e-16;

struct VECTOR3 {
  vec x, y, z;
};

/// Scratch memory, one entry for each atom.
struct WORK {
  vec* r;        // distance to the points
  VECTOR3* u;    // unit vectors to the points
  VECTOR3* sum;  // gradient of the points so far, at fixed points
  vec* weight;   // w_B, zero for cells that do not matter
};

ZX_INLINE WORK divided(double* scratch, int n_atoms) {
  vec* r = reinterpret_cast<vec*>(scratch);
  VECTOR3* u = reinterpret_cast<VECTOR3*>(r + n_atoms);
  VECTOR3* sum = u + n_atoms;
  return {r, u, sum, reinterpret_cast<vec*>(sum + n_atoms)};
}

/// Distances and directions; returns the atom nearest to the first point.
ZX_INLINE int directions(const FUZZY_CELLS_T& cells, vec x, vec y, vec z, const WORK& work) {
  int nearest = 0;
  double shortest = 1e300;
  for (int atom = 0; atom < cells.n_atoms; ++atom) {
    const vec dx = x - cells.x[atom], dy = y - cells.y[atom], dz = z - cells.z[atom];
    const vec r = root(dx * dx + dy * dy + dz * dz);
    const vec inverse = 1.0 / max(r, broadcast(1e-30));
    work.r[atom] = r;
    work.u[atom] = VECTOR3{dx * inverse, dy * inverse, dz * inverse};
    if (r[0] < shortest) {
      shortest = r[0];
      nearest = atom;
    }
  }
  return nearest;
}

/// The weights of all cells; returns the sum of those of the cells that are not the owner's, without the cancellation of 1 -
/// w.
ZX_INLINE vec all_weights(const BLOCK& block, int owner, vec* weight) {
  const int n = block.cells.n_atoms;
  vec sum = weight[block.nearest] = block.product(block.nearest, vec{});
  if (owner != block.nearest) sum += weight[owner] = block.product(owner, vec{});
  for (int k = 1; k < n; ++k) {
    const int cell = block.neighbours()[k];
    if (cell != owner) sum += weight[cell] = block.product(cell, NEGLIGIBLE_CELL * sum);
  }
  const vec inverse = select(sum > EMPTY_SPACE, 1.0 / sum, vec{});
  vec others = {};
  for (int cell = 0; cell < n; ++cell) {
    weight[cell] *= inverse;
    if (cell != owner) others += weight[cell];
  }
  return others;
}

/// d ln s / d nu at e = 1 - nu: the three iterations telescope to one quotient.
ZX_INLINE vec log_slope(vec e) {
  const vec e1 = smoothed(e), e2 = smoothed(e1);
  return -27.0 * (2.0 - e) * (2.0 - e1) * (2.0 - e2) / ((3.0 - e) * (3.0 - e1) * (3.0 - e2) * e);
}

/// sum_C += coefficient d ln P_cell / d X_C for all atoms.
ZX_INLINE void add_cell(const FUZZY_CELLS_T& cells, int cell, vec coefficient, const WORK& work) {
  const long row = static_cast<long>(cell) * cells.n_atoms;
  const vec r = work.r[cell];
  const VECTOR3 u = work.u[cell];
  VECTOR3 own = {};
  for (int other = 0; other < cells.n_atoms; ++other) {
    const double inverse = cells.inverse_distance[row + other], adjustment = cells.adjustment[row + other];
    const double nx = (cells.x[cell] - cells.x[other]) * inverse, ny = (cells.y[cell] - cells.y[other]) * inverse,
                 nz = (cells.z[cell] - cells.z[other]) * inverse;
    const vec mu = (r - work.r[other]) * inverse;
    const vec e = max(complement(mu, adjustment), broadcast(1e-12));
    const vec t = coefficient * log_slope(e) * (1.0 - 2.0 * adjustment * mu) * inverse;
    own.x += t * (u.x + mu * nx);
    own.y += t * (u.y + mu * ny);
    own.z += t * (u.z + mu * nz);
    VECTOR3& sum = work.sum[other];
    sum.x += t * (work.u[other].x + mu * nx);
    sum.y += t * (work.u[other].y + mu * ny);
    sum.z += t * (work.u[other].z + mu * nz);
  }
  work.sum[cell].x -= own.x;
  work.sum[cell].y -= own.y;
  work.sum[cell].z -= own.z;
}

/// Adds the lanes up and lets the points follow their owner.
void finish(const WORK& work, int n_atoms, int owner, double* gradient) {
  double follow[3] = {};
  for (int atom = 0; atom < n_atoms; ++atom) {
    if (atom == owner) continue;
    const double parts[3] = {sum(work.sum[atom].x), sum(work.sum[atom].y), sum(work.sum[atom].z)};
    for (int axis = 0; axis < 3; ++axis) {
      gradient[3 * atom + axis] += parts[axis];
      follow[axis] += parts[axis];
    }
  }
  for (int axis = 0; axis < 3; ++axis) gradient[3 * owner + axis] -= follow[axis];
}

}  // namespace

void cell_gradient(const FUZZY_CELLS_T& cells, const CELL_POINTS_T& points, const double* value, double* scratch,
                   double* gradient) {
  const WORK work = divided(scratch, cells.n_atoms);
  for (int atom = 0; atom < cells.n_atoms; ++atom) work.sum[atom] = VECTOR3{};
  for (int p = 0; p < points.n; p += LANES) {
    const int count = points.n - p < LANES ? points.n - p : LANES;
    const int nearest = directions(cells, load_points(points.x + p, count), load_points(points.y + p, count),
                                   load_points(points.z + p, count), work);
    const vec others = all_weights({cells, work.r, nearest}, points.owner, work.weight);
    if (!any(others > NEGLIGIBLE_WEIGHT)) continue;
    vec v = {};
    for (int lane = 0; lane < count; ++lane) v[lane] = value[p + lane];
    add_cell(cells, points.owner, v * others, work);
    for (int cell = 0; cell < cells.n_atoms; ++cell) {
      if (cell != points.owner && any(work.weight[cell] > NEGLIGIBLE_WEIGHT)) {
        add_cell(cells, cell, -v * work.weight[cell], work);
      }
    }
  }
  finish(work, cells.n_atoms, points.owner, gradient);
}

}  // namespace zentrix::kernels::ZX_ISA

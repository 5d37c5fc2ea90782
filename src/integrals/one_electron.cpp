#include "integrals/one_electron.hpp"

#include <array>
#include <cmath>
#include <vector>

#include "constants/limits.hpp"
#include "constants/units.hpp"
#include "integrals/hermite.hpp"
#include "integrals/hermite_coulomb.hpp"
#include "integrals/one_electron_primitives.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/shell_validation.hpp"

// One-electron integrals by Hermite expansion (McMurchie, Davidson, J. Comput. Phys. 26 (1978) 218). With p = a + b:
//   overlap     S_ij = E_0^{ij} sqrt(pi / p) in each direction
//   kinetic     -1/2 <i| d^2/dx^2 |j> = b (2j + 1) S_ij - 2 b^2 S_{i,j+2} - j (j - 1)/2 S_{i,j-2}, times the other overlaps
//   attraction  -sum_A Z_A 2 pi / p sum_tuv E_t E_u E_v R_tuv(p, P - A), the nuclei summed in R before E is applied
//   dipole      <i| x |j> = S_{i+1,j} + (A_x - O_x) S_ij

namespace zentrix::INTEGRALS_1E {
namespace {

using INTEGRALS_2E::HERMITE_EXPANSION_T;
using INTEGRALS_2E::HERMITE_MAX;
using INTEGRALS_2E::hermite_rows;
using INTEGRALS_2E::n_hermite;

constexpr int max_components = n_cartesian(LMAX);

/// Which matrices a pass over the shell pairs fills.
enum class KIND { overlap, kinetic, attraction, dipole };

/// Working arrays of one thread; blocks hold n_a x n_b values a matrix (three for the dipole), row by row.
struct WORKSPACE_T {
  std::array<std::array<double, max_components * max_components>, 3> block;
  HERMITE_EXPANSION_T ex, ey, ez;
  std::array<double, n_hermite(HERMITE_MAX)> r;
  INTEGRALS_2E::HERMITE_COULOMB_T coulomb;
};

struct TASK_T {
  const MOLECULE_T& molecule;
  KIND kind;
  std::array<double, 3> origin;
  std::size_t n_matrices() const { return kind == KIND::dipole ? 3 : 1; }
};

void add_overlap_like(const TASK_T& task, const PRIMITIVE_PAIR_T& q, const SHELL_T& sa, const SHELL_T& sb, WORKSPACE_T& w) {
  const bool kinetic = task.kind == KIND::kinetic;
  const bool dipole = task.kind == KIND::dipole;
  const auto s = overlap_tables(q, sa.l + (dipole ? 1 : 0), sb.l + (kinetic ? 2 : 0));
  const auto& ra = task.molecule.atoms[static_cast<std::size_t>(sa.atom)].position;
  const double factor = q.weight * q.gauss;
  std::size_t n = 0;
  for (const POWERS_T& i : powers_of(sa.l)) {
    for (const POWERS_T& j : powers_of(sb.l)) {
      const double x = s[0][i.x][j.x];
      const double y = s[1][i.y][j.y];
      const double z = s[2][i.z][j.z];
      if (kinetic) {
        w.block[0][n] += factor * (kinetic_1d(s[0], i.x, j.x, q.b) * y * z + x * kinetic_1d(s[1], i.y, j.y, q.b) * z +
                                   x * y * kinetic_1d(s[2], i.z, j.z, q.b));
      } else if (dipole) {
        w.block[0][n] += factor * (s[0][i.x + 1][j.x] + (ra[0] - task.origin[0]) * x) * y * z;
        w.block[1][n] += factor * x * (s[1][i.y + 1][j.y] + (ra[1] - task.origin[1]) * y) * z;
        w.block[2][n] += factor * x * y * (s[2][i.z + 1][j.z] + (ra[2] - task.origin[2]) * z);
      } else {
        w.block[0][n] += factor * x * y * z;
      }
      ++n;
    }
  }
}

void add_attraction(const TASK_T& task, const PRIMITIVE_PAIR_T& q, const SHELL_T& sa, const SHELL_T& sb, WORKSPACE_T& w) {
  const int order = sa.l + sb.l;
  const int size = n_hermite(order);
  std::fill_n(w.r.begin(), size, 0.0);
  for (const ATOM_T& atom : task.molecule.atoms) {
    if (atom.charge == 0.0) continue;
    w.coulomb.add(order, q.p, q.center[0] - atom.position[0], q.center[1] - atom.position[1], q.center[2] - atom.position[2],
                  -atom.charge, w.r.data());
  }
  w.ex.fill(sa.l, sb.l, q.p, q.pa[0], q.pb[0], q.weight * q.gauss * 2.0 * PI / q.p);
  w.ey.fill(sa.l, sb.l, q.p, q.pa[1], q.pb[1], 1.0);
  w.ez.fill(sa.l, sb.l, q.p, q.pa[2], q.pb[2], 1.0);
  const auto& row = hermite_rows(order).row;
  std::size_t n = 0;
  for (const POWERS_T& i : powers_of(sa.l)) {
    for (const POWERS_T& j : powers_of(sb.l)) {
      double sum = 0.0;
      for (int t = 0; t <= i.x + j.x; ++t) {
        for (int u = 0; u <= i.y + j.y; ++u) {
          const double* r = w.r.data() + row[static_cast<std::size_t>(t)][static_cast<std::size_t>(u)];
          double line = 0.0;
          for (int v = 0; v <= i.z + j.z; ++v) line += w.ez.e[i.z][j.z][v] * r[v];
          sum += w.ex.e[i.x][j.x][t] * w.ey.e[i.y][j.y][u] * line;
        }
      }
      w.block[0][n++] += sum;
    }
  }
}

/// Bare Cartesian block of one shell pair.
void fill_block(const TASK_T& task, const SHELL_T& sa, const SHELL_T& sb, WORKSPACE_T& w) {
  const auto size = static_cast<std::size_t>(n_cartesian(sa.l) * n_cartesian(sb.l));
  for (std::size_t m = 0; m < task.n_matrices(); ++m) std::fill_n(w.block[m].begin(), size, 0.0);
  const auto& ra = task.molecule.atoms[static_cast<std::size_t>(sa.atom)].position;
  const auto& rb = task.molecule.atoms[static_cast<std::size_t>(sb.atom)].position;
  for (std::size_t ia = 0; ia < sa.alpha.size(); ++ia) {
    for (std::size_t ib = 0; ib < sb.alpha.size(); ++ib) {
      const PRIMITIVE_PAIR_T q = primitive_pair(sa, ia, sb, ib, ra, rb);
      if (q.gauss < NEGLIGIBLE_GAUSS) continue;
      if (task.kind == KIND::attraction) {
        add_attraction(task, q, sa, sb, w);
      } else {
        add_overlap_like(task, q, sa, sb, w);
      }
    }
  }
}

/// All pairs of shells, threaded; every block is written by one thread only.
std::array<MATRIX, 3> bare_matrices(const TASK_T& task) {
  const MOLECULE_T& molecule = task.molecule;
  for (const SHELL_T& shell : molecule.shells) validate_shell("one_electron", shell);
  const std::vector<int> offsets = cartesian_offsets(molecule);
  std::array<MATRIX, 3> result;
  for (std::size_t m = 0; m < task.n_matrices(); ++m) result[m].setZero(offsets.back(), offsets.back());
  static_cast<void>(powers_of(0));
  static_cast<void>(hermite_rows(0));
  const auto n_shells = static_cast<int>(molecule.shells.size());
#pragma omp parallel
  {
    WORKSPACE_T w;
#pragma omp for schedule(dynamic)
    for (int is = n_shells - 1; is >= 0; --is) {
      const SHELL_T& sa = molecule.shells[static_cast<std::size_t>(is)];
      for (int js = 0; js <= is; ++js) {
        const SHELL_T& sb = molecule.shells[static_cast<std::size_t>(js)];
        fill_block(task, sa, sb, w);
        const int na = n_cartesian(sa.l);
        const int nb = n_cartesian(sb.l);
        for (std::size_t m = 0; m < task.n_matrices(); ++m) {
          const Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>> block(
              w.block[m].data(), na, nb);
          result[m].block(offsets[static_cast<std::size_t>(is)], offsets[static_cast<std::size_t>(js)], na, nb) = block;
          result[m].block(offsets[static_cast<std::size_t>(js)], offsets[static_cast<std::size_t>(is)], nb, na) =
              block.transpose();
        }
      }
    }
  }
  return result;
}

MATRIX one_matrix(const MOLECULE_T& molecule, KIND kind) {
  return to_functions(molecule, bare_matrices({molecule, kind, {}})[0]);
}

}  // namespace

MATRIX overlap(const MOLECULE_T& molecule) { return one_matrix(molecule, KIND::overlap); }

MATRIX kinetic(const MOLECULE_T& molecule) { return one_matrix(molecule, KIND::kinetic); }

MATRIX nuclear_attraction(const MOLECULE_T& molecule) { return one_matrix(molecule, KIND::attraction); }

std::array<MATRIX, 3> dipole(const MOLECULE_T& molecule, const std::array<double, 3>& origin) {
  std::array<MATRIX, 3> bare = bare_matrices({molecule, KIND::dipole, origin});
  for (MATRIX& matrix : bare) matrix = to_functions(molecule, matrix);
  return bare;
}

ONE_ELECTRON_T one_electron_matrices(const MOLECULE_T& molecule) {
  ONE_ELECTRON_T result = {overlap(molecule), kinetic(molecule), nuclear_attraction(molecule), {}};
  result.h_core = result.t + result.v;
  return result;
}

}  // namespace zentrix::INTEGRALS_1E

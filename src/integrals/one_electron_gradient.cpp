#include <omp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "integrals/hermite.hpp"
#include "integrals/hermite_coulomb.hpp"
#include "integrals/one_electron.hpp"
#include "integrals/one_electron_primitives.hpp"
#include "molecule/shell_validation.hpp"

// Derivatives of one-electron integrals, all three kinds in one pass over pairs of primitives. Moving the first centre turns
// x^i exp(-a x^2) into 2a x^(i+1) - i x^(i-1); overlap and kinetic energy depend on the distance of the centres only, so the
// second centre feels the opposite. Of the attraction the densities of a pair are first gathered in Hermite form,
//   tr D V = -sum_C Z_C sum_t H_t R_t(P - C),   H_t = 2 pi/p sum_ab D_ab E_t^ab,
// the force on nucleus C is +Z_C sum_t H_t R_(t+1), the first centre has the raised and lowered E, and the second centre
// balances the others.

namespace zentrix::INTEGRALS_1E {
namespace {

using INTEGRALS_2E::HERMITE_COULOMB_T;
using INTEGRALS_2E::HERMITE_EXPANSION_T;
using INTEGRALS_2E::HERMITE_MAX;
using INTEGRALS_2E::hermite_rows;
using INTEGRALS_2E::n_hermite;

constexpr int max_hermite = n_hermite(HERMITE_MAX + 1);
using VECTOR3 = std::array<double, 3>;
using HERMITE_VECTOR = std::array<double, max_hermite>;

/// One thread's arrays.
struct WORKSPACE_T {
  HERMITE_EXPANSION_T ex, ey, ez;
  HERMITE_COULOMB_T coulomb;
  HERMITE_VECTOR density;                      ///< H_t
  std::array<HERMITE_VECTOR, 3> first_centre;  ///< H_t of the derivatives with respect to the first centre
  HERMITE_VECTOR r, r_all;                     ///< one nucleus; all of them, with charges
  VECTOR gradient;
};

/// The blocks of D and W of one shell pair in bare components, row by row.
struct PAIR_T {
  const SHELL_T& sa;
  const SHELL_T& sb;
  const MATRIX& density;
  const MATRIX& weighted;
  int first_a, first_b;
  double factor;  ///< 2 for a pair of different shells
  double d(std::size_t a, std::size_t b) const {
    return factor * density(first_a + static_cast<Eigen::Index>(a), first_b + static_cast<Eigen::Index>(b));
  }
  double w(std::size_t a, std::size_t b) const {
    return factor * weighted(first_a + static_cast<Eigen::Index>(a), first_b + static_cast<Eigen::Index>(b));
  }
};

/// Derivative of value[i] (a table over the power of the first centre) with respect to that centre.
template <class TABLE>
double slope(const TABLE& value, int i, double a) {
  return 2.0 * a * value(i + 1) - (i > 0 ? i * value(i - 1) : 0.0);
}

/// tr D dT - tr W dS with respect to the first centre.
VECTOR3 overlap_and_kinetic(const PAIR_T& pair, const PRIMITIVE_PAIR_T& q) {
  const auto s = overlap_tables(q, pair.sa.l + 1, pair.sb.l + 2);
  VECTOR3 sum = {};
  std::size_t na = 0;
  for (const POWERS_T& i : powers_of(pair.sa.l)) {
    std::size_t nb = 0;
    for (const POWERS_T& j : powers_of(pair.sb.l)) {
      const std::array<int, 3> ia = {i.x, i.y, i.z};
      const std::array<int, 3> jb = {j.x, j.y, j.z};
      VECTOR3 value = {}, kinetic = {}, d_value = {}, d_kinetic = {};
      for (std::size_t k = 0; k < 3; ++k) {
        const auto overlap_at = [&](int power) {
          return s[k][static_cast<std::size_t>(power)][static_cast<std::size_t>(jb[k])];
        };
        const auto kinetic_at = [&](int power) { return kinetic_1d(s[k], power, jb[k], q.b); };
        value[k] = overlap_at(ia[k]);
        kinetic[k] = kinetic_at(ia[k]);
        d_value[k] = slope(overlap_at, ia[k], q.a);
        d_kinetic[k] = slope(kinetic_at, ia[k], q.a);
      }
      const double d = pair.d(na, nb);
      const double w = pair.w(na, nb);
      for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t m = (k + 1) % 3, n = (k + 2) % 3;
        sum[k] += d * (d_kinetic[k] * value[m] * value[n] + d_value[k] * (kinetic[m] * value[n] + value[m] * kinetic[n])) -
                  w * d_value[k] * value[m] * value[n];
      }
      ++nb;
    }
    ++na;
  }
  for (double& component : sum) component *= q.weight * q.gauss;
  return sum;
}

/// Adds f_x(t) f_y(u) f_z(v) to a Hermite vector of the given order for t, u, v up to the given powers.
template <class FX, class FY, class FZ>
void add_product(int order, int tmax, int umax, int vmax, const FX& fx, const FY& fy, const FZ& fz, HERMITE_VECTOR& h) {
  const auto& row = hermite_rows(order).row;
  for (int t = 0; t <= tmax; ++t) {
    for (int u = 0; u <= umax; ++u) {
      double* line = h.data() + row[static_cast<std::size_t>(t)][static_cast<std::size_t>(u)];
      const double xy = fx(t) * fy(u);
      for (int v = 0; v <= vmax; ++v) line[v] += xy * fz(v);
    }
  }
}

/// H_t and its derivatives with respect to the first centre, all in vectors of order la + lb + 1.
void gather_hermite(const PAIR_T& pair, const PRIMITIVE_PAIR_T& q, int order, WORKSPACE_T& work) {
  const int la = pair.sa.l, lb = pair.sb.l;
  work.ex.fill(la + 1, lb, q.p, q.pa[0], q.pb[0], q.weight * q.gauss * 2.0 * PI / q.p);
  work.ey.fill(la + 1, lb, q.p, q.pa[1], q.pb[1], 1.0);
  work.ez.fill(la + 1, lb, q.p, q.pa[2], q.pb[2], 1.0);
  const auto size = static_cast<std::size_t>(n_hermite(order));
  std::fill_n(work.density.begin(), size, 0.0);
  for (HERMITE_VECTOR& h : work.first_centre) std::fill_n(h.begin(), size, 0.0);
  std::size_t na = 0;
  for (const POWERS_T& i : powers_of(la)) {
    std::size_t nb = 0;
    for (const POWERS_T& j : powers_of(lb)) {
      const double d = pair.d(na, nb++);
      const auto plain = [](const HERMITE_EXPANSION_T& e, int power, int other) {
        return [&e, power, other](int t) { return t <= power + other ? e.e[power][other][t] : 0.0; };
      };
      const auto moved = [&](const HERMITE_EXPANSION_T& e, int power, int other) {
        return [&e, power, other, &q](int t) {
          const double lower = power > 0 && t <= power - 1 + other ? power * e.e[power - 1][other][t] : 0.0;
          return 2.0 * q.a * e.e[power + 1][other][t] - lower;
        };
      };
      const auto x = plain(work.ex, i.x, j.x), y = plain(work.ey, i.y, j.y), z = plain(work.ez, i.z, j.z);
      const auto dx = [&, f = x](int t) { return d * f(t); };
      const int tx = i.x + j.x, ty = i.y + j.y, tz = i.z + j.z;
      add_product(order, tx, ty, tz, dx, y, z, work.density);
      const auto mx = [&, f = moved(work.ex, i.x, j.x)](int t) { return d * f(t); };
      add_product(order, tx + 1, ty, tz, mx, y, z, work.first_centre[0]);
      add_product(order, tx, ty + 1, tz, dx, moved(work.ey, i.y, j.y), z, work.first_centre[1]);
      add_product(order, tx, ty, tz + 1, dx, y, moved(work.ez, i.z, j.z), work.first_centre[2]);
    }
    ++na;
  }
}

/// sum_t H_t R_(t + 1 along x, y, z) for H of order - 1 inside vectors of that order.
VECTOR3 raised_products(int order, const HERMITE_VECTOR& h, const HERMITE_VECTOR& r) {
  const auto& row = hermite_rows(order).row;
  VECTOR3 sum = {};
  for (std::size_t t = 0; t + 1 <= static_cast<std::size_t>(order); ++t) {
    for (std::size_t u = 0; t + u + 1 <= static_cast<std::size_t>(order); ++u) {
      const double* line = h.data() + row[t][u];
      const double* x = r.data() + row[t + 1][u];
      const double* y = r.data() + row[t][u + 1];
      const double* z = r.data() + row[t][u] + 1;
      const int last = order - 1 - static_cast<int>(t + u);
      for (int v = 0; v <= last; ++v) {
        sum[0] += line[v] * x[v];
        sum[1] += line[v] * y[v];
        sum[2] += line[v] * z[v];
      }
    }
  }
  return sum;
}

/// Attraction: adds the forces on the nuclei and returns the derivative with respect to the first centre; `nuclei` gets the
/// sum of the forces on the nuclei.
VECTOR3 attraction(const MOLECULE_T& molecule, const PAIR_T& pair, const PRIMITIVE_PAIR_T& q, WORKSPACE_T& work,
                   VECTOR3& nuclei) {
  const int order = pair.sa.l + pair.sb.l + 1;
  const auto size = static_cast<std::size_t>(n_hermite(order));
  gather_hermite(pair, q, order, work);
  std::fill_n(work.r_all.begin(), size, 0.0);
  for (std::size_t c = 0; c < molecule.atoms.size(); ++c) {
    const ATOM_T& atom = molecule.atoms[c];
    if (atom.charge == 0.0) continue;
    std::fill_n(work.r.begin(), size, 0.0);
    work.coulomb.add(order, q.p, q.center[0] - atom.position[0], q.center[1] - atom.position[1],
                     q.center[2] - atom.position[2], -atom.charge, work.r.data());
    const VECTOR3 force = raised_products(order, work.density, work.r);
    for (std::size_t k = 0; k < 3; ++k) {
      work.gradient(static_cast<Eigen::Index>(3 * c + k)) -= force[k];
      nuclei[k] -= force[k];
    }
    for (std::size_t t = 0; t < size; ++t) work.r_all[t] += work.r[t];
  }
  VECTOR3 sum = {};
  for (std::size_t k = 0; k < 3; ++k)
    for (std::size_t t = 0; t < size; ++t) sum[k] += work.first_centre[k][t] * work.r_all[t];
  return sum;
}

void add_pair(const MOLECULE_T& molecule, const PAIR_T& pair, WORKSPACE_T& work) {
  const auto& ra = molecule.atoms[static_cast<std::size_t>(pair.sa.atom)].position;
  const auto& rb = molecule.atoms[static_cast<std::size_t>(pair.sb.atom)].position;
  for (std::size_t ia = 0; ia < pair.sa.alpha.size(); ++ia) {
    for (std::size_t ib = 0; ib < pair.sb.alpha.size(); ++ib) {
      const PRIMITIVE_PAIR_T q = primitive_pair(pair.sa, ia, pair.sb, ib, ra, rb);
      if (q.gauss < NEGLIGIBLE_GAUSS) continue;
      VECTOR3 nuclei = {};
      const VECTOR3 pulay = overlap_and_kinetic(pair, q);
      const VECTOR3 attracted = attraction(molecule, pair, q, work, nuclei);
      for (std::size_t k = 0; k < 3; ++k) {
        work.gradient(3 * pair.sa.atom + static_cast<Eigen::Index>(k)) += pulay[k] + attracted[k];
        work.gradient(3 * pair.sb.atom + static_cast<Eigen::Index>(k)) -= pulay[k] + attracted[k] + nuclei[k];
      }
    }
  }
}

}  // namespace

VECTOR one_electron_gradient(const MOLECULE_T& molecule, const MATRIX& density, const MATRIX& energy_weighted) {
  for (const SHELL_T& shell : molecule.shells) validate_gradient_shell("one_electron_gradient", shell);
  const std::vector<int> offsets = cartesian_offsets(molecule);
  const MATRIX bare_density = to_cartesian(molecule, density);
  const MATRIX bare_weighted = to_cartesian(molecule, energy_weighted);
  const auto n_shells = static_cast<int>(molecule.shells.size());
  const int n_pairs = n_shells * (n_shells + 1) / 2;
  static_cast<void>(powers_of(0));
  static_cast<void>(hermite_rows(0));
  std::vector<WORKSPACE_T> spaces(static_cast<std::size_t>(omp_get_max_threads()));
#pragma omp parallel
  {
    WORKSPACE_T& work = spaces[static_cast<std::size_t>(omp_get_thread_num())];
    work.gradient = VECTOR::Zero(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
    // Pairs are dealt out in turn, so that the sums repeat from run to run.
#pragma omp for schedule(static, 1)
    for (int n = 0; n < n_pairs; ++n) {
      const auto is = static_cast<int>((std::sqrt(8.0 * n + 1.0) - 1.0) / 2.0);
      const int js = n - is * (is + 1) / 2;
      const auto a = static_cast<std::size_t>(is), b = static_cast<std::size_t>(js);
      add_pair(molecule,
               {molecule.shells[a], molecule.shells[b], bare_density, bare_weighted, offsets[a], offsets[b],
                is == js ? 1.0 : 2.0},
               work);
    }
  }
  VECTOR gradient = VECTOR::Zero(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
  for (const WORKSPACE_T& work : spaces)
    if (work.gradient.size() > 0) gradient += work.gradient;
  return gradient;
}

}  // namespace zentrix::INTEGRALS_1E

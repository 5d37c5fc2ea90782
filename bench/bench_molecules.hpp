#pragma once

#include <fmt/format.h>

#include <Eigen/Eigenvalues>
#include <cmath>
#include <numbers>
#include <string>

#include "integrals/one_electron.hpp"
#include "molecule/cartesian.hpp"
#include "support/molecules.hpp"

// Molecules of the two-electron benchmarks beyond the samples of the tests, and a density to build from. Run the programs in
// the root of the source tree, where the basis library is.

namespace zentrix::BENCH {

/// C_nH_(2n+2), all anti, C-C 1.53, C-H 1.09 angstrom.
inline std::string alkane(int n) {
  const double dx = 1.53 * std::sin(0.5 * 1.9634954084936207), dz = 1.53 * std::cos(0.5 * 1.9634954084936207);
  const double hy = 1.09 * 0.816, hz = 1.09 * 0.577;
  std::string lines;
  const auto add = [&](const char* symbol, double x, double y, double z) {
    lines += fmt::format("{} {:.6f} {:.6f} {:.6f}\n", symbol, x, y, z);
  };
  for (int k = 0; k < n; ++k) {
    const double side = k % 2 == 0 ? 0.5 : -0.5;
    add("C", k * dx, 0.0, side * dz);
    add("H", k * dx, hy, side * (dz + 2.0 * hz));
    add("H", k * dx, -hy, side * (dz + 2.0 * hz));
  }
  add("H", -0.89, 0.0, 0.5 * dz - 0.63);
  add("H", (n - 1) * dx + 0.89, 0.0, (n % 2 == 1 ? 0.5 : -0.5) * dz + (n % 2 == 1 ? -0.63 : 0.63));
  return lines;
}

/// n water molecules on a grid of 3 angstrom, four to a layer, turned against each other.
inline std::string waters(int n) {
  std::string lines;
  for (int k = 0; k < n; ++k) {
    const double x = 3.0 * (k % 2), y = 3.0 * (k / 2 % 2), z = 3.0 * (k / 4);
    const double turn = 0.7 * k, c = std::cos(turn), s = std::sin(turn);
    lines += fmt::format("O {:.6f} {:.6f} {:.6f}\n", x, y, z);
    for (double side : {-0.7572, 0.7572})
      lines += fmt::format("H {:.6f} {:.6f} {:.6f}\n", x + side * c, y + side * s, z + 0.5865);
  }
  return lines;
}

/// Closed-shell density of the core Hamiltonian in the run's functions: smooth, of the size and shape of a real one.
inline MATRIX core_density(const MOLECULE_T& molecule) {
  const MATRIX s = INTEGRALS_1E::overlap(molecule);
  const MATRIX h = INTEGRALS_1E::kinetic(molecule) + INTEGRALS_1E::nuclear_attraction(molecule);
  const Eigen::GeneralizedSelfAdjointEigenSolver<MATRIX> solver(h, s);
  const MATRIX c = solver.eigenvectors().leftCols(molecule.n_electrons / 2);
  return 2.0 * c * c.transpose();
}

}  // namespace zentrix::BENCH

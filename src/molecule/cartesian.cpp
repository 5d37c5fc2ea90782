#include "molecule/cartesian.hpp"

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "constants/combinatorics.hpp"
#include "constants/limits.hpp"
#include "report/stop.hpp"

namespace zentrix {
namespace {

double factorial(int n) { return n < 2 ? 1.0 : n * factorial(n - 1); }

/// Overlap of two bare components of one shell relative to the self-overlap of x^l:
/// prod (p + p' - 1)!! / (2l - 1)!! over x, y, z, zero where a sum of powers is odd.
double component_overlap(const POWERS_T& a, const POWERS_T& b, int l) {
  const std::array<int, 3> sums = {a.x + b.x, a.y + b.y, a.z + b.z};
  double value = 1.0 / odd_double_factorial(l);
  for (const int sum : sums) {
    if (sum % 2 != 0) return 0.0;
    value *= odd_double_factorial(sum / 2);
  }
  return value;
}

MATRIX cartesian_functions(int l) {
  const int n = n_cartesian(l);
  MATRIX functions = MATRIX::Zero(n, n);
  for (int i = 0; i < n; ++i) {
    const POWERS_T p = cartesian_powers(l, i);
    functions(i, i) = 1.0 / std::sqrt(component_overlap(p, p, l));
  }
  return functions;
}

/// Coefficient of x^i y^j z^k in the real solid harmonic of degree l and order m, up to a common factor per m:
/// H. B. Schlegel, M. J. Frisch, Int. J. Quantum Chem. 54 (1995) 83, real and imaginary parts taken for m >= 0 and m < 0.
double solid_harmonic_coefficient(int l, int m, const POWERS_T& p) {
  const int order = std::abs(m);
  if ((p.x + p.y - order) < 0 || (p.x + p.y - order) % 2 != 0) return 0.0;
  const int j = (p.x + p.y - order) / 2;
  double radial = 0.0;
  for (int i = j; i <= (l - order) / 2; ++i) {
    radial += binomial(l, i) * binomial(i, j) * (i % 2 == 0 ? 1.0 : -1.0) * factorial(2 * l - 2 * i) /
              factorial(l - order - 2 * i);
  }
  double azimuthal = 0.0;
  for (int k = 0; k <= j; ++k) {
    const int y_phase = order - p.x + 2 * k;  // power of i that the y factors carry
    if (p.x - 2 * k < 0 || p.x - 2 * k > order) continue;
    const bool imaginary = std::abs(y_phase) % 2 != 0;
    if (imaginary != (m < 0)) continue;
    const int half_turns = imaginary ? (y_phase - 1) / 2 : y_phase / 2;
    azimuthal += binomial(j, k) * binomial(order, p.x - 2 * k) * (half_turns % 2 == 0 ? 1.0 : -1.0);
  }
  return radial * azimuthal;
}

MATRIX spherical_functions(int l) {
  const int n = n_cartesian(l);
  MATRIX functions = MATRIX::Zero(n_spherical(l), n);
  MATRIX metric(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) metric(i, j) = component_overlap(cartesian_powers(l, i), cartesian_powers(l, j), l);
  }
  for (int m = -l; m <= l; ++m) {
    auto row = functions.row(m + l);
    for (int i = 0; i < n; ++i) row(i) = solid_harmonic_coefficient(l, m, cartesian_powers(l, i));
    const double norm = row * metric * row.transpose();
    row /= std::sqrt(norm);
  }
  return functions;
}

struct FUNCTION_TABLES_T {
  std::array<MATRIX, LMAX + 1> cartesian;
  std::array<MATRIX, LMAX_BASIS + 1> spherical;
  FUNCTION_TABLES_T() {
    for (int l = 0; l <= LMAX; ++l) cartesian[static_cast<std::size_t>(l)] = cartesian_functions(l);
    for (int l = 0; l <= LMAX_BASIS; ++l) spherical[static_cast<std::size_t>(l)] = spherical_functions(l);
  }
};

/// Rows first (nfunc x ncart times whole matrix), then columns: X T^t costs n^2 times the shell size only.
MATRIX transform_rows(const MOLECULE_T& molecule, const MATRIX& input, bool to_cart) {
  const std::vector<int> offsets = cartesian_offsets(molecule);
  MATRIX output(to_cart ? offsets.back() : molecule.n_basis, input.cols());
  for (std::size_t s = 0; s < molecule.shells.size(); ++s) {
    const SHELL_T& shell = molecule.shells[s];
    const MATRIX& functions = shell_functions(shell.l, molecule.spherical);
    const int first_cart = offsets[s];
    const int n_cart = n_cartesian(shell.l);
    if (to_cart) {
      output.middleRows(first_cart, n_cart).noalias() =
          functions.transpose().lazyProduct(input.middleRows(shell.first, shell.nfunc));
    } else {
      output.middleRows(shell.first, shell.nfunc).noalias() = functions.lazyProduct(input.middleRows(first_cart, n_cart));
    }
  }
  return output;
}

/// Cartesian functions are bare components times a factor each; the matrix with rows and columns times these.
MATRIX scaled(const MOLECULE_T& molecule, const MATRIX& input) {
  VECTOR factors(molecule.n_basis);
  for (const SHELL_T& shell : molecule.shells)
    factors.segment(shell.first, shell.nfunc) = shell_functions(shell.l, false).diagonal();
  return factors.asDiagonal() * input * factors.asDiagonal();
}

}  // namespace

POWERS_T cartesian_powers(int l, int n) {
  int rest = 0;  // y + z grows by one after every rest + 1 components
  while (n > rest) {
    n -= rest + 1;
    ++rest;
  }
  return {l - rest, rest - n, n};
}

const std::vector<POWERS_T>& powers_of(int l) {
  static const auto table = [] {
    std::array<std::vector<POWERS_T>, LMAX + 1> powers;
    for (int k = 0; k <= LMAX; ++k)
      for (int n = 0; n < n_cartesian(k); ++n) powers[static_cast<std::size_t>(k)].push_back(cartesian_powers(k, n));
    return powers;
  }();
  return table[static_cast<std::size_t>(l)];
}

const MATRIX& shell_functions(int l, bool spherical) {
  static const FUNCTION_TABLES_T tables;
  if (spherical && l > LMAX_BASIS) {
    throw run_stopped(" *** ERROR: Spherical harmonics for L=" + std::to_string(l) +
                      " not yet implemented.\n   Use Cartesian basis (remove %spherical) or use a basis set with L <= 4.");
  }
  return spherical ? tables.spherical[static_cast<std::size_t>(l)] : tables.cartesian.at(static_cast<std::size_t>(l));
}

std::vector<int> cartesian_offsets(const MOLECULE_T& molecule) {
  std::vector<int> offsets = {0};
  for (const SHELL_T& shell : molecule.shells) offsets.push_back(offsets.back() + n_cartesian(shell.l));
  return offsets;
}

MATRIX to_cartesian(const MOLECULE_T& molecule, const MATRIX& functions) {
  if (!molecule.spherical) return scaled(molecule, functions);
  const MATRIX half = transform_rows(molecule, functions, true);
  return transform_rows(molecule, half.transpose(), true).transpose();
}

MATRIX to_functions(const MOLECULE_T& molecule, const MATRIX& cartesian) {
  if (!molecule.spherical) return scaled(molecule, cartesian);
  const MATRIX half = transform_rows(molecule, cartesian, false);
  return transform_rows(molecule, half.transpose(), false).transpose();
}

}  // namespace zentrix

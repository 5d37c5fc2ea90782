#pragma once

// Compile-time limits of the program, in one place.

namespace zentrix {

/// Largest angular momentum the integral engine accepts for a shell (h functions).
inline constexpr int LMAX = 5;
/// Working limit inside the engine: one above LMAX, as the kinetic-energy recurrences need.
inline constexpr int LMAX_WORK = LMAX + 1;
/// Largest angular momentum the basis reader, the spherical transformation and the Molden writer accept (g functions).
inline constexpr int LMAX_BASIS = 4;
/// Limits of shells in gradients and Hessians.
inline constexpr int LMAX_GRAD = LMAX_BASIS;
inline constexpr int LMAX_HESS = LMAX_BASIS;

/// Boys functions F_0 .. F_28 are tabulated on 0 <= T <= 50 with a step of 0.01.
inline constexpr int BOYS_NMAX = 28;
inline constexpr int BOYS_NGRID = 5000;
inline constexpr double BOYS_STEP = 0.01;
/// Size of the auxiliary tables (binomial coefficients, double factorials).
inline constexpr int TABLE_SIZE = 58;

inline constexpr int MAX_ZMATRIX_ROWS = 500;
inline constexpr int MAX_SCAN_VARIABLES = 4;
inline constexpr int MAX_CONSTRAINTS = 32;

/// Number of Cartesian functions x^i y^j z^k with i + j + k = l.
constexpr int n_cartesian(int l) { return (l + 1) * (l + 2) / 2; }
/// Number of real solid harmonics of degree l.
constexpr int n_spherical(int l) { return 2 * l + 1; }

}  // namespace zentrix

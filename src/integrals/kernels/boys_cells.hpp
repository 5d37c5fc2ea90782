#pragma once

// Tables of the vector Boys function. Plain data, shared by the kernels of all instruction sets.

namespace zentrix::kernels {

/// Orders F_0 .. F_20: four h functions.
inline constexpr int BOYS_LANES_MMAX = 20;
inline constexpr int BOYS_CELLS_PER_UNIT = 16;
/// Upper end of the polynomial cells. Beyond it the leading asymptotic term is exact to double precision; higher orders need
/// a larger T for that.
constexpr double boys_cell_limit(int m) { return m <= 12 ? 64.0 : 80.0; }
constexpr int boys_cell_count(int m) { return static_cast<int>(boys_cell_limit(m)) * BOYS_CELLS_PER_UNIT; }

/// What a kernel needs of the Boys function; made by boys_service().
struct BOYS_SERVICE_T {
  /// A cell is one cache line: cells[m][8 i + k] for k <= 6 is the coefficient of x^k of F_m in cell i, x = 16 T - (i + 1/2)
  /// in
  /// [-1/2, 1/2]; the eighth number is exp(-T) at the middle of the cell, which so arrives with the coefficients.
  const double* cells[BOYS_LANES_MMAX + 1];
  bool precise;  ///< power series and asymptotic form instead of the cells
};

/// Builds the tables at the first call (from BOYS::evaluate_series) and looks up the precise mode at every call: ask once
/// per build, outside the loops.
BOYS_SERVICE_T boys_service();

/// F_0 .. F_m by the power series (asymptotic form beyond T = 35) for the arguments of one vector;
/// f[order * lanes + lane].
void boys_series_lanes(int m, const double* t, double* f, int lanes);

}  // namespace zentrix::kernels

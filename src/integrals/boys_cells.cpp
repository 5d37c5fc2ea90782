#include "integrals/kernels/boys_cells.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "integrals/boys.hpp"
#include "integrals/kernels/boys_precise.hpp"

namespace zentrix::kernels {

namespace {

constexpr int DEGREE = 6;
constexpr int TAYLOR_TERMS = 12;  // (1/32)^12 / 12! is far below double precision

struct alignas(64) CELL_T {
  double coefficient[DEGREE + 1];
  double exponential;
};

struct TABLES_T {
  std::vector<CELL_T> cells[BOYS_LANES_MMAX + 1];
};

/// Monomial coefficients of the Chebyshev polynomials T_n, n < TAYLOR_TERMS.
struct CHEBYSHEV_T {
  long double c[TAYLOR_TERMS][TAYLOR_TERMS] = {};
  CHEBYSHEV_T() {
    c[0][0] = 1;
    c[1][1] = 1;
    for (int n = 2; n < TAYLOR_TERMS; ++n)
      for (int k = 0; k <= n; ++k) c[n][k] = (k > 0 ? 2 * c[n - 1][k - 1] : 0) - c[n - 2][k];
  }
};

/// Lowers a polynomial on [-1, 1] to DEGREE by taking off the multiple of T_n that removes the leading term, highest n first
/// (Lanczos' economisation): the error spreads evenly over the cell.
void economise(const CHEBYSHEV_T& chebyshev, long double* a, int terms) {
  for (int n = terms - 1; n > DEGREE; --n) {
    const long double factor = a[n] / chebyshev.c[n][n];
    for (int k = 0; k <= n; ++k) a[k] -= factor * chebyshev.c[n][k];
  }
}

TABLES_T make_tables() {
  const CHEBYSHEV_T chebyshev;
  TABLES_T tables;
  const int n_cells = boys_cell_count(BOYS_LANES_MMAX);
  for (int m = 0; m <= BOYS_LANES_MMAX; ++m) tables.cells[m].resize(static_cast<std::size_t>(boys_cell_count(m)));
  long double f[BOYS_NMAX + 1];
  for (int i = 0; i < n_cells; ++i) {
    const long double middle = (i + 0.5L) / BOYS_CELLS_PER_UNIT;
    BOYS::evaluate_series(BOYS_NMAX, static_cast<double>(middle), f);
    for (int m = 0; m <= BOYS_LANES_MMAX; ++m) {
      if (i >= boys_cell_count(m)) continue;
      // Taylor series in u = (T - middle) / half width, dF_m/dT = -F_(m+1), then from u to x = u / 2.
      const int terms = std::min(TAYLOR_TERMS, BOYS_NMAX - m + 1);
      long double a[TAYLOR_TERMS] = {};
      long double scale = 1;
      for (int k = 0; k < terms; ++k) {
        a[k] = f[m + k] * scale;
        scale *= -1.0L / (2 * BOYS_CELLS_PER_UNIT * (k + 1));
      }
      economise(chebyshev, a, terms);
      CELL_T& cell = tables.cells[m][static_cast<std::size_t>(i)];
      for (int k = 0; k <= DEGREE; ++k) cell.coefficient[k] = static_cast<double>(std::ldexp(a[k], k));
      cell.exponential = static_cast<double>(std::exp(-middle));
    }
  }
  return tables;
}

}  // namespace

BOYS_SERVICE_T boys_service() {
  static const TABLES_T tables = make_tables();
  BOYS_SERVICE_T service{};
  for (int m = 0; m <= BOYS_LANES_MMAX; ++m) service.cells[m] = tables.cells[m].front().coefficient;
  service.precise = BOYS::precise_mode();
  return service;
}

void boys_series_lanes(int m, const double* t, double* f, int lanes) {
  using EVALUATE_T = void (*)(int, const double*, double*);
  static const EVALUATE_T of_four =
      chosen_isa() == ISA::baseline ? ZX_PICK(ISA::baseline, boys_precise) : ZX_PICK(ISA::avx2, boys_precise);
  static const EVALUATE_T of_eight = ZX_PICK(ISA::avx512, boys_precise);
  (lanes == lane_count(ISA::avx512) ? of_eight : of_four)(m, t, f);
}

}  // namespace zentrix::kernels

#include "integrals/boys.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "constants/combinatorics.hpp"
#include "constants/units.hpp"

namespace zentrix::BOYS {
namespace {

/// Order at which the power series of a table row starts: fifteen above the highest stored order, so that the downward
/// recursion has forgotten the series' rounding long before.
constexpr int series_order = BOYS_NMAX + 15;
/// Below this argument F_n(0) = 1/(2n+1) is exact to double precision.
constexpr double small_argument = 1e-15;
constexpr double table_limit = BOYS_NGRID * BOYS_STEP;
constexpr double precise_small_argument = 1e-14;
constexpr double precise_series_limit = 35.0;
constexpr int taylor_order = 6;

struct BOYS_TABLES_T {
  std::vector<std::array<double, BOYS_NMAX + 1>> grid;
  BOYS_TABLES_T();
};

/// Power series of F_n(T) at one order: (e^-T / 2) sum_k T^k / ((n+1/2)(n+3/2)...(n+k+1/2)).
template <typename REAL>
REAL series(int n, REAL t, REAL exp_minus_t, REAL stop, int max_terms) {
  REAL denominator = static_cast<REAL>(n) + static_cast<REAL>(0.5);
  REAL term = 1 / denominator;
  REAL sum = term;
  for (int k = 1; k <= max_terms; ++k) {
    denominator += 1;
    term *= t / denominator;
    sum += term;
    if (std::abs(term) < stop * std::abs(sum)) break;
  }
  return exp_minus_t / 2 * sum;
}

/// F_0 .. F_top by the series at `top` and F_n = (2T F_(n+1) + e^-T) / (2n+1) downwards; values needs top + 1 places.
template <typename REAL>
void downward(int top, REAL t, REAL stop, int max_terms, REAL* values) {
  const REAL exp_minus_t = std::exp(-t);
  values[top] = series<REAL>(top, t, exp_minus_t, stop, max_terms);
  for (int n = top - 1; n >= 0; --n) {
    values[n] = (2 * t * values[n + 1] + exp_minus_t) / static_cast<REAL>(2 * n + 1);
  }
}

BOYS_TABLES_T::BOYS_TABLES_T() : grid(BOYS_NGRID + 1) {
  std::array<double, series_order + 1> values;
  for (int i = 0; i <= BOYS_NGRID; ++i) {
    const double t = BOYS_STEP * i;
    auto& row = grid[static_cast<std::size_t>(i)];
    if (t < small_argument) {
      for (int n = 0; n <= BOYS_NMAX; ++n) row[static_cast<std::size_t>(n)] = 1.0 / (2 * n + 1);
    } else {
      downward<double>(series_order, t, 1e-17, 250, values.data());
      std::copy_n(values.begin(), row.size(), row.begin());
    }
  }
}

const BOYS_TABLES_T& tables() {
  static const BOYS_TABLES_T built;
  return built;
}

// The mode is set around whole computations on the main thread and only read by workers.
bool precise = false;

/// F_n(T) = (2n-1)!! / 2^(n+1) sqrt(pi / T^(2n+1)), the error-function limit of large T.
double asymptotic(int n, double t) {
  return odd_double_factorial(n) / std::ldexp(1.0, n + 1) * std::sqrt(PI / t) / std::pow(t, n);
}

/// The same for orders first .. last, each from the one before: F_(n+1) = (2n+1) / (2T) F_n.
void asymptotic(int first, int last, double t, double* values) {
  values[0] = asymptotic(first, t);
  for (int n = first; n < last; ++n) values[n + 1 - first] = values[n - first] * (2 * n + 1) / (2.0 * t);
}

/// Orders first .. last into values[0 ..]: nearest grid point and sixth-order Taylor sum, dF_n/dT = -F_(n+1).
void from_table(int first, int last, double t, double* values) {
  if (t < small_argument) {
    for (int n = first; n <= last; ++n) values[n - first] = 1.0 / (2 * n + 1);
    return;
  }
  if (t > table_limit) return asymptotic(first, last, t, values);
  const BOYS_TABLES_T& table = tables();
  const int i = std::clamp(static_cast<int>(t / BOYS_STEP + (t < 0.0 ? -0.5 : 0.5)), 0, BOYS_NGRID);
  const auto& row = table.grid[static_cast<std::size_t>(i)];
  const double x = BOYS_STEP * i - t;
  std::array<double, taylor_order + 1> weight;
  weight[0] = 1.0;
  for (std::size_t k = 1; k < weight.size(); ++k) weight[k] = weight[k - 1] * x / static_cast<double>(k);
  for (int n = first; n <= last; ++n) {
    const int terms = std::min(taylor_order, BOYS_NMAX - n);
    double sum = 0.0;
    for (int k = 0; k <= terms; ++k) sum += row[static_cast<std::size_t>(n + k)] * weight[static_cast<std::size_t>(k)];
    values[n - first] = sum;
  }
}

}  // namespace

void initialize_tables() { static_cast<void>(tables()); }

void evaluate_series(int nmax, double t, long double* values) {
  // The series' own order is kept above nmax so that its truncation does not show; longer arguments need more terms.
  constexpr int extra = 15;
  std::array<long double, BOYS_NMAX + 2 * extra + 1> work;
  const int top = nmax + extra;
  downward<long double>(top, static_cast<long double>(t), 1e-22L, 2000, work.data());
  std::copy_n(work.begin(), nmax + 1, values);
}

void evaluate(int nmax, double t, double* values) {
  if (!precise) {
    from_table(0, nmax, t, values);
    return;
  }
  if (t < precise_small_argument) {
    for (int n = 0; n <= nmax; ++n) values[n] = 1.0 / (2 * n + 1);
  } else if (t > precise_series_limit) {
    asymptotic(0, nmax, t, values);
  } else {
    downward<double>(nmax, t, 1e-17, 2000, values);
  }
}

double evaluate(int n, double t) {
  std::array<double, BOYS_NMAX + 1> values;
  if (!precise) {
    from_table(n, n, t, values.data());
    return values[0];
  }
  evaluate(n, t, values.data());
  return values[static_cast<std::size_t>(n)];
}

bool precise_mode() { return precise; }

PRECISE_MODE_GUARD::PRECISE_MODE_GUARD(bool wanted) : previous_(precise) { precise = wanted; }
PRECISE_MODE_GUARD::~PRECISE_MODE_GUARD() { precise = previous_; }

}  // namespace zentrix::BOYS

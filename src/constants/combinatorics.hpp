#pragma once

#include <array>
#include <cstddef>

#include "constants/limits.hpp"

// The small whole numbers of Gaussian integrals, as tables that the compiler fills.

namespace zentrix {

using INTEGER_ROW_T = std::array<double, TABLE_SIZE>;

/// Pascal's triangle: BINOMIAL[n][k] = n! / (k! (n-k)!), 0 behind the diagonal.
inline constexpr std::array<INTEGER_ROW_T, TABLE_SIZE> BINOMIAL = [] {
  std::array<INTEGER_ROW_T, TABLE_SIZE> rows = {};
  for (std::size_t n = 0; n < rows.size(); ++n) {
    rows[n][0] = 1.0;
    for (std::size_t k = 1; k <= n; ++k) rows[n][k] = rows[n - 1][k - 1] + rows[n - 1][k];
  }
  return rows;
}();

/// ODD_DOUBLE_FACTORIAL[n] = (2n-1)!!, with (-1)!! = 1.
inline constexpr INTEGER_ROW_T ODD_DOUBLE_FACTORIAL = [] {
  INTEGER_ROW_T values = {1.0};
  for (std::size_t n = 1; n < values.size(); ++n) values[n] = values[n - 1] * static_cast<double>(2 * n - 1);
  return values;
}();

/// 0 <= n < TABLE_SIZE, 0 <= k.
constexpr double binomial(int n, int k) {
  return k > n ? 0.0 : BINOMIAL[static_cast<std::size_t>(n)][static_cast<std::size_t>(k)];
}
/// (2n-1)!!, 0 <= n < TABLE_SIZE.
constexpr double odd_double_factorial(int n) { return ODD_DOUBLE_FACTORIAL[static_cast<std::size_t>(n)]; }

}  // namespace zentrix

#include "integrals/kernels/boys_probe.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "integrals/boys.hpp"
#include "support/instruction_sets.hpp"

using namespace zentrix;
using kernels::ISA;

namespace {

/// (2m - 1)!! / 2^(m + 1) sqrt(pi / T^(2m + 1)): what is left of F_m(T) when exp(-T) is nothing.
double asymptotic_boys(int m, double t) {
  double value = 0.5 * std::sqrt(std::numbers::pi / t);
  for (int k = 1; k <= m; ++k) value *= (2 * k - 1) / (2.0 * t);
  return value;
}

std::vector<double> grid() {
  std::vector<double> t = {0.0,      1e-300,     1e-16, 34.99999, 35.00001, 63.99999, 64.0,
                           64.00001, 79.9999999, 80.0,  80.1,     200.0,    1e4,      1e9};
  for (double x = 1e-3; x < 90.0; x += 0.0917) t.push_back(x);
  for (int i = 0; i < 700; ++i) t.push_back(i / 8.0);  // cell edges
  while (t.size() % 8 != 0) t.push_back(1.0);
  return t;
}

}  // namespace

// Every order at every kind of argument, below T = 80 against the series; a wrong cell, a bad blend into the asymptotic form
// or an unstable recursion all show.
TEST(BOYS_LANES, AGREE_WITH_THE_SERIES_IN_EVERY_LANE_AND_INSTRUCTION_SET) {
  const std::vector<double> t = grid();
  const int n = static_cast<int>(t.size());
  for (bool precise : {false, true}) {
    BOYS::PRECISE_MODE_GUARD guard(precise);
    const kernels::BOYS_SERVICE_T service = kernels::boys_service();
    for (ISA isa : TESTS::available_isas())
      for (int m = 0; m <= kernels::BOYS_LANES_MMAX; ++m) {
        std::vector<double> f(static_cast<std::size_t>((m + 1) * n));
        ZX_PICK(isa, boys_probe)(service, m, n, t.data(), f.data());
        for (int i = 0; i < n; ++i) {
          long double reference[BOYS_NMAX + 1];
          const bool series = t[i] < 80.0;
          if (series) BOYS::evaluate_series(m, t[i], reference);
          for (int k = 0; k <= m; ++k) {
            const double want = series ? static_cast<double>(reference[k]) : asymptotic_boys(k, t[i]);
            const double got = f[static_cast<std::size_t>(k * n + i)];
            ASSERT_NEAR(got, want, (series ? 1e-14 : 1e-12) * want + 1e-300)
                << kernels::isa_name(isa) << " order " << k << " of " << m << " at T = " << t[i];
          }
        }
      }
  }
}

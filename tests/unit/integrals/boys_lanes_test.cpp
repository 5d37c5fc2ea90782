#include "integrals/kernels/boys_probe.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "integrals/boys.hpp"

using namespace zentrix;
using kernels::ISA;

namespace {

/// F_m(T) by quadrature of its own definition, int_0^1 t^2m exp(-T t^2) dt: composite Gauss-Legendre, independent of series,
/// recursions and tables.
double boys_by_quadrature(int m, double t) {
  const double x[4] = {0.18343464249564980494, 0.52553240991632898582, 0.79666647741362673959, 0.96028985649753623168};
  const double w[4] = {0.36268378337836198297, 0.31370664587788728734, 0.22238103445337447054, 0.10122853629037625915};
  const double upper = std::min(1.0, std::sqrt((60.0 + 3 * m) / std::max(t, 1e-30)));
  const int panels = 40;
  long double total = 0;
  for (int p = 0; p < panels; ++p)
    for (int k = 0; k < 8; ++k) {
      const double u = upper * (p + 0.5 + (k < 4 ? 0.5 : -0.5) * x[k % 4]) / panels;
      total += w[k % 4] * std::pow(u, 2 * m) * std::exp(-t * u * u);
    }
  return static_cast<double>(total * upper / (2 * panels));
}

std::vector<ISA> available() {
  std::vector<ISA> list;
  for (ISA isa : {ISA::baseline, ISA::avx2, ISA::avx512})
    if (isa <= kernels::best_isa()) list.push_back(isa);
  return list;
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

// Every order at every kind of argument; a wrong cell, a bad blend into the asymptotic form or an unstable recursion all
// show.
TEST(BOYS_LANES, AGREES_WITH_THE_SERIES_IN_EVERY_LANE_AND_INSTRUCTION_SET) {
  const std::vector<double> t = grid();
  const int n = static_cast<int>(t.size());
  for (bool precise : {false, true}) {
    BOYS::PRECISE_MODE_GUARD guard(precise);
    const kernels::BOYS_SERVICE_T service = kernels::boys_service();
    for (ISA isa : available())
      for (int m = 0; m <= kernels::BOYS_LANES_MMAX; ++m) {
        std::vector<double> f(static_cast<std::size_t>((m + 1) * n));
        ZX_PICK(isa, boys_probe)(service, m, n, t.data(), f.data());
        for (int i = 0; i < n; ++i) {
          long double reference[BOYS_NMAX + 1];
          const bool series = t[i] < 80.0;
          if (series) BOYS::evaluate_series(m, t[i], reference);
          for (int k = 0; k <= m; ++k) {
            const double want = series ? static_cast<double>(reference[k]) : boys_by_quadrature(k, t[i]);
            const double got = f[static_cast<std::size_t>(k * n + i)];
            ASSERT_NEAR(got, want, (series ? 1e-14 : 1e-12) * want + 1e-300)
                << kernels::isa_name(isa) << " order " << k << " of " << m << " at T = " << t[i];
          }
        }
      }
  }
}

TEST(BOYS_LANES, SERIES_AGREES_WITH_QUADRATURE_OF_THE_DEFINITION) {
  for (double t : {0.0, 0.3, 2.7, 11.0, 31.0, 63.0})
    for (int m : {0, 1, 5, 12, 20}) {
      long double series[BOYS_NMAX + 1];
      BOYS::evaluate_series(m, t, series);
      const double want = boys_by_quadrature(m, t);
      EXPECT_NEAR(static_cast<double>(series[m]), want, 1e-12 * want) << m << ' ' << t;
    }
}

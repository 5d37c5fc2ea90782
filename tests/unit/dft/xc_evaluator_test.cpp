#include <gtest/gtest.h>

#include <algorithm>

#include "xc_samples.hpp"

// Second derivatives by differences, batches of any length, and behaviour at and beyond the edges of the domain. The
// formulas themselves: xc_reference_test.cpp.

using namespace zentrix;
using namespace zentrix::DFT;
using namespace zentrix::DFT::samples;

// The alternative of %xc_deriv numerical, also where the bounds leave room on one side only: no gradient, tau of a single
// orbital. There moving into the bounds and differences of tiny gradients cost digits.
TEST(XC_EVALUATOR, NUMERICAL_SECOND_DERIVATIVES) {
  const int n = 150;
  std::vector<double> points = open_points(n, 1e-4, 30.0);
  auto at = [&](int v, int p) -> double& { return points[static_cast<std::size_t>(v * n + p)]; };
  for (int p = 0; p < n; ++p) {
    if (p % 5 == 1) at(2, p) = at(3, p) = 0.0;
    if (p % 5 == 2) at(2, p) = at(3, p) = at(4, p) = 0.0;
    if (p % 5 >= 3)
      for (int s = 0; s < 2; ++s) at(5 + s, p) = at(2 + 2 * s, p) / (8.0 * at(s, p));
  }
  for (const FUNCTIONAL_T& functional : methods()) {
    const XC_EVALUATOR_T xc(functional, 2);
    const std::vector<double> values = variables_of(points, xc);
    const RESULT_T exact = evaluate(xc, values);
    RESULT_T ours = exact;
    xc.evaluate_second_numerically(n, n, values.data(), ours.energy.data(), ours.first.data(), ours.second.data());
    for (int p = 0; p < n; ++p) {
      if (functional.name.starts_with("BP") && (p % 5 == 1 || p % 5 == 2)) continue;  // P86 holds |grad rho|, not its square
      for (int v = 0; v < xc.variables(); ++v)
        for (int w = 0; w <= v; ++w) {
          const double scale = std::sqrt(std::abs(exact.dd(v, v, p) * exact.dd(w, w, p)));
          EXPECT_NEAR(ours.dd(v, w, p), exact.dd(v, w, p),
                      (p % 5 == 0 ? 1e-4 : 0.03) * std::max(scale, std::abs(exact.dd(v, w, p))))
              << functional.name << " derivative " << v << w << " point " << p;
        }
    }
  }
}

// A batch of any length gives what its points give alone, and nothing behind it is touched.
TEST(XC_EVALUATOR, BATCHES_OF_ANY_LENGTH) {
  constexpr double untouched = 1e300;  // larger than any derivative that can occur
  const int total = 37, stride = 41;
  const std::vector<double> points = open_points(total, 1e-6, 300.0);
  const XC_EVALUATOR_T xc(method("R2SCAN"), 2);
  const RESULT_T all = evaluate(xc, points, false);
  std::vector<double> values(static_cast<std::size_t>(7 * stride), 1.0);
  for (int v = 0; v < 7; ++v) std::copy_n(points.begin() + v * total, total, values.begin() + v * stride);
  for (int n = 0; n <= total; ++n) {
    std::vector<double> energy(static_cast<std::size_t>(stride), untouched);
    std::vector<double> first(static_cast<std::size_t>(7 * stride), untouched);
    xc.evaluate(n, stride, values.data(), energy.data(), first.data());
    for (int p = 0; p < stride; ++p) {
      EXPECT_EQ(energy[static_cast<std::size_t>(p)], p < n ? all.energy[static_cast<std::size_t>(p)] : untouched) << n;
      for (int v = 0; v < 7; ++v)
        EXPECT_EQ(first[static_cast<std::size_t>(v * stride + p)], p < n ? all.d(v, p) : untouched) << n;
    }
  }
}

// Every combination of ordinary, tiny, huge, zero and negative values.
TEST(XC_EVALUATOR, FINITE_EVERYWHERE) {
  const std::vector<double> densities = {0.0,  -1e-5, 1e-300, 4.9e-324, 1e-20, 6e-16, 1e-15,
                                         1e-9, 1e-3,  1.0,    1e10,     1e25,  1e300};
  const std::vector<double> others = {0.0, -1.0, 1e-300, 1e-40, 1e-20, 1e-3, 1.0, 1e10, 1e300};
  std::vector<std::array<double, 7>> rows;
  std::mt19937 engine(3);
  auto pick = [&] { return others[engine() % others.size()]; };
  for (double a : densities)
    for (double b : densities) {
      for (int k = 0; k < 40; ++k)
        rows.push_back({a, b, pick(), pick() * (k % 2 == 0 ? 1.0 : -1.0), pick(), pick(), pick()});
      rows.push_back({a, b});
    }
  const std::size_t n = rows.size();
  std::vector<double> points;
  for (std::size_t v = 0; v < 7; ++v)
    for (const auto& row : rows) points.push_back(row[v]);
  for (kernels::ISA isa : available_isas())
    for (const FUNCTIONAL_T& functional : methods())
      for (int channels : {1, 2}) {
        SCOPED_TRACE(functional.name + ' ' + std::to_string(channels) + ' ' + kernels::isa_name(isa));
        const ISA_GUARD guard(isa);
        const XC_EVALUATOR_T xc(functional, channels);
        const RESULT_T r = evaluate(xc, variables_of(points, xc));
        for (const auto& [what, values] : {std::pair{"energy", &r.energy}, {"first", &r.first}, {"second", &r.second}}) {
          const auto bad = std::find_if_not(values->begin(), values->end(), [](double x) { return std::isfinite(x); });
          const auto at = static_cast<std::size_t>(bad - values->begin());
          EXPECT_EQ(bad, values->end()) << what << ' ' << at / n << " at " << testing::PrintToString(rows[at % n]);
        }
        for (std::size_t p = 0; p < n; ++p) {
          const bool empty = rows[p][0] <= 1e-20 && (channels == 1 || rows[p][1] <= 1e-20);
          EXPECT_TRUE(r.energy[p] == 0.0 || !empty) << p;
        }
      }
}

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "dft/kernels/math_probe.hpp"
#include "support/instruction_sets.hpp"

using namespace zentrix;
using kernels::ISA;
using kernels::MATH_FUNCTION;

namespace {

struct FUNCTION_T {
  std::string name;
  MATH_FUNCTION function;
  long double (*exact)(long double);
  double from, to;  ///< arguments, spaced evenly in the exponent of |x|
  bool negative;    ///< -x as well
  double ulps;
};

const std::vector<FUNCTION_T> FUNCTIONS = {
    {"sqrt", MATH_FUNCTION::sqrt, std::sqrt, 1e-300, 1e300, false, 0.51},
    {"cbrt", MATH_FUNCTION::cbrt, std::cbrt, 1e-290, 1e290, false, 1.0},
    {"1/cbrt", MATH_FUNCTION::inverse_cbrt, [](long double x) { return 1 / std::cbrt(x); }, 1e-290, 1e290, false, 2.5},
    {"log", MATH_FUNCTION::log, std::log, 1e-300, 1e300, false, 1.0},
    {"log near 1", MATH_FUNCTION::log, std::log, 0.4, 2.5, false, 1.0},
    {"log1p", MATH_FUNCTION::log1p, std::log1p, 1e-300, 1e300, false, 1.2},
    {"log1p of -x", MATH_FUNCTION::log1p, std::log1p, 1e-17, 0.999999, true, 1.2},
    {"asinh", MATH_FUNCTION::asinh, std::asinh, 1e-30, 1e30, false, 2.5},
    {"exp", MATH_FUNCTION::exp, std::exp, 1e-10, 700.0, true, 1.0},
    {"expm1", MATH_FUNCTION::expm1, std::expm1, 1e-200, 700.0, true, 1.5},
    {"atan", MATH_FUNCTION::atan, std::atan, 1e-100, 1e100, false, 1.4}};

std::vector<double> arguments(const FUNCTION_T& f) {
  std::vector<double> x;
  const int n = 40000;
  const double start = std::log(f.from), step = (std::log(f.to) - start) / (n - 1);
  for (int i = 0; i < n; ++i) {
    x.push_back(std::exp(start + step * i));
    if (f.negative) x.push_back(-x.back());
  }
  return x;
}

}  // namespace

// Errors in units of the last place against the extended-precision library, over the whole range that is promised.
TEST(SIMD_MATH, AGREES_WITH_THE_STANDARD_LIBRARY) {
  for (ISA isa : TESTS::available_isas()) {
    for (const FUNCTION_T& f : FUNCTIONS) {
      const std::vector<double> x = arguments(f);
      std::vector<double> y(x.size());
      ZX_PICK(isa, math_probe)(f.function, static_cast<int>(x.size()), x.data(), y.data());
      double worst = 0.0, where = 0.0;
      for (std::size_t i = 0; i < x.size(); ++i) {
        const long double exact = f.exact(x[i]);
        const double unit = std::ldexp(1.0, std::max(std::ilogb(static_cast<double>(exact)) - 52, -1074));
        const double ulps = static_cast<double>(std::fabs(y[i] - exact)) / unit;
        if (!(ulps <= worst)) worst = ulps, where = x[i];
      }
      EXPECT_LT(worst, f.ulps) << f.name << " at " << where << ", " << kernels::isa_name(isa);
    }
  }
}

TEST(SIMD_MATH, STAYS_FINITE_AT_THE_ENDS) {
  for (ISA isa : TESTS::available_isas()) {
    const std::vector<double> x = {0.0, -0.0, 1e300, 1e308, 709.0, -709.0, -1e300, 3e-308};
    std::vector<double> y(8);
    for (const auto& [function, at_zero, far_left] :
         {std::tuple{MATH_FUNCTION::exp, 1.0, 0.0}, {MATH_FUNCTION::expm1, 0.0, -1.0}}) {
      ZX_PICK(isa, math_probe)(function, 8, x.data(), y.data());
      EXPECT_EQ(y[0], at_zero);
      EXPECT_EQ(y[6], far_left);
      for (double v : y) EXPECT_TRUE(std::isfinite(v));
    }
  }
}

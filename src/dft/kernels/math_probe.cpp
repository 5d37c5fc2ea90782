#include "dft/kernels/math_probe.hpp"

#include "simd/simd_math.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

ZX_INLINE vec call(MATH_FUNCTION function, vec x) {
  switch (function) {
    case MATH_FUNCTION::sqrt:
      return sqrt(x);
    case MATH_FUNCTION::cbrt:
      return cbrt(x);
    case MATH_FUNCTION::inverse_cbrt:
      return inverse_cbrt(x);
    case MATH_FUNCTION::log:
      return log(x);
    case MATH_FUNCTION::log1p:
      return log1p(x);
    case MATH_FUNCTION::asinh:
      return asinh(x);
    case MATH_FUNCTION::exp:
      return exp(x);
    case MATH_FUNCTION::expm1:
      return expm1(x);
    case MATH_FUNCTION::atan:
      return atan(x);
  }
  return x;
}

}  // namespace

void math_probe(MATH_FUNCTION function, int n, const double* x, double* f) {
  for (int i = 0; i < n; i += LANES) store(f + i, call(function, load(x + i)));
}

}  // namespace zentrix::kernels::ZX_ISA

#pragma once

#include "simd/isa.hpp"

// The elementary functions of vectors behind an ordinary call, for tests of every instruction set.

namespace zentrix::kernels {
enum class MATH_FUNCTION : int { sqrt, cbrt, inverse_cbrt, log, log1p, asinh, exp, expm1, atan };
}

ZX_DECLARE_FOR_EACH_ISA(
    /// f[i] = function of x[i], i < n (n a multiple of 8).
    void math_probe(MATH_FUNCTION function, int n, const double* x, double* f))

#pragma once

#include "integrals/kernels/boys_cells.hpp"
#include "simd/isa.hpp"

// The vector Boys function behind an ordinary call, for tests and benchmarks of every instruction set.

ZX_DECLARE_FOR_EACH_ISA(
    /// F_0 .. F_m of n arguments (n a multiple of 8); f[order * n + i].
    void boys_probe(const BOYS_SERVICE_T& service, int m, int n, const double* t, double* f))

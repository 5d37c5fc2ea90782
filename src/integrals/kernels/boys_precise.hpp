#pragma once

#include "integrals/kernels/boys_cells.hpp"
#include "simd/isa.hpp"

ZX_DECLARE_FOR_EACH_ISA(
    /// The precise mode: F_0 .. F_m of one vector of arguments without any table of values, m <= BOYS_LANES_MMAX;
    /// f[order * LANES + lane].
    void boys_precise(int m, const double* t, double* f))

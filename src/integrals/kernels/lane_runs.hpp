#pragma once

#include "simd/simd.hpp"

// Runs of consecutive doubles, one per lane, gathered into vectors.

namespace zentrix::kernels::ZX_ISA {

/// Vectors that n doubles of every lane's run need, rounded up to whole transposed blocks.
constexpr int whole_blocks(int n) { return (n + LANES - 1) / LANES * LANES; }

/// n consecutive doubles from each lane's address into n vectors. Reads up to LANES - 1 doubles beyond.
ZX_INLINE void load_runs(const double* const* from, int n, vec* to) {
  for (int at = 0; at < n; at += LANES) {
    for (int lane = 0; lane < LANES; ++lane) to[at + lane] = load(from[lane] + at);
    transpose(to + at);
  }
}

}  // namespace zentrix::kernels::ZX_ISA

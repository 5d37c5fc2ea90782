#pragma once

#include "dft/kernels/xc_kernels.hpp"
#include "simd/jet.hpp"

// What the drivers of exchange and correlation share: reading and adding up LANES points, and bringing input inside its
// physical bounds.

namespace zentrix::kernels::ZX_ISA {

/// LANES consecutive points, or the `count` last ones of a batch with zeros behind them.
struct LANE_BLOCK_T {
  const XC_BATCH_T& batch;
  int begin, count;

  ZX_INLINE LANE_BLOCK_T(const XC_BATCH_T& b, int first_point)
      : batch(b), begin(first_point), count(b.n - first_point < LANES ? b.n - first_point : LANES) {}

  ZX_INLINE vec read(int variable) const {
    const double* p = batch.values + variable * batch.stride + begin;
    if (count == LANES) return load(p);
    vec v{};
    for (int i = 0; i < count; ++i) v[i] = p[i];
    return v;
  }
  ZX_INLINE void add(double* array, vec v) const {
    double* p = array + begin;
    if (count == LANES) return store(p, load(p) + v);
    for (int i = 0; i < count; ++i) p[i] += v[i];
  }
  ZX_INLINE void add_energy(vec v) const { add(batch.energy, v); }
  ZX_INLINE void add_first(int variable, vec v) const { add(batch.first + variable * batch.stride, v); }
  ZX_INLINE void add_second(int a, int b, vec v) const { add(batch.second + pair_index(a, b) * batch.stride, v); }
};

ZX_INLINE vec clamp(vec x, vec lowest, vec highest) { return min(max(x, lowest), highest); }

/// |grad rho|^2 inside its bounds, of a density that is not negligible.
ZX_INLINE vec bounded_gradient(vec sigma, vec rho) {
  const vec rho43 = rho * cbrt(rho);
  return clamp(sigma, vec{}, LARGEST_REDUCED_GRADIENT * rho43 * rho43);
}

/// tau between the value of a single orbital, |grad rho|^2 / (8 rho) (C. F. von Weizsaecker, Z. Phys. 96 (1935) 431), and
/// its upper bound.
ZX_INLINE vec bounded_tau(vec tau, vec sigma, vec rho) {
  const vec root = cbrt(rho), lowest = 0.125 * sigma / rho;
  return clamp(tau, lowest, max(lowest, LARGEST_REDUCED_TAU * rho * root * root));
}

}  // namespace zentrix::kernels::ZX_ISA

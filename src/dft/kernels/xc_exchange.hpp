#pragma once

#include "dft/kernels/xc_points.hpp"

// Driver of exchange components. Exchange acts between equal spins, so a component is one function of one spin's density,
// and E[rho_a, rho_b] = e(a) + e(b) (G. L. Oliver, J. P. Perdew, Phys. Rev. A 20 (1979) 397).
//
// A component is a record with
//   static constexpr int INGREDIENTS   1 density, 2 with gradient, 3 with kinetic-energy density
//   static auto energy(rho, sigma, tau)   energy per volume of one spin channel, of jets; only INGREDIENTS of them are
//   passed

namespace zentrix::kernels::ZX_ISA {

/// One spin's share at LANES points. `share` is what part of each variable belongs to the spin: the jets are derivatives
/// with respect to the undivided variables. Lanes of negligible density give zeros.
template <class COMPONENT, int ORDER>
struct EXCHANGE_SPIN_T {
  static constexpr int K = COMPONENT::INGREDIENTS;
  JET_T<((1U << K) - 1U), ORDER> energy;

  ZX_INLINE EXCHANGE_SPIN_T(vec rho, vec sigma, vec tau, double rho_share, double sigma_share, double factor) {
    const mask alive = rho > 0.5 * NEGLIGIBLE_DENSITY;
    rho = select(alive, min(rho, broadcast(LARGEST_DENSITY)), broadcast(1.0));
    const auto r = variable<0, ORDER>(rho, rho_share);
    if constexpr (K == 1) {
      energy = COMPONENT::energy(r);
    } else {
      sigma = bounded_gradient(sigma, rho);
      const auto s = variable<1, ORDER>(sigma, sigma_share);
      if constexpr (K == 2)
        energy = COMPONENT::energy(r, s);
      else
        energy = COMPONENT::energy(r, s, variable<2, ORDER>(bounded_tau(tau, sigma, rho), rho_share));
    }
    const vec scale = select(alive, broadcast(factor), vec{});
    energy.value *= scale;
    for (vec& x : energy.first) x *= scale;
    if constexpr (ORDER == 2)
      for (vec& x : energy.second) x *= scale;
  }

  /// Adds to the batch; ingredient i is variable where[i] there.
  ZX_INLINE void add_to(const LANE_BLOCK_T& block, const int* where) const {
    block.add_energy(energy.value);
    for (int i = 0; i < K; ++i) {
      block.add_first(where[i], energy.first[i]);
      if constexpr (ORDER == 2)
        for (int j = 0; j <= i; ++j) block.add_second(where[i], where[j], energy.second[pair_index(i, j)]);
    }
  }
};

template <class COMPONENT, int ORDER>
void exchange_closed(const XC_BATCH_T& batch, double weight) {
  constexpr int K = COMPONENT::INGREDIENTS;
  constexpr int where[3] = {0, 1, 2};
  for (int p = 0; p < batch.n; p += LANES) {
    const LANE_BLOCK_T block(batch, p);
    const vec rho = 0.5 * block.read(0);
    if (!any(rho > 0.5 * NEGLIGIBLE_DENSITY)) continue;
    const vec sigma = K > 1 ? 0.25 * block.read(1) : vec{}, tau = K > 2 ? 0.5 * block.read(2) : vec{};
    EXCHANGE_SPIN_T<COMPONENT, ORDER>(rho, sigma, tau, 0.5, 0.25, 2.0 * weight).add_to(block, where);
  }
}

template <class COMPONENT, int ORDER>
void exchange_open(const XC_BATCH_T& batch, double weight) {
  constexpr int K = COMPONENT::INGREDIENTS;
  constexpr int where[2][3] = {{0, 2, 5}, {1, 4, 6}};
  for (int p = 0; p < batch.n; p += LANES) {
    const LANE_BLOCK_T block(batch, p);
    for (const int* w : where) {
      const vec rho = block.read(w[0]);
      if (!any(rho > 0.5 * NEGLIGIBLE_DENSITY)) continue;
      const vec sigma = K > 1 ? block.read(w[1]) : vec{}, tau = K > 2 ? block.read(w[2]) : vec{};
      EXCHANGE_SPIN_T<COMPONENT, ORDER>(rho, sigma, tau, 1.0, 1.0, weight).add_to(block, w);
    }
  }
}

template <class COMPONENT>
XC_KERNELS_T exchange_kernels() {
  return {{exchange_closed<COMPONENT, 1>, exchange_closed<COMPONENT, 2>},
          {exchange_open<COMPONENT, 1>, exchange_open<COMPONENT, 2>}};
}

}  // namespace zentrix::kernels::ZX_ISA

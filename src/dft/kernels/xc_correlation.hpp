#pragma once

#include "dft/kernels/xc_points.hpp"

// Driver of correlation components. A component is a record with
//   static constexpr int INGREDIENTS        1 density, 2 with gradient, 3 with kinetic-energy density
//   static constexpr bool SPIN_GRADIENTS    true where sigma_aa, sigma_ab, sigma_bb are needed apart; without it, the
//   gradient
//                                           of the total is passed
//   static auto energy(point)               energy per volume, of a CLOSED_POINT_T or OPEN_POINT_T
// The independent directions are the natural ones of correlation, total density and polarisation, so that what depends on
// the density alone carries one derivative; derivatives with respect to the spin densities are formed once, at the end.

namespace zentrix::kernels::ZX_ISA {

enum DIRECTION : int { RHO = 0, ZETA = 1, SIGMA = 2, TAU = 3, SIGMA_AB = 3, SIGMA_BB = 4 };

/// Closed shell: what depends on the polarisation is a number, and the compiler drops it.
template <int ORDER>
struct CLOSED_POINT_T {
  static constexpr bool CLOSED = true;
  static constexpr double up = 1.0, down = 1.0;
  JET_T<1U << RHO, ORDER> rho;
  JET_T<1U << SIGMA, ORDER> sigma;
  JET_T<1U << TAU, ORDER> tau;

  ZX_INLINE auto sigma_aa() const { return 0.25 * sigma; }
  ZX_INLINE auto sigma_ab() const { return 0.25 * sigma; }
  ZX_INLINE auto sigma_bb() const { return 0.25 * sigma; }
};

template <int ORDER>
struct OPEN_POINT_T {
  static constexpr bool CLOSED = false;
  using ZETA_JET = JET_T<1U << ZETA, ORDER>;
  JET_T<1U << RHO, ORDER> rho;
  ZETA_JET zeta;                ///< (rho_a - rho_b) / rho
  ZETA_JET up, down;            ///< 1 + zeta, 1 - zeta
  ZETA_JET cbrt_up, cbrt_down;  ///< constant zero where the spin is missing
  JET_T<1U << SIGMA, ORDER> sigma;
  JET_T<1U << TAU, ORDER> tau;
  JET_T<1U << SIGMA, ORDER> s_aa;
  JET_T<1U << SIGMA_AB, ORDER> s_ab;
  JET_T<1U << SIGMA_BB, ORDER> s_bb;

  ZX_INLINE auto sigma_aa() const { return s_aa; }
  ZX_INLINE auto sigma_ab() const { return s_ab; }
  ZX_INLINE auto sigma_bb() const { return s_bb; }
};

/// Cube root of 1 +- zeta; a missing spin gives zero with zero derivatives, which is the limit of all powers above one, and
/// leaves out the divergent derivative of the 2/3 power.
template <int ORDER>
ZX_INLINE auto cbrt_of_share(const JET_T<1U << ZETA, ORDER>& share) {
  const mask there = share.value > NEGLIGIBLE_FRACTION;
  auto safe = share;
  safe.value = select(there, share.value, broadcast(1.0));
  return select(there, cbrt(safe), variable<ZETA, ORDER>(vec{}, 0.0));
}

/// Half the sum of the spins' (1 +- zeta)^(n/3) for n = 2, 4, 5, 8.
template <int N, class POINT>
ZX_INLINE auto spin_average(const POINT& q) {
  if constexpr (POINT::CLOSED) {
    return 1.0;
  } else if constexpr (N == 2) {
    return 0.5 * (square(q.cbrt_up) + square(q.cbrt_down));
  } else if constexpr (N == 4) {
    return 0.5 * (q.cbrt_up * q.up + q.cbrt_down * q.down);
  } else if constexpr (N == 5) {
    return 0.5 * (square(q.cbrt_up) * q.up + square(q.cbrt_down) * q.down);
  } else {
    static_assert(N == 8);
    return 0.5 * (square(q.cbrt_up * q.up) + square(q.cbrt_down * q.down));
  }
}

/// f(zeta) of von Barth and Hedin, J. Phys. C 5 (1972) 1629: 0 unpolarised, 1 fully polarised. Open shells only.
template <class POINT>
ZX_INLINE auto polarisation_function(const POINT& q) {
  return (spin_average<4>(q) - 1.0) * (1.0 / 0.25992104989487316477);  // 2^(1/3) - 1
}

/// 1 - zeta^4, accurate towards full polarisation.
template <class POINT>
ZX_INLINE auto one_minus_zeta4(const POINT& q) {
  return q.up * q.down * (1.0 + square(q.zeta));
}

/// Seitz radius, (3 / (4 pi rho))^(1/3).
template <class JET>
ZX_INLINE auto seitz_radius(const JET& rho) {
  return 0.62035049089940001667 * inverse_cbrt(rho);
}

template <class COMPONENT, int ORDER>
void correlation_closed(const XC_BATCH_T& batch, double weight) {
  constexpr int K = COMPONENT::INGREDIENTS;
  constexpr int where[3] = {RHO, SIGMA, TAU};
  for (int p = 0; p < batch.n; p += LANES) {
    const LANE_BLOCK_T block(batch, p);
    vec rho = block.read(0);
    const mask alive = rho > NEGLIGIBLE_DENSITY;
    if (!any(alive)) continue;
    rho = select(alive, min(rho, broadcast(LARGEST_DENSITY)), broadcast(1.0));
    const vec sigma = K > 1 ? bounded_gradient(block.read(1), rho) : vec{};
    const vec tau = K > 2 ? bounded_tau(block.read(2), sigma, rho) : vec{};
    const CLOSED_POINT_T<ORDER> point{variable<RHO, ORDER>(rho), variable<SIGMA, ORDER>(sigma), variable<TAU, ORDER>(tau)};
    const auto energy = COMPONENT::energy(point);
    const vec scale = select(alive, broadcast(weight), vec{});
    block.add_energy(scale * energy.value);
    for_directions<(1U << K) - 1U>([&]<int I>() __attribute__((always_inline)) {
      block.add_first(I, scale * as_vec(slope<where[I]>(energy)));
      if constexpr (ORDER == 2)
        for_directions<(2U << I) - 1U>([&]<int J>() __attribute__((always_inline)) {
          block.add_second(I, J, scale * as_vec(curvature<where[I], where[J]>(energy)));
        });
    });
  }
}

/// The variables of an open shell at LANES points, inside their bounds, and how the directions of the point depend on them.
template <class COMPONENT, int ORDER>
struct OPEN_INPUT_T {
  static constexpr int K = COMPONENT::INGREDIENTS, VARIABLES = K == 1 ? 2 : K == 2 ? 5 : 7;
  static constexpr bool APART = requires { COMPONENT::SPIN_GRADIENTS; };
  mask alive;
  OPEN_POINT_T<ORDER> point;
  vec dz_a, dz_b;              ///< d zeta / d rho_a, d rho_b
  vec ddz_aa, ddz_ab, ddz_bb;  ///< second derivatives

  ZX_INLINE explicit OPEN_INPUT_T(const LANE_BLOCK_T& block) {
    const vec largest = broadcast(0.5 * LARGEST_DENSITY);
    vec a = clamp(block.read(0), vec{}, largest), b = clamp(block.read(1), vec{}, largest);
    alive = a + b > NEGLIGIBLE_DENSITY;
    if (!any(alive)) return;
    a = select(alive, a, broadcast(0.5));
    b = select(alive, b, broadcast(0.5));
    const mask has_a = 2.0 * a > NEGLIGIBLE_FRACTION * (a + b), has_b = 2.0 * b > NEGLIGIBLE_FRACTION * (a + b);
    a = select(has_a, a, vec{});
    b = select(has_b, b, vec{});
    const vec rho = a + b;
    set_densities(a, b, rho);
    if constexpr (K > 1) set_gradients(block, has_a, has_b, rho);
    if constexpr (K > 2) {
      const vec tau = select(has_a, max(block.read(5), vec{}), vec{}) + select(has_b, max(block.read(6), vec{}), vec{});
      point.tau = variable<TAU, ORDER>(bounded_tau(tau, point.sigma.value, rho));
    }
  }

  ZX_INLINE void set_densities(vec a, vec b, vec rho) {
    const vec r = 1.0 / rho, r2 = r * r;
    point.rho = variable<RHO, ORDER>(rho);
    point.zeta = variable<ZETA, ORDER>((a - b) * r);
    point.up = variable<ZETA, ORDER>(2.0 * a * r);
    point.down = variable<ZETA, ORDER>(2.0 * b * r, -1.0);
    point.cbrt_up = cbrt_of_share<ORDER>(point.up);
    point.cbrt_down = cbrt_of_share<ORDER>(point.down);
    dz_a = 2.0 * b * r2;
    dz_b = -2.0 * a * r2;
    ddz_aa = -2.0 * dz_a * r;
    ddz_bb = -2.0 * dz_b * r;
    ddz_ab = 2.0 * (a - b) * r2 * r;
  }

  ZX_INLINE void set_gradients(const LANE_BLOCK_T& block, mask has_a, mask has_b, vec rho) {
    const vec aa = select(has_a, max(block.read(2), vec{}), vec{}), bb = select(has_b, max(block.read(4), vec{}), vec{});
    const vec ab = select(has_a & has_b, block.read(3), vec{});
    if constexpr (APART) {
      const vec highest = bounded_gradient(broadcast(1e300), rho);
      point.s_aa = variable<SIGMA, ORDER>(min(aa, highest));
      point.s_ab = variable<SIGMA_AB, ORDER>(clamp(ab, -highest, highest));
      point.s_bb = variable<SIGMA_BB, ORDER>(min(bb, highest));
    } else {
      point.sigma = variable<SIGMA, ORDER>(bounded_gradient(aa + 2.0 * ab + bb, rho));
    }
  }

  /// Direction that variable V >= 2 moves along, and how far: |grad rho|^2 holds sigma_ab twice.
  template <int V>
  static constexpr int direction = V >= 5  ? TAU
                                   : APART ? V
                                           : SIGMA;
  template <int V>
  static constexpr double rate = V == 3 && !APART ? 2.0 : 1.0;

  template <int V, class JET>
  ZX_INLINE vec first(const JET& e) const {
    if constexpr (V < 2)
      return as_vec(slope<RHO>(e) + slope<ZETA>(e) * (V == 0 ? dz_a : dz_b));
    else
      return rate<V> * as_vec(slope<direction<V>>(e));
  }

  template <int V, int W, class JET>
  ZX_INLINE vec second(const JET& e) const {
    const vec dz_v = V == 0 ? dz_a : dz_b, dz_w = W == 0 ? dz_a : dz_b;
    if constexpr (V < 2) {
      const vec ddz = V != W ? ddz_ab : V == 0 ? ddz_aa : ddz_bb;
      return as_vec(curvature<RHO, RHO>(e) + curvature<RHO, ZETA>(e) * (dz_v + dz_w) +
                    curvature<ZETA, ZETA>(e) * (dz_v * dz_w) + slope<ZETA>(e) * ddz);
    } else if constexpr (W < 2) {
      return rate<V> * as_vec(curvature<direction<V>, RHO>(e) + curvature<direction<V>, ZETA>(e) * dz_w);
    } else {
      return (rate<V> * rate<W>)*as_vec(curvature<direction<V>, direction<W>>(e));
    }
  }
};

template <class COMPONENT, int ORDER>
void correlation_open(const XC_BATCH_T& batch, double weight) {
  using INPUT = OPEN_INPUT_T<COMPONENT, ORDER>;
  for (int p = 0; p < batch.n; p += LANES) {
    const LANE_BLOCK_T block(batch, p);
    const INPUT input(block);
    if (!any(input.alive)) continue;
    const auto energy = COMPONENT::energy(input.point);
    const vec scale = select(input.alive, broadcast(weight), vec{});
    block.add_energy(scale * energy.value);
    for_directions<(1U << INPUT::VARIABLES) - 1U>([&]<int V>() __attribute__((always_inline)) {
      block.add_first(V, scale * input.template first<V>(energy));
      if constexpr (ORDER == 2)
        for_directions<(2U << V) - 1U>([&]<int W>() __attribute__((always_inline)) {
          block.add_second(V, W, scale * input.template second<V, W>(energy));
        });
    });
  }
}

template <class COMPONENT>
XC_KERNELS_T correlation_kernels() {
  return {{correlation_closed<COMPONENT, 1>, correlation_closed<COMPONENT, 2>},
          {correlation_open<COMPONENT, 1>, correlation_open<COMPONENT, 2>}};
}

}  // namespace zentrix::kernels::ZX_ISA

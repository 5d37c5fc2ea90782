#include "dispersion/kernels/d3_kernels.hpp"

#include "simd/simd_math.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

constexpr double steepness = 16.0;            // of the counting function
constexpr double saturation = 50.0;           // |x| beyond which it is 0 or 1
constexpr double width = 4.0;                 // of the reference weights, in coordination numbers squared
constexpr double smallest_norm = 1e-99;       // of the weights of a pair, and of a stored reference C6
constexpr double smallest_c6 = 1e-12;         // hartree bohr^6
constexpr double smallest_square = 1e-12;     // bohr^2, of a pair that has an energy
constexpr double smallest_neighbour = 1e-16;  // bohr^2, of a pair that counts in coordination numbers

struct DISTANCE_T {
  vec dx, dy, dz, square;
  ZX_INLINE DISTANCE_T(const D3_SYSTEM_T& s, std::size_t a, std::size_t b)
      : dx(s.x[a] - load(s.x + b)), dy(s.y[a] - load(s.y + b)), dz(s.z[a] - load(s.z + b)) {
    square = dx * dx + dy * dy + dz * dz;
  }
};

/// Counting function f = 1/(1 + exp(x)), x = -16 (r0/r - 1), for neighbours that count; 0 for the others.
ZX_INLINE vec count(const D3_SYSTEM_T& s, std::size_t b, vec square, vec inverse, double r0) {
  const vec x = steepness * (1.0 - r0 * inverse);
  const vec inside = min(max(x, broadcast(-saturation)), broadcast(saturation));
  vec f = 1.0 / (1.0 + exp(inside));
  f = select(x > saturation, vec{}, f);
  f = select(x < -saturation, broadcast(1.0), f);
  return select(square < smallest_neighbour, vec{}, f) * load(s.presence + b);
}

ZX_INLINE vec inverse_distance(vec square) { return rsqrt(max(square, broadcast(smallest_neighbour))); }

void coordination(const D3_SYSTEM_T& s, std::size_t a) {
  const double radius = s.groups[s.group_of[a]].radius;
  vec sum = {};
  for (int g = 0; radius > 0.0 && g < s.n_groups; ++g) {
    const D3_GROUP_T& group = s.groups[g];
    if (group.radius <= 0.0) continue;
    for (std::size_t b = group.first; b < group.end; b += LANES) {
      const DISTANCE_T d(s, a, b);
      sum += count(s, b, d.square, inverse_distance(d.square), radius + group.radius);
    }
  }
  s.coordination[a] = ZX_ISA::sum(sum);
}

void weights(const D3_SYSTEM_T& s, int g) {
  const D3_GROUP_T& group = s.groups[g];
  for (int j = 0; j < group.n_references; ++j) {
    double* out = s.weight + static_cast<std::size_t>(j) * s.n;
    for (std::size_t b = group.first; b < group.end; b += LANES) {
      const vec d = load(s.coordination + b) - group.reference_cn[j];
      store(out + b, exp(-width * d * d) * load(s.presence + b));
    }
  }
}

/// The references of atom a folded into the coefficients of those of a group: with W = sum_ij w_i w_j over the stored pairs
/// and L = sum_ij w_i w_j C6_ij, L = sum_j l[j] w_j and W = sum_j w[j] w_j; dl and dw are the derivatives with respect to
/// the coordination number of a.
struct FOLDED_T {
  double l[D3_SLOTS] = {}, w[D3_SLOTS] = {}, dl[D3_SLOTS] = {}, dw[D3_SLOTS] = {};

  FOLDED_T(const D3_SYSTEM_T& s, std::size_t a, int g) {
    const int own = s.group_of[a];
    const double* c6 = s.c6 + (static_cast<std::size_t>(own) * s.n_groups + g) * D3_SLOTS * D3_SLOTS;
    for (int i = 0; i < s.groups[own].n_references; ++i) {
      const double weight = s.weight[static_cast<std::size_t>(i) * s.n + a];
      const double slope = -2.0 * width * (s.coordination[a] - s.groups[own].reference_cn[i]) * weight;
      for (int j = 0; j < s.groups[g].n_references; ++j) {
        const double reference = c6[i * D3_SLOTS + j];
        if (!(reference > smallest_norm)) continue;
        l[j] += weight * reference;
        w[j] += weight;
        dl[j] += slope * reference;
        dw[j] += slope;
      }
    }
  }
};

struct SUMS_T {
  vec energy = {}, by_cn = {}, gx = {}, gy = {}, gz = {};
};

/// Pairs of atom a with one group: E = -C6 (s6/(r^6 + R0^6) + s8 C8/C6/(r^8 + R0^8)).
void pairs_with_group(const D3_SYSTEM_T& s, std::size_t a, int g, SUMS_T& sums) {
  const D3_GROUP_T& group = s.groups[g];
  const FOLDED_T folded(s, a, g);
  const double c8_by_c6 = 3.0 * s.groups[s.group_of[a]].q * group.q;
  const double r0 = s.a1 * __builtin_sqrt(c8_by_c6) + s.a2;
  const double r0_2 = r0 * r0, r0_6 = r0_2 * r0_2 * r0_2, r0_8 = r0_6 * r0_2;
  const double s8 = s.s8 * c8_by_c6;
  for (std::size_t b = group.first; b < group.end; b += LANES) {
    const DISTANCE_T d(s, a, b);
    vec l = {}, w = {}, dl = {}, dw = {};
    for (int j = 0; j < group.n_references; ++j) {
      const vec weight = load(s.weight + static_cast<std::size_t>(j) * s.n + b);
      l += folded.l[j] * weight;
      w += folded.w[j] * weight;
      dl += folded.dl[j] * weight;
      dw += folded.dw[j] * weight;
    }
    const mask weighted = w >= smallest_norm;
    const vec norm = 1.0 / select(weighted, w, broadcast(1.0));
    vec c6 = select(weighted, l * norm, vec{});
    const mask counts = (c6 > smallest_c6) & (d.square >= smallest_square);
    c6 = select(counts, c6, vec{});
    const vec c6_by_cn = select(counts, (dl - c6 * dw) * norm, vec{});
    const vec r2 = d.square, r4 = r2 * r2, r6 = r4 * r2;
    const vec t6 = 1.0 / (r6 + r0_6), t8 = 1.0 / (r4 * r4 + r0_8);
    const vec damped = s.s6 * t6 + s8 * t8;
    const vec slope = c6 * (6.0 * s.s6 * r4 * t6 * t6 + 8.0 * s8 * r6 * t8 * t8);  // dE/dr / r
    sums.energy -= c6 * damped;
    sums.by_cn -= c6_by_cn * damped;
    sums.gx += slope * d.dx;
    sums.gy += slope * d.dy;
    sums.gz += slope * d.dz;
  }
}

constexpr double smallest_q = 1e-12;

bool disperses(const D3_GROUP_T& group) { return group.n_references > 0 && group.q > smallest_q; }

void pairs(const D3_SYSTEM_T& s, std::size_t a) {
  SUMS_T sums;
  for (int g = 0; disperses(s.groups[s.group_of[a]]) && g < s.n_groups; ++g) {
    if (disperses(s.groups[g])) pairs_with_group(s, a, g, sums);
  }
  s.energy[a] = 0.5 * sum(sums.energy);
  s.energy_by_cn[a] = sum(sums.by_cn);
  s.gradient[0][a] = sum(sums.gx);
  s.gradient[1][a] = sum(sums.gy);
  s.gradient[2][a] = sum(sums.gz);
}

void coordination_gradient(const D3_SYSTEM_T& s, std::size_t a) {
  const double radius = s.groups[s.group_of[a]].radius;
  vec gx = {}, gy = {}, gz = {};
  for (int g = 0; radius > 0.0 && g < s.n_groups; ++g) {
    const D3_GROUP_T& group = s.groups[g];
    if (group.radius <= 0.0) continue;
    const double r0 = radius + group.radius;
    for (std::size_t b = group.first; b < group.end; b += LANES) {
      const DISTANCE_T d(s, a, b);
      const vec inverse = inverse_distance(d.square);
      const vec f = count(s, b, d.square, inverse, r0);
      const vec by_r = -steepness * r0 * f * (1.0 - f) * inverse * inverse;
      const vec factor = (s.energy_by_cn[a] + load(s.energy_by_cn + b)) * by_r * inverse;
      gx += factor * d.dx;
      gy += factor * d.dy;
      gz += factor * d.dz;
    }
  }
  s.gradient[0][a] += sum(gx);
  s.gradient[1][a] += sum(gy);
  s.gradient[2][a] += sum(gz);
}

}  // namespace

D3_KERNELS_T d3_kernels() { return {coordination, weights, pairs, coordination_gradient}; }

}  // namespace zentrix::kernels::ZX_ISA

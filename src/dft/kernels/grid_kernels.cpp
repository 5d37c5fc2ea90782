#include "dft/kernels/grid_kernels.hpp"

#include "simd/simd_math.hpp"

namespace zentrix::kernels::ZX_ISA {
namespace {

constexpr int n_cartesian(int l) { return (l + 1) * (l + 2) / 2; }
constexpr int n_components(int order) { return order == 0 ? 1 : order == 1 ? 4 : 10; }

/// Radial part and its first two derivatives with respect to r^2, doubled each time: sum c (-2a)^k exp(-a r^2).
template <int ORDER>
ZX_INLINE void radial_part(const GRID_SHELL_T& shell, vec r2, vec (&radial)[ORDER + 1]) {
  for (int k = 0; k <= ORDER; ++k) radial[k] = vec{};
  for (int i = 0; i < shell.nprim; ++i) {
    const vec e = shell.coeff[i] * exp(-shell.alpha[i] * r2);
    radial[0] += e;
    if constexpr (ORDER >= 1) radial[1] += -2.0 * shell.alpha[i] * e;
    if constexpr (ORDER >= 2) radial[2] += 4.0 * shell.alpha[i] * shell.alpha[i] * e;
  }
}

/// x^i and its derivatives along one axis, i <= L.
template <int L>
struct AXIS_T {
  vec power[L + 1], first[L + 1], second[L + 1];
  ZX_INLINE explicit AXIS_T(vec x) {
    power[0] = broadcast(1.0);
    for (int i = 1; i <= L; ++i) power[i] = power[i - 1] * x;
    for (int i = 0; i <= L; ++i) {
      first[i] = i > 0 ? i * power[i > 0 ? i - 1 : 0] : vec{};
      second[i] = i > 1 ? i * (i - 1) * power[i > 1 ? i - 2 : 0] : vec{};
    }
  }
};

/// Bare components x^i y^j z^k times the radial part, with derivatives by the product rule:
/// d/dx (A R) = A_x R0 + A x R1, d2/dxdy = A_xy R0 + (A_x y + A_y x) R1 + A x y R2, d2/dx2 = A_xx R0 + (2 A_x x + A) R1 + A
/// x^2 R2.
template <int L, int ORDER>
ZX_INLINE void bare_components(vec x, vec y, vec z, const vec (&r)[ORDER + 1],
                               vec (&out)[n_cartesian(L)][n_components(ORDER)]) {
  const AXIS_T<L> ax(x), ay(y), az(z);
  int c = 0;
  for (int rest = 0; rest <= L; ++rest) {
    for (int k = 0; k <= rest; ++k, ++c) {
      const int i = L - rest, j = rest - k;
      const vec a = ax.power[i] * ay.power[j] * az.power[k];
      out[c][0] = a * r[0];
      if constexpr (ORDER >= 1) {
        const vec a_x = ax.first[i] * ay.power[j] * az.power[k];
        const vec a_y = ax.power[i] * ay.first[j] * az.power[k];
        const vec a_z = ax.power[i] * ay.power[j] * az.first[k];
        out[c][1] = a_x * r[0] + a * x * r[1];
        out[c][2] = a_y * r[0] + a * y * r[1];
        out[c][3] = a_z * r[0] + a * z * r[1];
        if constexpr (ORDER >= 2) {
          const vec a_xx = ax.second[i] * ay.power[j] * az.power[k], a_xy = ax.first[i] * ay.first[j] * az.power[k];
          const vec a_xz = ax.first[i] * ay.power[j] * az.first[k], a_yy = ax.power[i] * ay.second[j] * az.power[k];
          const vec a_yz = ax.power[i] * ay.first[j] * az.first[k], a_zz = ax.power[i] * ay.power[j] * az.second[k];
          out[c][4] = a_xx * r[0] + (2.0 * a_x * x + a) * r[1] + a * x * x * r[2];
          out[c][5] = a_xy * r[0] + (a_x * y + a_y * x) * r[1] + a * x * y * r[2];
          out[c][6] = a_xz * r[0] + (a_x * z + a_z * x) * r[1] + a * x * z * r[2];
          out[c][7] = a_yy * r[0] + (2.0 * a_y * y + a) * r[1] + a * y * y * r[2];
          out[c][8] = a_yz * r[0] + (a_y * z + a_z * y) * r[1] + a * y * z * r[2];
          out[c][9] = a_zz * r[0] + (2.0 * a_z * z + a) * r[1] + a * z * z * r[2];
        }
      }
    }
  }
}

template <int L, int ORDER>
void shell_values(const GRID_SHELL_T& shell, std::size_t n, const double* x, const double* y, const double* z, double* out,
                  std::size_t component_stride) {
  for (std::size_t p = 0; p < n; p += LANES) {
    const vec dx = load(x + p) - shell.centre[0], dy = load(y + p) - shell.centre[1], dz = load(z + p) - shell.centre[2];
    vec radial[ORDER + 1];
    radial_part<ORDER>(shell, dx * dx + dy * dy + dz * dz, radial);
    vec bare[n_cartesian(L)][n_components(ORDER)];
    bare_components<L, ORDER>(dx, dy, dz, radial, bare);
    for (int f = 0; f < shell.nfunc; ++f) {
      vec sum[n_components(ORDER)] = {};
      for (int c = 0; c < n_cartesian(L); ++c) {
        const double t = shell.transform[f * n_cartesian(L) + c];
        if (t == 0.0) continue;
        for (int q = 0; q < n_components(ORDER); ++q) sum[q] += t * bare[c][q];
      }
      for (int q = 0; q < n_components(ORDER); ++q)
        store(out + static_cast<std::size_t>(q) * component_stride + static_cast<std::size_t>(f) * n + p, sum[q]);
    }
  }
}

template <int L>
void shell_values_of_order(const GRID_SHELL_T& shell, int order, std::size_t n, const double* x, const double* y,
                           const double* z, double* out, std::size_t component_stride) {
  switch (order) {
    case 0:
      return shell_values<L, 0>(shell, n, x, y, z, out, component_stride);
    case 1:
      return shell_values<L, 1>(shell, n, x, y, z, out, component_stride);
    default:
      return shell_values<L, 2>(shell, n, x, y, z, out, component_stride);
  }
}

void basis_values(const GRID_SHELL_T& shell, int order, std::size_t n, const double* x, const double* y, const double* z,
                  double* out, std::size_t component_stride) {
  switch (shell.l) {
    case 0:
      return shell_values_of_order<0>(shell, order, n, x, y, z, out, component_stride);
    case 1:
      return shell_values_of_order<1>(shell, order, n, x, y, z, out, component_stride);
    case 2:
      return shell_values_of_order<2>(shell, order, n, x, y, z, out, component_stride);
    case 3:
      return shell_values_of_order<3>(shell, order, n, x, y, z, out, component_stride);
    default:
      return shell_values_of_order<4>(shell, order, n, x, y, z, out, component_stride);
  }
}

/// BLOCKS vectors of points at a time keep their sums in registers while the functions pass by.
template <int ROWS, int BLOCKS>
ZX_INLINE void sums_of_block(std::size_t functions, std::size_t n, std::size_t p, const double* a, std::size_t a_stride,
                             const double* b, double* const* sums) {
  vec sum[ROWS][BLOCKS] = {};
  for (std::size_t f = 0; f < functions; ++f) {
    const std::size_t at = f * n + p;
    for (int k = 0; k < BLOCKS; ++k) {
      const vec factor = load(b + at + k * LANES);
      for (int q = 0; q < ROWS; ++q) sum[q][k] += factor * load(a + q * a_stride + at + k * LANES);
    }
  }
  for (int q = 0; q < ROWS; ++q)
    for (int k = 0; k < BLOCKS; ++k) store(sums[q] + p + k * LANES, sum[q][k]);
}

template <int ROWS>
void sums_of_rows(std::size_t functions, std::size_t n, const double* a, std::size_t a_stride, const double* b,
                  double* const* sums) {
  constexpr int blocks = 4;
  std::size_t p = 0;
  for (; p + blocks * LANES <= n; p += blocks * LANES) sums_of_block<ROWS, blocks>(functions, n, p, a, a_stride, b, sums);
  for (; p < n; p += LANES) sums_of_block<ROWS, 1>(functions, n, p, a, a_stride, b, sums);
}

void point_sums(int rows, std::size_t functions, std::size_t n, const double* a, std::size_t a_stride, const double* b,
                double* const* sums) {
  rows == 1 ? sums_of_rows<1>(functions, n, a, a_stride, b, sums) : sums_of_rows<4>(functions, n, a, a_stride, b, sums);
}

template <int ROWS>
void scale_rows(std::size_t functions, std::size_t n, const double* const* c, const double* a, std::size_t a_stride,
                double* out) {
  for (std::size_t f = 0; f < functions; ++f) {
    for (std::size_t p = 0; p < n; p += LANES) {
      vec sum = load(c[0] + p) * load(a + f * n + p);
      for (int q = 1; q < ROWS; ++q) sum += load(c[q] + p) * load(a + q * a_stride + f * n + p);
      store(out + f * n + p, sum);
    }
  }
}

void point_scale(int rows, std::size_t functions, std::size_t n, const double* const* c, const double* a,
                 std::size_t a_stride, double* out) {
  rows == 1 ? scale_rows<1>(functions, n, c, a, a_stride, out) : scale_rows<4>(functions, n, c, a, a_stride, out);
}

/// Position of the derivative kl among the ten arrays.
constexpr int second_derivative[3][3] = {{4, 5, 6}, {5, 7, 8}, {6, 8, 9}};

void centre_sums(const CENTRE_TERMS_T& t, std::size_t functions, std::size_t n, double* per_function,
                 double* const* per_point) {
  for (std::size_t f = 0; f < functions; ++f) {
    vec total[3] = {};
    for (std::size_t p = 0; p < n; p += LANES) {
      const std::size_t at = f * n + p;
      vec u[3] = {};
      if (t.x != nullptr)
        for (int l = 0; l < 3; ++l) u[l] = load(t.g[l] + p) * load(t.x + at);
      if (t.half_v_tau != nullptr)
        for (int l = 0; l < 3; ++l) u[l] += load(t.half_v_tau + p) * load(t.y[l] + at);
      const vec m = load(t.m + at);
      for (int k = 0; k < 3; ++k) {
        vec h = load(t.values + (k + 1) * t.stride + at) * m;
        if (t.x != nullptr)
          for (int l = 0; l < 3; ++l) h += load(t.values + second_derivative[k][l] * t.stride + at) * u[l];
        total[k] += h;
        store(per_point[k] + p, load(per_point[k] + p) + h);
      }
    }
    for (int k = 0; k < 3; ++k) per_function[3 * f + k] = sum(total[k]);
  }
}

}  // namespace

GRID_KERNELS_T grid_kernels() { return {basis_values, point_sums, point_scale, centre_sums}; }

}  // namespace zentrix::kernels::ZX_ISA

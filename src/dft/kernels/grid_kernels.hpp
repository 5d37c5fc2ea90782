#pragma once

#include <cstddef>

#include "simd/isa.hpp"

// The loops over grid points of one batch. A batch has n points, a multiple of MAX_LANES (padded by the caller); an array
// over functions and points is stored function by function, so that function f at point p stands at [f * n + p].

namespace zentrix::kernels {

/// One contracted shell as the kernel reads it.
struct GRID_SHELL_T {
  int l = 0;  ///< 0 to 4
  int nprim = 0;
  double centre[3] = {};              ///< bohr
  const double* alpha = nullptr;      ///< nprim exponents
  const double* coeff = nullptr;      ///< nprim coefficients of the bare component x^l
  const double* transform = nullptr;  ///< nfunc x n_cartesian(l), rows are functions in bare components
  int nfunc = 0;
};

/// Values of the shell's functions and, for order 1, their x, y, z derivatives, for order 2 also xx, xy, xz, yy, yz, zz.
/// Derivative q goes to out + q * component_stride.
using BASIS_VALUES = void (*)(const GRID_SHELL_T& shell, int order, std::size_t n, const double* x, const double* y,
                              const double* z, double* out, std::size_t component_stride);

/// sums[q][p] = sum_f a[q * a_stride + f * n + p] b[f * n + p] for q < rows (1 or 4).
using POINT_SUMS = void (*)(int rows, std::size_t functions, std::size_t n, const double* a, std::size_t a_stride,
                            const double* b, double* const* sums);

/// out[f * n + p] = sum_q c[q][p] a[q * a_stride + f * n + p] for q < rows (1 or 4).
using POINT_SCALE = void (*)(int rows, std::size_t functions, std::size_t n, const double* const* c, const double* a,
                             std::size_t a_stride, double* out);

/// What the derivative with respect to the centre of a function is made of: h_k = d_k phi m + sum_l d_kl phi (g_l x +
/// half_v_tau y_l). Without `x` there is the first term only, without `half_v_tau` no term in y.
struct CENTRE_TERMS_T {
  const double* values = nullptr;  ///< ten arrays of the basis functions (four without `x`), `stride` apart
  std::size_t stride = 0;
  const double* m = nullptr;
  const double* x = nullptr;
  const double* g[3] = {};  ///< per point
  const double* half_v_tau = nullptr;
  const double* y[3] = {};
};

/// per_function[3 f + k] = sum_p h_k of function f; per_point[k][p] += sum_f h_k.
using CENTRE_SUMS = void (*)(const CENTRE_TERMS_T& terms, std::size_t functions, std::size_t n, double* per_function,
                             double* const* per_point);

struct GRID_KERNELS_T {
  BASIS_VALUES basis_values;
  POINT_SUMS point_sums;
  POINT_SCALE point_scale;
  CENTRE_SUMS centre_sums;
};

}  // namespace zentrix::kernels

ZX_DECLARE_FOR_EACH_ISA(GRID_KERNELS_T grid_kernels())

#include <algorithm>
#include <cmath>

#include "dft/xc_evaluator.hpp"

namespace zentrix::DFT {
namespace {

constexpr int BLOCK = 64, MOST_VARIABLES = 7;
constexpr double STEP = 5e-7, MARGIN = 5e-6;  // relative; all displacements of 2 STEP together fit into MARGIN
constexpr double SMALL_GRADIENT = 1e-2;       // of |grad rho|^2 / rho^(8/3): little varies on a smaller scale

/// Arrays of a block, one after another: variable v of point p at [v * BLOCK + p].
using ARRAYS = double[MOST_VARIABLES * BLOCK];

/// Moves the gradient and tau of one spin inside their bounds; sets the sizes of their displacements.
void centre_spin(double rho, double* sigma, double* sigma_step, double* tau, double* tau_step) {
  if (sigma == nullptr) return;
  const double natural = std::pow(rho, 8.0 / 3.0);
  *sigma = std::clamp(*sigma, 0.0, kernels::LARGEST_REDUCED_GRADIENT * natural);
  *sigma_step = STEP * std::max(*sigma, SMALL_GRADIENT * natural);
  *sigma = std::max(*sigma, 4.0 * *sigma_step);
  if (tau == nullptr) return;
  *tau = std::max(*tau, rho > 0.0 ? (1.0 + MARGIN) * 0.125 * *sigma / rho : 0.0);
  *tau_step = STEP * *tau;
}

/// One point (v at x[v * BLOCK]) moved so far inside its bounds that every displacement stays inside, and the displacements.
void centre_point(int channels, int variables, double* x, double* step) {
  const bool gradient = variables > channels, tau = variables == (channels == 1 ? 3 : 7);
  for (int s = 0; s < channels; ++s) {
    double& rho = x[s * BLOCK];
    rho = std::clamp(rho, 0.0, kernels::LARGEST_DENSITY);
    step[s * BLOCK] = STEP * rho;
    const int at_sigma = (channels == 1 ? 1 : 2 + 2 * s) * BLOCK, at_tau = (channels == 1 ? 2 : 5 + s) * BLOCK;
    centre_spin(rho, gradient ? x + at_sigma : nullptr, step + at_sigma, tau ? x + at_tau : nullptr, step + at_tau);
  }
  if (channels == 1 || !gradient) return;
  // sigma_ab moves so little that |grad rho|^2 of the total stays positive.
  const double mean = 0.5 * (x[2 * BLOCK] + x[4 * BLOCK]), rho = x[0] + x[BLOCK];
  const bool both = x[0] > 0.0 && x[BLOCK] > 0.0;
  step[3 * BLOCK] = both ? STEP * std::max(mean, SMALL_GRADIENT * std::pow(rho, 8.0 / 3.0)) : 0.0;
  x[3 * BLOCK] = std::clamp(x[3 * BLOCK], -mean, mean);
  x[3 * BLOCK] = std::max(x[3 * BLOCK], 5.0 * step[3 * BLOCK] - mean);
}

bool is_gradient(int channels, int v) { return channels == 1 ? v == 1 : v >= 2 && v <= 4; }

}  // namespace

void XC_EVALUATOR_T::evaluate_second_numerically(int n, int stride, const double* values, double* energy, double* first,
                                                 double* second) const {
  evaluate(n, stride, values, energy, first);
  constexpr double displacement[4] = {1.0, -1.0, 2.0, -2.0}, factor[4] = {8.0 / 12.0, -8.0 / 12.0, -1.0 / 12.0, 1.0 / 12.0};
  for (int begin = 0; begin < n; begin += BLOCK) {
    const int count = std::min(BLOCK, n - begin);
    ARRAYS centre, step, displaced, slopes, column[MOST_VARIABLES];
    double unused[BLOCK];
    for (int v = 0; v < variables_; ++v)
      std::copy_n(values + static_cast<long>(v) * stride + begin, count, centre + v * BLOCK);
    for (int p = 0; p < count; ++p) centre_point(channels_, variables_, centre + p, step + p);
    for (int v = 0; v < variables_; ++v) {
      std::fill_n(column[v], variables_ * BLOCK, 0.0);
      std::copy_n(centre, variables_ * BLOCK, displaced);
      for (int k = 0; k < 4; ++k) {
        for (int p = v * BLOCK; p < v * BLOCK + count; ++p) displaced[p] = centre[p] + displacement[k] * step[p];
        evaluate(count, BLOCK, displaced, unused, slopes);
        for (int w = 0; w < variables_; ++w)
          for (int p = 0; p < count; ++p) {
            const double h = step[v * BLOCK + p];
            if (h > 0.0) column[v][w * BLOCK + p] += factor[k] * slopes[w * BLOCK + p] / h;
          }
      }
    }
    for (int v = 0; v < variables_; ++v)
      for (int w = 0; w <= v; ++w) {
        double* out = second + static_cast<long>(v * (v + 1) / 2 + w) * stride + begin;
        // Displacements of a small gradient lose digits; next to another kind of variable that one is displaced.
        const double share = is_gradient(channels_, v) == is_gradient(channels_, w) ? 0.5
                             : is_gradient(channels_, v)                            ? 0.0
                                                                                    : 1.0;
        for (int p = 0; p < count; ++p) {
          const bool both = step[v * BLOCK + p] > 0.0 && step[w * BLOCK + p] > 0.0;
          out[p] = both ? share * column[v][w * BLOCK + p] + (1.0 - share) * column[w][v * BLOCK + p] : 0.0;
        }
      }
  }
}

}  // namespace zentrix::DFT

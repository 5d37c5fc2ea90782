#include "dft/radial_grid.hpp"

#include <algorithm>
#include <cmath>

#include "constants/units.hpp"
#include "dft/atomic_scales.hpp"

namespace zentrix::DFT_GRID {
namespace {

void add_mura_knowles(int n, double scale, RADIAL_GRID_T& grid) {
  for (int i = 0; i < n; ++i) {
    const double x = (i + 0.5) / n;
    const double cube = x * x * x;
    const double r = -scale * std::log1p(-cube);
    const double dr = scale * 3.0 * x * x / (1.0 - cube);
    grid.r.push_back(r);
    grid.weight.push_back(r * r * dr / n);
  }
}

void add_euler_maclaurin(int n, double scale, RADIAL_GRID_T& grid) {
  for (int i = 1; i <= n; ++i) {
    const double x = static_cast<double>(i) / (n + 1);
    const double rest = static_cast<double>(n + 1 - i) / (n + 1);  // 1 - x
    const double r = scale * (x * x) / (rest * rest);
    const double dr = scale * 2.0 * x / (rest * rest * rest);
    grid.r.push_back(r);
    grid.weight.push_back(r * r * dr / (n + 1));
  }
}

void add_treutler_ahlrichs(int n, double scale, double alpha, RADIAL_GRID_T& grid) {
  for (int i = n; i >= 1; --i) {
    const double theta = i * PI / (n + 1);
    // With x = cos(theta): (1 - x)/2 and (1 + x)/2, without cancellation at either end.
    const double lower = std::pow(std::sin(0.5 * theta), 2);
    const double upper = std::pow(std::cos(0.5 * theta), 2);
    const double logarithm = upper < 0.5 ? -std::log1p(-upper) : -std::log(lower);  // ln(2/(1 - x))
    const double front = scale / std::log(2.0) * std::pow(2.0 * upper, alpha);
    const double r = front * logarithm;
    const double dr = front * (alpha * logarithm / (2.0 * upper) + 0.5 / lower);
    grid.r.push_back(r);
    grid.weight.push_back(r * r * dr * PI / (n + 1) * std::sin(theta));  // the rule's weight over its weight function
  }
}

}  // namespace

int radial_point_count(const GRID_LEVEL_T& level, int z) {
  if (level.pruning == PRUNING::five_zones && z <= 2) {
    return std::max(10, static_cast<int>(std::lround(0.52F * static_cast<float>(level.radial_points))));
  }
  if (level.pruning == PRUNING::five_zones_by_row) {
    constexpr int last_of_row[] = {2, 10, 18, 36, 54};
    int points = 39;
    for (int last : last_of_row) points += z > last ? 5 : 0;
    return points;
  }
  return level.radial_points;
}

RADIAL_GRID_T radial_grid(const GRID_LEVEL_T& level, int z) {
  const int n = radial_point_count(level, z);
  RADIAL_GRID_T grid;
  switch (level.radial_scheme) {
    case RADIAL_SCHEME::mura_knowles:
      add_mura_knowles(n, mura_knowles_scale(z), grid);
      break;
    case RADIAL_SCHEME::euler_maclaurin:
      add_euler_maclaurin(n, bragg_slater_radius(z), grid);
      break;
    case RADIAL_SCHEME::treutler_ahlrichs:
      add_treutler_ahlrichs(n, treutler_ahlrichs_scale(z), level.alpha, grid);
      break;
  }
  return grid;
}

}  // namespace zentrix::DFT_GRID

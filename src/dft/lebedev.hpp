#pragma once

#include <vector>

// Quadrature on the unit sphere: V. I. Lebedev, D. N. Laikov, Dokl. Math. 59 (1999) 477.

namespace zentrix::DFT_GRID {

/// Mean over the sphere of f = sum_p weight_p f(x_p, y_p, z_p). The points stand in an order in which neighbours in the list
/// are neighbours on the sphere; every aligned group of eight is compact.
struct ANGULAR_RULE_T {
  int degree = 0;  ///< spherical harmonics up to this degree are integrated exactly
  std::vector<double> x, y, z;
  std::vector<double> weight;  ///< sums to 1; some are negative in the rules of 74, 230 and 266 points

  int size() const { return static_cast<int>(weight.size()); }
};

/// The rule that stands in for a size that does not exist.
inline constexpr int FALLBACK_ANGULAR_POINTS = 302;

/// The rule with so many points, or nullptr when there is none. Sizes: 6, 14, 26, 38, 50, 74, 86, 110, 146, 170, 194, 230,
/// 266, 302, 350, 434, 590, 770.
const ANGULAR_RULE_T* angular_rule(int points);

/// The next smaller size, or the smallest one for itself and for sizes that do not exist.
int next_smaller_angular_size(int points);

}  // namespace zentrix::DFT_GRID

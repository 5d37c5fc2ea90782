#pragma once

#include <span>

// The octahedral quadrature rules on the unit sphere as data: one representative point of every orbit and its weight.

namespace zentrix::DFT_GRID {

/// Orbits of the octahedral group on the unit sphere, named after their representative.
enum class ORBIT : int {
  vertices,  ///< (1, 0, 0), 6 points
  edges,     ///< (1, 1, 0)/sqrt 2, 12 points
  faces,     ///< (1, 1, 1)/sqrt 3, 8 points
  aab,       ///< (a, a, b) with b from the norm, 24 points
  ab0,       ///< (a, b, 0) with b from the norm, 24 points
  abc        ///< (a, b, c) with c from the norm, 48 points
};

struct LEBEDEV_GENERATOR_T {
  ORBIT orbit;
  double a;
  double b;
  double weight;  ///< of each point of the orbit; those of a rule sum to 1 over its points
};

struct LEBEDEV_ROW_T {
  int points;
  int degree;  ///< spherical harmonics up to this degree are integrated exactly
  int first;   ///< its first generator
  int count;   ///< number of generators
};

std::span<const LEBEDEV_GENERATOR_T> lebedev_generators();

/// The 18 rules, by rising number of points.
std::span<const LEBEDEV_ROW_T> lebedev_rows();

}  // namespace zentrix::DFT_GRID

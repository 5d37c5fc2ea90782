#include "geometry/trust_radius.hpp"

#include <algorithm>
#include <cmath>

namespace zentrix::OPTIMIZER {

double energy_ratio(double actual, double predicted) {
  constexpr double no_prediction = 1e-15;
  return std::abs(predicted) < no_prediction ? 1.0 : actual / predicted;
}

double next_trust(double trust, double ratio) {
  if (ratio < 0.0) return std::max(0.25 * trust, TRUST_MIN);
  if (ratio < 0.25) return std::max(0.5 * trust, TRUST_MIN);
  if (ratio > 0.75) return std::min(1.2 * trust, TRUST_MAX);
  return trust;
}

}  // namespace zentrix::OPTIMIZER

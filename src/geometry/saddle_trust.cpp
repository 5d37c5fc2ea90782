#include "geometry/saddle_trust.hpp"

#include <algorithm>

namespace zentrix::OPTIMIZER {

double gradient_miss(const VECTOR& change, const VECTOR& model_change) {
  const double expected = model_change.norm();
  return expected > 0.0 ? (change - model_change).norm() / expected : 0.0;
}

double trust_after_step(double trust, double length, double miss) {
  constexpr double bad = 1.0;
  constexpr double poor = 0.6;
  constexpr double good = 0.35;
  constexpr double growth = 1.5;
  if (miss > bad) return std::max(0.5 * length, SADDLE_TRUST_MIN);
  if (miss > poor) return std::max(0.8 * length, SADDLE_TRUST_MIN);
  if (miss < good) return std::max(trust, std::min(growth * length, SADDLE_TRUST_MAX));
  return trust;
}

}  // namespace zentrix::OPTIMIZER

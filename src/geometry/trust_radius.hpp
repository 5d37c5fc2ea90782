#pragma once

namespace zentrix::OPTIMIZER {

inline constexpr double TRUST_START = 0.15;
inline constexpr double TRUST_MIN = 0.02;
inline constexpr double TRUST_MAX = 0.3;

/// Actual over predicted change of the energy; 1 when the prediction is below 1e-15.
double energy_ratio(double actual, double predicted);

/// The next trust radius: a quarter after a rise, half after a poor step, a fifth more after a very good one (R. Fletcher,
/// Practical Methods of Optimization, 1987).
double next_trust(double trust, double ratio);

}  // namespace zentrix::OPTIMIZER

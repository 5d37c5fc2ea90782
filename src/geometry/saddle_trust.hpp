#pragma once

#include "linalg/matrix.hpp"

// The trust radius of a search for a saddle point, in bohr or radian. On the way to it some directions go up and others
// down, so that the energy change of a step can come out right by chance, or be of rounding size: the model is judged by the
// change of the gradient.

namespace zentrix::OPTIMIZER {

/// The exact starting Hessian earns more trust than a minimiser's model.
inline constexpr double SADDLE_TRUST_START = 0.3;
inline constexpr double SADDLE_TRUST_MIN = 0.05;
inline constexpr double SADDLE_TRUST_MAX = 0.5;

/// By how much of its size the model's change of the gradient missed the true one.
double gradient_miss(const VECTOR& change, const VECTOR& model_change);

/// The radius after a step of this length and miss: a good step may be followed by one of 1.5 times its length, one that
/// missed by the whole change by one of half.
double trust_after_step(double trust, double length, double miss);

}  // namespace zentrix::OPTIMIZER

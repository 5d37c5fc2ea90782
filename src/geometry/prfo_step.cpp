#include "geometry/prfo_step.hpp"

#include <algorithm>
#include <cmath>

namespace zentrix::OPTIMIZER {
namespace {

constexpr double NO_GRADIENT = 1e-14;
constexpr int BISECTIONS = 200;
constexpr double ACCURACY = 1e-13;

/// The shift of the modes to be minimised: the lowest root of mu = alpha sum g^2 / (mu - b), below every b with a gradient.
double minimising_shift(const VECTOR& eigenvalues, const VECTOR& gradient, Eigen::Index followed, double alpha) {
  double upper = 0.0;
  double squares = 0.0;
  for (Eigen::Index k = 0; k < eigenvalues.size(); ++k) {
    if (k == followed || std::abs(gradient(k)) < NO_GRADIENT) continue;
    upper = std::min(upper, eigenvalues(k));
    squares += gradient(k) * gradient(k);
  }
  if (squares == 0.0) return 0.0;
  const auto excess = [&](double mu) {
    double sum = mu;
    for (Eigen::Index k = 0; k < eigenvalues.size(); ++k) {
      if (k != followed && std::abs(gradient(k)) >= NO_GRADIENT)
        sum -= alpha * gradient(k) * gradient(k) / (mu - eigenvalues(k));
    }
    return sum;
  };
  double low = upper - std::sqrt(alpha * squares);
  double high = upper;
  for (int n = 0; n < BISECTIONS && high - low > ACCURACY * (1.0 + std::abs(low)); ++n) {
    const double middle = 0.5 * (low + high);
    (excess(middle) > 0.0 ? high : low) = middle;
  }
  return low;
}

/// Up along a mode with the higher root mu = b/2 + sqrt(b^2/4 + alpha g^2) of its own two-dimensional problem. From a valley
/// or a symmetric structure, where nothing tells the two ways up apart, it goes the way of the eigenvector.
double step_up(double b, double g, double alpha) {
  if (b <= 0.0) return std::abs(g) < NO_GRADIENT ? 0.0 : 2.0 * g / (std::sqrt(b * b + 4.0 * alpha * g * g) - b);
  if (std::abs(g) < NO_GRADIENT) g = NO_GRADIENT;
  return (std::sqrt(b * b + 4.0 * alpha * g * g) + b) / (2.0 * alpha * g);
}

VECTOR step_for_metric(const VECTOR& eigenvalues, const VECTOR& gradient, Eigen::Index followed, double alpha) {
  const double mu = minimising_shift(eigenvalues, gradient, followed, alpha);
  VECTOR step = VECTOR::Zero(gradient.size());
  for (Eigen::Index k = 0; k < gradient.size(); ++k) {
    if (k == followed) {
      step(k) = step_up(eigenvalues(k), gradient(k), alpha);
    } else if (std::abs(gradient(k)) >= NO_GRADIENT) {
      step(k) = -gradient(k) / (eigenvalues(k) - mu);
    }
  }
  return step;
}

}  // namespace

PRFO_STEP_T prfo_step(const VECTOR& eigenvalues, const VECTOR& gradient, Eigen::Index followed, double trust) {
  PRFO_STEP_T result;
  result.step = step_for_metric(eigenvalues, gradient, followed, 1.0);
  if (result.step.norm() <= trust) return result;
  result.limited = true;
  double low = 1.0;
  double high = 2.0;
  while (step_for_metric(eigenvalues, gradient, followed, high).norm() > trust) high *= 2.0;
  for (int n = 0; n < BISECTIONS && high - low > ACCURACY * high; ++n) {
    const double middle = 0.5 * (low + high);
    (step_for_metric(eigenvalues, gradient, followed, middle).norm() > trust ? low : high) = middle;
  }
  result.step = step_for_metric(eigenvalues, gradient, followed, high);
  return result;
}

}  // namespace zentrix::OPTIMIZER

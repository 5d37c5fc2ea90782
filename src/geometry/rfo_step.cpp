#include "geometry/rfo_step.hpp"

#include <Eigen/Cholesky>

#include <cmath>

#include "linalg/lapack.hpp"
#include "report/stop.hpp"

namespace zentrix::OPTIMIZER {
namespace {

void diagonalize(const MATRIX& matrix, VECTOR& values, MATRIX& vectors) {
  if (symmetric_eigen(matrix, values, vectors) != 0)
    throw run_stopped(" *** FATAL: Diagonalization of the model Hessian of the optimizer failed.");
}

/// hessian v = e metric v, v^T metric v = 1.
void diagonalize_scaled(const MATRIX& hessian, const MATRIX& metric, VECTOR& values, MATRIX& vectors) {
  const Eigen::LLT<MATRIX> factor(metric);
  const MATRIX half = factor.matrixL().solve(hessian);
  const MATRIX scaled = factor.matrixL().solve(half.transpose());
  diagonalize(scaled, values, vectors);
  vectors = factor.matrixU().solve(vectors).eval();
}

/// Components of the step along the eigenvectors; where gradient and denominator vanish together, none.
VECTOR shifted_step(const VECTOR& eigenvalues, const VECTOR& forces, double shift) {
  constexpr double no_denominator = 1e-14;
  VECTOR step(forces.size());
  for (Eigen::Index k = 0; k < forces.size(); ++k) {
    const double denominator = eigenvalues(k) - shift;
    step(k) = std::abs(denominator) > no_denominator ? forces(k) / denominator : 0.0;
  }
  return step;
}

/// The shift below `upper` that gives the step the length `trust`; the length falls with the shift.
double shift_for_length(const VECTOR& eigenvalues, const VECTOR& forces, double upper, double trust) {
  constexpr int bisections = 200;
  constexpr double accuracy = 1e-12;
  double width = 1e-3;
  while (shifted_step(eigenvalues, forces, upper - width).norm() > trust) width *= 2.0;
  double low = upper - width;
  double high = upper;
  for (int n = 0; n < bisections && high - low > accuracy * (1.0 + std::abs(low)); ++n) {
    const double middle = 0.5 * (low + high);
    (shifted_step(eigenvalues, forces, middle).norm() > trust ? high : low) = middle;
  }
  return low;
}

}  // namespace

RFO_STEP_T rfo_step(const MATRIX& hessian, const VECTOR& gradient, const MATRIX& metric, double trust) {
  const Eigen::Index n = gradient.size();
  RFO_STEP_T result;
  result.step = VECTOR::Zero(n);
  if (n == 0) return result;
  VECTOR eigenvalues;
  MATRIX vectors;
  diagonalize_scaled(hessian, metric, eigenvalues, vectors);
  const VECTOR forces = -(vectors.transpose() * gradient);

  MATRIX augmented = MATRIX::Zero(n + 1, n + 1);
  augmented.topLeftCorner(n, n) = eigenvalues.asDiagonal();
  augmented.col(n).head(n) = -forces;
  augmented.row(n).head(n) = -forces.transpose();
  VECTOR values;
  MATRIX augmented_vectors;
  diagonalize(augmented, values, augmented_vectors);
  result.shift = values(0);

  VECTOR step = shifted_step(eigenvalues, forces, result.shift);
  if (step.norm() > trust) {
    result.limited = true;
    result.shift = shift_for_length(eigenvalues, forces, result.shift, trust);
    step = shifted_step(eigenvalues, forces, result.shift);
  }
  result.step = vectors * step;
  return result;
}

}  // namespace zentrix::OPTIMIZER

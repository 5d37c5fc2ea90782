#pragma once

#include <cmath>
#include <functional>
#include <utility>

#include "unit/geometry/samples.hpp"

namespace zentrix::TESTS {

using FUNCTION_T = std::function<double(const VECTOR&)>;

/// An energy that is any function of the positions, its gradient from central differences.
class FUNCTION_SURFACE_T : public GRADIENTS::ENERGY_SURFACE_T {
 public:
  FUNCTION_SURFACE_T(const STRUCTURE_T& atoms, const VECTOR& start, FUNCTION_T function)
      : molecule_(GRADIENTS::moved(atoms.molecule, start)), function_(std::move(function)) {}
  const MOLECULE_T& molecule() const override { return molecule_; }
  GRADIENTS::SURFACE_POINT_T energy(const VECTOR& x) override { return {function_(x), {}, true}; }
  GRADIENTS::SURFACE_POINT_T energy_and_gradient(const VECTOR& x) override {
    constexpr double h = 1e-4;
    GRADIENTS::SURFACE_POINT_T point{function_(x), VECTOR(x.size()), ++evaluations != failing_evaluation};
    VECTOR y = x;
    for (Eigen::Index i = 0; i < x.size(); ++i) {
      y(i) = x(i) + h;
      point.gradient(i) = function_(y) / (2.0 * h);
      y(i) = x(i) - h;
      point.gradient(i) -= function_(y) / (2.0 * h);
      y(i) = x(i);
    }
    return point;
  }

  int evaluations = 0;
  int failing_evaluation = 0;

 private:
  MOLECULE_T molecule_;
  FUNCTION_T function_;
};

/// A sum of Morse functions of all distances, deep and stiff for near neighbours, shallow for others, with minima off the
/// distances of the reference structure: anharmonic and strained.
inline FUNCTION_T strained_pairs(const STRUCTURE_T& reference) {
  return [r0 = reference.x](const VECTOR& x) {
    double energy = 0.0;
    for (Eigen::Index i = 0; 3 * i < x.size(); ++i) {
      for (Eigen::Index j = i + 1; 3 * j < x.size(); ++j) {
        const double r = distance(r0, i, j);
        const double strain = 0.01 * std::sin(3.0 * static_cast<double>(i) + 7.0 * static_cast<double>(j));
        const double depth = r < 3.2 ? 0.15 : r < 5.0 ? 0.04 : 0.006;
        const double e = std::exp((r < 3.2 ? 1.1 : 0.7) * (r * (1.0 + strain) - distance(x, i, j)));
        energy += depth * (1.0 - e) * (1.0 - e);
      }
    }
    return energy;
  };
}

}  // namespace zentrix::TESTS

#pragma once

namespace zentrix::TESTS {

/// Derivative at 0 of a function of one displacement, by central differences of four points: the error is of fourth order in
/// the step h.
template <typename FUNCTION>
double derivative(const FUNCTION& f, double h) {
  return (8.0 * (f(h) - f(-h)) - (f(2.0 * h) - f(-2.0 * h))) / (12.0 * h);
}

}  // namespace zentrix::TESTS

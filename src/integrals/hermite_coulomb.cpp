#include "integrals/hermite_coulomb.hpp"

#include <utility>

#include "integrals/boys.hpp"

namespace zentrix::INTEGRALS_2E {
namespace {

/// Raises along one direction: the value with power k from the ones with k - 1 and k - 2 of the next auxiliary order.
inline double raise(double distance, double lower, int k, double lowest) { return distance * lower + (k - 1) * lowest; }

}  // namespace

void HERMITE_COULOMB_T::add(int order, double alpha, double x, double y, double z, double factor, double* target) {
  std::array<double, order_max + 1> boys;
  BOYS::evaluate(order, alpha * (x * x + y * y + z * z), boys.data());
  double power = factor;
  for (int n = 0; n <= order; ++n, power *= -2.0 * alpha) boys[static_cast<std::size_t>(n)] *= power;
  // From the highest auxiliary order down: R^n of total order `top` follows from R^(n+1) of total order top - 1. Positions
  // are those of the vector of that total order.
  double* low = current_.data();
  double* high = next_.data();
  low[0] = boys[static_cast<std::size_t>(order)];
  for (int top = 1; top <= order; ++top) {
    const int below = top - 1;
    int n = 0;
    for (int t = 0; t <= top; ++t) {
      for (int u = 0; t + u <= top; ++u) {
        for (int v = 0; t + u + v <= top; ++v, ++n) {
          if (t > 0) {
            high[n] =
                raise(x, low[hermite_index(below, t - 1, u, v)], t, t > 1 ? low[hermite_index(below, t - 2, u, v)] : 0.0);
          } else if (u > 0) {
            high[n] =
                raise(y, low[hermite_index(below, t, u - 1, v)], u, u > 1 ? low[hermite_index(below, t, u - 2, v)] : 0.0);
          } else if (v > 0) {
            high[n] =
                raise(z, low[hermite_index(below, t, u, v - 1)], v, v > 1 ? low[hermite_index(below, t, u, v - 2)] : 0.0);
          } else {
            high[n] = boys[static_cast<std::size_t>(order - top)];
          }
        }
      }
    }
    std::swap(low, high);
  }
  const int size = n_hermite(order);
  for (int n = 0; n < size; ++n) target[n] += low[n];
}

}  // namespace zentrix::INTEGRALS_2E

#include "integrals/hermite.hpp"

#include <algorithm>
#include <cmath>

namespace zentrix::INTEGRALS_2E {

namespace {

std::array<HERMITE_ROWS_T, HERMITE_MAX + 1> make_rows() {
  std::array<HERMITE_ROWS_T, HERMITE_MAX + 1> tables;
  for (int order = 0; order <= HERMITE_MAX; ++order)
    for (int t = 0; t <= order; ++t)
      for (int u = 0; t + u <= order; ++u) tables[order].row[t][u] = hermite_row(order, t, u);
  return tables;
}

std::array<std::vector<double>, HERMITE_MAX + 1> make_signs() {
  std::array<std::vector<double>, HERMITE_MAX + 1> tables;
  for (int order = 0; order <= HERMITE_MAX; ++order)
    for (int t = 0; t <= order; ++t)
      for (int u = 0; t + u <= order; ++u)
        for (int v = 0; t + u + v <= order; ++v) tables[order].push_back((t + u + v) % 2 == 0 ? 1.0 : -1.0);
  return tables;
}

}  // namespace

const HERMITE_ROWS_T& hermite_rows(int order) {
  static const auto tables = make_rows();
  return tables[order];
}

const std::vector<double>& hermite_signs(int order) {
  static const auto tables = make_signs();
  return tables[order];
}

void HERMITE_EXPANSION_T::fill(int la, int lb, double p, double pa, double pb, double e000) {
  const double half = 0.5 / p;
  e[0][0][0] = e000;
  // E_t^{i+1,j} = E_{t-1}^{ij} / 2p + (P-A) E_t^{ij} + (t+1) E_{t+1}^{ij}, and the same with B for j.
  const auto raise = [half](const double* from, double* to, int order, double distance) {
    for (int t = 0; t <= order + 1; ++t) {
      double value = 0.0;
      if (t > 0) value += half * from[t - 1];
      if (t <= order) value += distance * from[t];
      if (t < order) value += (t + 1) * from[t + 1];
      to[t] = value;
    }
  };
  for (int i = 0; i <= la; ++i) {
    if (i > 0) raise(e[i - 1][0], e[i][0], i - 1, pa);
    for (int j = 1; j <= lb; ++j) raise(e[i][j - 1], e[i][j], i + j - 1, pb);
  }
}

HERMITE_NORM_T::HERMITE_NORM_T(int order, double p) : order_(order) {
  odd_factorial_[0] = 1.0;
  double power = 1.0 / std::sqrt(2.0 * p);
  for (int n = 0; n <= order; ++n, power *= -p) {
    radial_[n] = power / (2 * n + 1);
    if (n > 0) odd_factorial_[n] = odd_factorial_[n - 1] * (2 * n - 1);
  }
}

double HERMITE_NORM_T::operator()(const double* h) const {
  // R_{2t,2u,2v}(alpha, 0) = (2t-1)!! (2u-1)!! (2v-1)!! (-2 alpha)^n F_n(0), n = t + u + v, alpha = p/2, F_n(0) = 1/(2n+1);
  // odd orders vanish.
  double square = 0.0;  // the norm, squared
  double scale = 0.0;   // squares of the single terms: what rounding is relative to
  const auto& row = hermite_rows(order_).row;
  for (int t = 0; t <= order_; ++t)
    for (int u = 0; t + u <= order_; ++u)
      for (int v = 0; t + u + v <= order_; ++v) {
        const double ht = h[row[t][u] + v];
        if (ht == 0.0) continue;
        double sum = 0.0;
        for (int t2 = t % 2; t2 <= order_; t2 += 2)
          for (int u2 = u % 2; t2 + u2 <= order_; u2 += 2) {
            const double factor = odd_factorial_[(t + t2) / 2] * odd_factorial_[(u + u2) / 2];
            for (int v2 = v % 2; t2 + u2 + v2 <= order_; v2 += 2)
              sum += factor * odd_factorial_[(v + v2) / 2] * radial_[(t + t2 + u + u2 + v + v2) / 2] * h[row[t2][u2] + v2];
          }
        square += ((t + u + v) % 2 == 0 ? ht : -ht) * sum;
        scale += ht * ht * std::abs(odd_factorial_[t] * odd_factorial_[u] * odd_factorial_[v] * radial_[t + u + v]);
      }
  // Rounding must not turn a bound into zero.
  return std::sqrt(std::max(square, 0.0) + 1e-14 * scale);
}

void differentiate_expansion(const HERMITE_EXPANSION_T& from, int la, int lb, double a, double pa, HERMITE_EXPANSION_T& to) {
  for (int i = 0; i <= la; ++i)
    for (int j = 0; j <= lb; ++j)
      for (int t = 0; t <= i + j; ++t) {
        double value = pa * from.e[i][j][t];
        if (t < i + j) value += (t + 1) * from.e[i][j][t + 1];
        value *= 2.0 * a;
        if (i > 0 && t < i + j) value -= i * from.e[i - 1][j][t];
        to.e[i][j][t] = value;
      }
}

double displacement_norm(int order, double p, const double* h) {
  const HERMITE_NORM_T norm(order + 1, p);
  const HERMITE_ROWS_T& rows = hermite_rows(order + 1);
  double largest = 0.0;
  for (int k = 0; k < 3; ++k) {
    double raised[n_hermite(HERMITE_MAX)];
    std::fill_n(raised, n_hermite(order + 1), 0.0);
    const double* value = h;
    for (int t = 0; t <= order; ++t)
      for (int u = 0; t + u <= order; ++u)
        for (int v = 0; t + u + v <= order; ++v) raised[rows.row[t + (k == 0)][u + (k == 1)] + v + (k == 2)] = *value++;
    largest = std::max(largest, norm(raised));
  }
  return largest;
}

}  // namespace zentrix::INTEGRALS_2E

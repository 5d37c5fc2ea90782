#pragma once

#include <cmath>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "dft/xc_evaluator.hpp"
#include "support/instruction_sets.hpp"

// Points and results of the exchange-correlation tests.

namespace zentrix::DFT::samples {

using TESTS::available_isas;
using TESTS::ISA_GUARD;

inline const std::vector<XC_COMPONENT> COMPONENTS = {XC_COMPONENT::slater_x, XC_COMPONENT::b88_x,   XC_COMPONENT::pbe_x,
                                                     XC_COMPONENT::vwn5_c,   XC_COMPONENT::lyp_c,   XC_COMPONENT::pbe_c,
                                                     XC_COMPONENT::vwn3_c,   XC_COMPONENT::p86_c,   XC_COMPONENT::pw91_c,
                                                     XC_COMPONENT::r2scan_x, XC_COMPONENT::r2scan_c};

/// A functional of one component, with all ingredients switched on when asked for.
inline FUNCTIONAL_T single(XC_COMPONENT id) {
  FUNCTIONAL_T functional;
  functional.name = std::to_string(static_cast<int>(id));
  functional.components = {{id, 1.0}};
  functional.needs_tau = id == XC_COMPONENT::r2scan_x || id == XC_COMPONENT::r2scan_c;
  functional.needs_gradient = id != XC_COMPONENT::slater_x && id != XC_COMPONENT::vwn5_c && id != XC_COMPONENT::vwn3_c;
  return functional;
}

inline FUNCTIONAL_T method(std::string_view word) {
  std::ostringstream report;
  FUNCTIONAL_T functional;
  if (set_up_functional(word, functional, report) != 0) throw std::runtime_error(report.str());
  return functional;
}

/// Every exchange-correlation method of the catalogue once.
inline std::vector<FUNCTIONAL_T> methods() {
  std::vector<FUNCTIONAL_T> list;
  for (std::string_view word : method_words())
    if (const FUNCTIONAL_T functional = method(word); !functional.is_hartree_fock()) list.push_back(functional);
  return list;
}

/// Arrays over points: variable v of point p at [v * n + p].
struct RESULT_T {
  int n = 0;
  std::vector<double> energy, first, second;
  double d(int v, int p) const { return first[static_cast<std::size_t>(v * n + p)]; }
  double dd(int v, int w, int p) const {
    const int pair = v >= w ? v * (v + 1) / 2 + w : w * (w + 1) / 2 + v;
    return second[static_cast<std::size_t>(pair * n + p)];
  }
};

inline RESULT_T evaluate(const XC_EVALUATOR_T& xc, const std::vector<double>& values, bool second = true) {
  RESULT_T r;
  const int variables = xc.variables();
  r.n = static_cast<int>(values.size()) / variables;
  const std::size_t n = static_cast<std::size_t>(r.n), v = static_cast<std::size_t>(variables);
  r.energy.resize(n);
  r.first.resize(n * v);
  r.second.resize(second ? n * v * (v + 1) / 2 : 0);
  if (second)
    xc.evaluate_second(r.n, r.n, values.data(), r.energy.data(), r.first.data(), r.second.data());
  else
    xc.evaluate(r.n, r.n, values.data(), r.energy.data(), r.first.data());
  return r;
}

/// Open-shell points inside the physical bounds, seven variables; densities from `lowest` to `highest`.
inline std::vector<double> open_points(int n, double lowest, double highest, unsigned seed = 7) {
  std::mt19937 engine(seed);
  auto uniform = [&](double from, double to) { return std::uniform_real_distribution<>(from, to)(engine); };
  std::vector<double> values(static_cast<std::size_t>(7 * n));
  for (int p = 0; p < n; ++p) {
    auto at = [&](int v) -> double& { return values[static_cast<std::size_t>(v * n + p)]; };
    double length[2];
    for (int s = 0; s < 2; ++s) {
      const double rho = lowest * std::pow(highest / lowest, uniform(0.0, 1.0));
      at(s) = rho;
      length[s] = std::pow(10.0, uniform(-1.5, 0.7)) * 7.8 * std::pow(rho, 4.0 / 3.0);
      at(5 + s) = length[s] * length[s] / (8.0 * rho) + std::pow(10.0, uniform(-2.0, 1.0)) * 4.56 * std::pow(rho, 5.0 / 3.0);
    }
    at(2) = length[0] * length[0];
    at(3) = length[0] * length[1] * uniform(-0.9, 0.9);
    at(4) = length[1] * length[1];
  }
  return values;
}

/// Of seven arrays over points those that are the variables of an evaluator; a closed shell takes those of the first spin.
inline std::vector<double> variables_of(const std::vector<double>& values, const XC_EVALUATOR_T& xc) {
  const auto n = static_cast<long>(values.size() / 7);
  const long closed[3] = {0, 2, 5};
  std::vector<double> chosen;
  for (int v = 0; v < xc.variables(); ++v) {
    const auto from = values.begin() + (xc.channels() == 1 ? closed[v] : v) * n;
    chosen.insert(chosen.end(), from, from + n);
  }
  return chosen;
}

}  // namespace zentrix::DFT::samples

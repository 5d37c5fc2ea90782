// Exchange-correlation energies and derivatives: every method of the catalogue, closed and open shell, first derivatives
// alone and with the second ones. With 1000 points the time in microseconds is the time in nanoseconds a point; energy_sum
// lets compare_xc.py see that both sides computed the same.
//
//   build/bench/bench_xc --benchmark_filter=PBE0
// ZENTRIX_ISA selects the instruction set.

#include <benchmark/benchmark.h>

#include <cmath>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "dft/xc_evaluator.hpp"

using namespace zentrix::DFT;

namespace {

constexpr int POINTS = 1000;

/// Number p of the additive sequence of step `step` in [0, 1).
double sequence(int p, double step) { return std::fmod((p + 1) * step, 1.0); }

/// Points as compare_xc.py makes them: densities 1e-6 to 10, spin shares 0.2 to 0.8, reduced gradients 0.05 to 5, tau
/// between 0.01 and 10 times that of the uniform gas above its lower bound. Seven variables; all gradients are parallel.
std::vector<double> points() {
  std::vector<double> values(7 * POINTS);
  for (int p = 0; p < POINTS; ++p) {
    const double total = std::pow(10.0, -6.0 + 7.0 * sequence(p, 0.6180339887498949));
    const double share = 0.2 + 0.6 * sequence(p, 0.7548776662466927),
                 s = 0.05 * std::pow(100.0, sequence(p, 0.5698402909980532));
    const double alpha = 0.01 * std::pow(1000.0, sequence(p, 0.8191725133961645));
    double length[2];
    for (int spin = 0; spin < 2; ++spin) {
      const double rho = total * (spin == 0 ? share : 1.0 - share);
      length[spin] = s * 7.8 * std::pow(rho, 4.0 / 3.0);
      values[spin * POINTS + p] = rho;
      values[(5 + spin) * POINTS + p] =
          length[spin] * length[spin] / (8.0 * rho) + alpha * 4.5578 * std::pow(rho, 5.0 / 3.0);
    }
    values[2 * POINTS + p] = length[0] * length[0];
    values[3 * POINTS + p] = length[0] * length[1];
    values[4 * POINTS + p] = length[1] * length[1];
  }
  return values;
}

/// Totals: density, gradient, kinetic-energy density.
std::vector<double> closed_points() {
  const std::vector<double> open = points();
  std::vector<double> values(3 * POINTS);
  for (int p = 0; p < POINTS; ++p) {
    values[p] = open[p] + open[POINTS + p];
    values[POINTS + p] = open[2 * POINTS + p] + 2.0 * open[3 * POINTS + p] + open[4 * POINTS + p];
    values[2 * POINTS + p] = open[5 * POINTS + p] + open[6 * POINTS + p];
  }
  return values;
}

void run(benchmark::State& state, const FUNCTIONAL_T& functional, int channels, int order) {
  const std::vector<double> values = channels == 1 ? closed_points() : points();
  const XC_EVALUATOR_T xc(functional, channels);
  const int v = xc.variables();
  std::vector<double> energy(POINTS), first(POINTS * v), second(POINTS * v * (v + 1) / 2);
  for (auto _ : state) {
    if (order == 1)
      xc.evaluate(POINTS, POINTS, values.data(), energy.data(), first.data());
    else
      xc.evaluate_second(POINTS, POINTS, values.data(), energy.data(), first.data(), second.data());
    benchmark::ClobberMemory();
  }
  state.counters["energy_sum"] = std::accumulate(energy.begin(), energy.end(), 0.0);
}

}  // namespace

int main(int argc, char** argv) {
  for (std::string_view word : method_words()) {
    std::ostringstream report;
    FUNCTIONAL_T functional;
    if (set_up_functional(word, functional, report) != 0 || functional.is_hartree_fock()) continue;
    for (int order : {1, 2})
      for (int channels : {1, 2}) {
        const std::string name =
            std::string(word) + (channels == 1 ? "/closed" : "/open") + (order == 1 ? "/first" : "/second");
        benchmark::RegisterBenchmark(name.c_str(), run, functional, channels, order)->Unit(benchmark::kMicrosecond);
      }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}

// Two-electron gradients beside one direct J and K build, in both modes of the Boys function. Run from the repository root
// (the basis library is read from there).
//
//   build/bench/bench_gradient_2e --benchmark_filter='caffeine_6-31G\*'
// ZENTRIX_ISA selects the instruction set, OMP_NUM_THREADS the threads. Geometry data (pairs, bounds) are made anew in every
// gradient, as in a run; the builds leave them out.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench_molecules.hpp"
#include "integrals/boys.hpp"
#include "integrals/gradient_2e.hpp"
#include "integrals/integrals_2e.hpp"

using namespace zentrix;
using namespace zentrix::INTEGRALS_2E;

namespace {

enum class PART { j_build, k_build, j_gradient, k_gradient, k_gradient_two };

void measure(benchmark::State& state, const std::string& geometry, const std::string& basis, PART part, bool precise) {
  const BOYS::PRECISE_MODE_GUARD mode(precise);
  const MOLECULE_T molecule = TESTS::sample_molecule(geometry, basis);
  const std::vector<MATRIX> density(part == PART::k_gradient_two ? 2 : 1, BENCH::core_density(molecule)), none;
  const JK_BUILDER builder(molecule);
  for (auto _ : state) switch (part) {
      case PART::j_build:
        benchmark::DoNotOptimize(builder.build(density, none));
        break;
      case PART::k_build:
        benchmark::DoNotOptimize(builder.build(none, density));
        break;
      case PART::j_gradient:
        benchmark::DoNotOptimize(coulomb_gradient(molecule, density[0]));
        break;
      case PART::k_gradient:
      case PART::k_gradient_two:
        benchmark::DoNotOptimize(exchange_gradient(molecule, density));
        break;
    }
}

void register_all() {
  struct CASE_T {
    const char* name;
    std::string geometry, basis;
  };
  const std::vector<CASE_T> cases = {{"water_cc-pVTZ", TESTS::water, "cc-pVTZ"},
                                     {"caffeine_6-31G*", TESTS::caffeine, "6-31G*"},
                                     {"C20H42_6-31G**", BENCH::alkane(20), "6-31G**"},
                                     {"water20_6-31G**", BENCH::waters(20), "6-31G**"},
                                     {"caffeine_cc-pVTZ", TESTS::caffeine, "cc-pVTZ"}};
  for (const CASE_T& c : cases)
    for (const auto& [label, part] : {std::pair("J_build", PART::j_build), std::pair("K_build", PART::k_build),
                                      std::pair("J_gradient", PART::j_gradient), std::pair("K_gradient", PART::k_gradient),
                                      std::pair("K_gradient_two_densities", PART::k_gradient_two)})
      for (const bool precise : {false, true})
        benchmark::RegisterBenchmark((std::string(c.name) + '/' + label + (precise ? "/precise" : "")).c_str(), measure,
                                     c.geometry, c.basis, part, precise)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
}

}  // namespace

int main(int argc, char** argv) {
  register_all();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

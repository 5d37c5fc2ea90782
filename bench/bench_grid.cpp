#include <benchmark/benchmark.h>

#include <algorithm>
#include <sstream>

#include "bench_molecules.hpp"
#include "dft/grid.hpp"
#include "dft/partition.hpp"
#include "support/grids.hpp"

// Construction of the integration grid of one geometry with all threads. The time per point grows with the number of atoms,
// since no atom is left out of a product of step functions.

namespace {

using namespace zentrix;

void build(benchmark::State& state, const std::string& geometry) {
  const MOLECULE_T molecule = TESTS::bare_molecule(geometry);
  std::ostringstream report;
  std::size_t points = 0;
  for (auto _ : state) points = DFT_GRID::build_grid(molecule, static_cast<int>(state.range(0)), report).size();
  state.counters["atoms"] = static_cast<double>(molecule.atoms.size());
  state.counters["points"] = static_cast<double>(points);
}

/// Derivatives of all weights of a grid, as an exchange-correlation gradient asks for them.
void weight_gradient(benchmark::State& state, const std::string& geometry) {
  const MOLECULE_T molecule = TESTS::bare_molecule(geometry);
  const int level = static_cast<int>(state.range(0));
  const DFT_GRID::MOLECULAR_GRID_T grid = TESTS::grid_of(molecule, level);
  const DFT_GRID::PARTITION_T partition(molecule, DFT_GRID::grid_level(level).size_adjustment);
  constexpr std::size_t batch = 128;
  std::vector<double> gradient(3 * molecule.atoms.size());
  for (auto _ : state) {
#pragma omp parallel
    {
      std::vector<double> mine(gradient.size());
#pragma omp for schedule(dynamic, 16)
      for (std::size_t first = 0; first < grid.size(); first += batch) {
        const auto owner = grid.atom.begin() + static_cast<long>(first);
        const auto end = owner + static_cast<long>(std::min(batch, grid.size() - first));
        const int n =
            static_cast<int>(std::upper_bound(owner, end, *owner) - owner);  // benchmark: a change of atom is cut off
        partition.add_gradient(*owner, n, &grid.x[first], &grid.y[first], &grid.z[first], &grid.weight[first], mine.data());
      }
#pragma omp critical
      for (std::size_t i = 0; i < gradient.size(); ++i) gradient[i] += mine[i];
    }
  }
  state.counters["points"] = static_cast<double>(grid.size());
}

void caffeine(benchmark::State& state) { build(state, TESTS::caffeine); }
void alkane_98_atoms(benchmark::State& state) { build(state, BENCH::alkane(32)); }
void waters_99_atoms(benchmark::State& state) { build(state, BENCH::waters(33)); }
void alkane_200_atoms(benchmark::State& state) { build(state, BENCH::alkane(66)); }
void waters_201_atoms(benchmark::State& state) { build(state, BENCH::waters(67)); }
void waters_399_atoms(benchmark::State& state) { build(state, BENCH::waters(133)); }
void gradient_alkane_98_atoms(benchmark::State& state) { weight_gradient(state, BENCH::alkane(32)); }

}  // namespace

BENCHMARK(caffeine)->DenseRange(1, 10)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(alkane_98_atoms)->Arg(6)->Arg(7)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(waters_99_atoms)->Arg(6)->Arg(7)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(alkane_200_atoms)->Arg(6)->Arg(7)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(waters_201_atoms)->Arg(6)->Arg(7)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(waters_399_atoms)->Arg(6)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK(gradient_alkane_98_atoms)->Arg(6)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();

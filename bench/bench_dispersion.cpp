#include <benchmark/benchmark.h>

#include <sstream>
#include <stdexcept>
#include <vector>

#include "bench_molecules.hpp"
#include "dispersion/d3.hpp"
#include "support/grids.hpp"

// The D3 correction of clusters of water and of alkanes with all threads, and the reading of its data files.

namespace {

using namespace zentrix;

DISPERSION::D3_DATA_T load() {
  DISPERSION::D3_DATA_T data;
  std::ostringstream report;
  if (DISPERSION::load_d3_atomic("basis_data/d3_atomic.dat", data, report) != 0 ||
      DISPERSION::load_d3_reference("basis_data/d3_c6ref.dat", data, report) != 0) {
    throw std::runtime_error(report.str());
  }
  return data;
}

void energy_and_gradient(benchmark::State& state, const std::string& geometry) {
  const MOLECULE_T molecule = TESTS::bare_molecule(geometry);
  std::vector<int> elements;
  VECTOR positions(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
  Eigen::Index at = 0;
  for (const ATOM_T& atom : molecule.atoms) {
    for (const double x : atom.position) positions(at++) = x;
    elements.push_back(atom.z);
  }
  DISPERSION::D3_PARAMETERS_T parameters;
  std::ostringstream report;
  if (DISPERSION::select_d3("D3", "B3LYP", parameters, report) != 0) throw std::runtime_error(report.str());
  const DISPERSION::D3_T d3(parameters, load(), elements);
  VECTOR gradient;
  for (auto _ : state) benchmark::DoNotOptimize(d3.energy_and_gradient(positions, gradient));
  state.counters["atoms"] = static_cast<double>(elements.size());
}

void read_data(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(load().n_entries());
}

void waters_999_atoms(benchmark::State& state) { energy_and_gradient(state, BENCH::waters(333)); }
void alkane_1001_atoms(benchmark::State& state) { energy_and_gradient(state, BENCH::alkane(333)); }
void alkane_98_atoms(benchmark::State& state) { energy_and_gradient(state, BENCH::alkane(32)); }

}  // namespace

BENCHMARK(waters_999_atoms)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(alkane_1001_atoms)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(alkane_98_atoms)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(read_data)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();

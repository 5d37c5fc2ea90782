// Coulomb engine: whole builds of four molecules, and single kernels.
//
//   build/bench/bench_coulomb                     all of it
//   build/bench/bench_coulomb --benchmark_filter=build/caffeine
//
// Builds run on one and on two threads; `interactions` of a kernel counts pairs of Hermite pairs, so items per second are
// the inverse of the time of one. ZENTRIX_ISA chooses the instruction set.

#include <benchmark/benchmark.h>
#include <omp.h>

#include <random>

#include "bench_molecules.hpp"
#include "integrals/coulomb_engine.hpp"
#include "integrals/kernels/coulomb_kernels.hpp"
#include "simd/aligned_vector.hpp"

using namespace zentrix;

namespace {

void build(benchmark::State& state, const std::string& geometry, const std::string& basis) {
  const int previous = omp_get_max_threads();
  const MOLECULE_T molecule = TESTS::sample_molecule(geometry, basis);
  const MATRIX density = to_cartesian(molecule, BENCH::core_density(molecule));
  omp_set_num_threads(static_cast<int>(state.range(0)));
  const INTEGRALS_2E::COULOMB_ENGINE engine(molecule);
  for (auto _ : state) benchmark::DoNotOptimize(engine.build({&density, 1}, 1e-11));
  omp_set_num_threads(previous);
  state.counters["functions"] = molecule.n_basis;
}

void kernel(benchmark::State& state) {
  using namespace kernels;
  const ISA isa = chosen_isa();
  const int lanes = lane_count(isa);
  const int bra_order = static_cast<int>(state.range(0)), ket_order = static_cast<int>(state.range(1));
  const auto count = [](int order) { return (order + 1) * (order + 2) * (order + 3) / 6; };
  const int nt = count(bra_order), nu = count(ket_order), blocks = 16;

  std::mt19937 generator(1);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  ALIGNED_VECTOR geometry(blocks * 4 * lanes), weight(lanes, 1.0), scratch(coulomb_scratch(bra_order + ket_order));
  for (int block = 0; block < blocks; ++block)
    for (int k = 0; k < 4; ++k)
      for (int lane = 0; lane < lanes; ++lane)
        geometry[(block * 4 + k) * lanes + lane] = k == 0 ? 0.3 + 2.0 * uniform(generator) : 8.0 * uniform(generator);
  ALIGNED_VECTOR h_bra(nt, 0.1), j_bra(nt * lanes), h_ket(blocks * nu * lanes, 0.1), j_ket(blocks * nu * lanes);
  const COULOMB_BRA_T bra{bra_order, 0.7, {0.0, 0.0, 0.0}, h_bra.data(), nt, j_bra.data()};
  const COULOMB_KETS_T kets{ket_order, geometry.data(), h_ket.data(), j_ket.data(), weight.data(), 0, blocks};
  const BOYS_SERVICE_T boys = boys_service();
  const COULOMB_KERNEL run = ZX_PICK(isa, coulomb_kernel)(bra_order, ket_order);
  for (auto _ : state) {
    run(boys, bra, kets, 1, scratch.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * blocks * lanes);
  state.SetLabel(isa_name(isa));
}

void all_orders(benchmark::internal::Benchmark* b) {
  for (int bra = 0; bra <= kernels::COULOMB_ORDER_MAX; ++bra)
    for (int ket = 0; ket <= bra; ++ket)
      if (bra <= 4 || bra == ket || ket == 0) b->Args({bra, ket});
}

BENCHMARK(kernel)->Apply(all_orders);

#define BUILD_BENCHMARK(name, geometry, basis) \
  BENCHMARK_CAPTURE(build, name, geometry, basis)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()
BUILD_BENCHMARK(caffeine_631gs, TESTS::caffeine, "6-31G*");
BUILD_BENCHMARK(caffeine_ccpvtz, TESTS::caffeine, "cc-pVTZ");
BUILD_BENCHMARK(c20h42_631gss, BENCH::alkane(20), "6-31G**");
BUILD_BENCHMARK(water20_631gss, BENCH::waters(20), "6-31G**");

}  // namespace

BENCHMARK_MAIN();

// Quartet classes and whole J/K builds. Run from the repository root (the basis library is read from there).
//
//   build/bench/bench_jk --benchmark_filter=quartet     one class: front and digestion of a vector of quartets
//   build/bench/bench_jk --benchmark_filter=build       caffeine, eicosane, water clusters
// ZENTRIX_ISA selects the instruction set, OMP_NUM_THREADS the threads.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "bench_molecules.hpp"
#include "integrals/exchange_engine.hpp"
#include "integrals/integrals_2e.hpp"

using namespace zentrix;
using namespace zentrix::INTEGRALS_2E;

namespace {

const char* const LETTERS = "spdfg";

/// A shell pair of random centres with 1 or 3 primitives a shell.
struct BENCH_PAIR_T {
  std::vector<PRIMITIVE_PAIR_T> primitives;
  SHELL_PAIR_T pair;
};

SHELL_T bench_shell(int l, int n_primitives) {
  SHELL_T shell;
  shell.l = l;
  shell.nprim = n_primitives;
  for (int k = 0; k < n_primitives; ++k) {
    shell.alpha.push_back(0.4 * std::pow(3.0, k));
    shell.coeff.push_back(1.0);
  }
  return shell;
}

/// Time of one vector of quartets; counters give nanoseconds per quartet and per primitive quartet.
void quartet_class(benchmark::State& state, int la, int lb, int lc, int ld, int n_primitives) {
  const KERNEL_CHOICE_T kernels = choose_kernels(kernels::chosen_isa());
  const kernels::BOYS_SERVICE_T boys = kernels::boys_service();
  std::mt19937 generator(7);
  std::uniform_real_distribution<double> coordinate(-2.0, 2.0);
  const auto center = [&] {
    return std::array<double, 3>{coordinate(generator), coordinate(generator), coordinate(generator)};
  };
  const auto make_pair = [&](BENCH_PAIR_T& made, int l1, int l2) {
    const auto a = center(), b = center();
    made.primitives = primitive_pairs(bench_shell(l1, n_primitives), a, bench_shell(l2, n_primitives), b).pairs;
    made.pair.primitives = made.primitives.data();
    made.pair.n_primitives = static_cast<int>(made.primitives.size());
    for (int i = 0; i < 3; ++i) made.pair.separation[i] = a[i] - b[i];
  };
  BENCH_PAIR_T bra;
  make_pair(bra, la, lb);
  std::vector<BENCH_PAIR_T> kets(static_cast<std::size_t>(kernels.lanes));
  const SHELL_PAIR_T* ket_pairs[kernels::MAX_LANES];
  int components = 0;
  for (int lane = 0; lane < kernels.lanes; ++lane) {
    BENCH_PAIR_T& ket = kets[static_cast<std::size_t>(lane)];
    make_pair(ket, lc, ld);
    ket.pair.first_i = components;
    ket.pair.first_j = components + n_cartesian(lc);
    components += n_cartesian(lc) + n_cartesian(ld);
    ket_pairs[lane] = &ket.pair;
  }
  const kernels::BATCH_T batch = make_batch(bra.pair, ket_pairs, kernels.lanes, 0.0);
  QUARTET_WORK_T work(std::max({la, lc, 1}), bra.pair.n_primitives, kernels.lanes);
  kernels::DIGEST_T target;
  target.na = n_cartesian(la);
  target.nb = n_cartesian(lb);
  std::vector<double> dp(static_cast<std::size_t>(components * (target.na + target.nb) + 8), 0.5), kp = dp;
  target.dp = dp.data();
  target.kp = kp.data();
  const int ket_class = kernels::pair_class(lc, ld);
  const auto front = kernels.table->front[kernels::pair_class(la, lb)][ket_class];
  const auto digest = kernels.table->digest_rows[ket_class];
  for (auto _ : state) {
    front(batch, boys, work.scratch.data(), work.rows.data());
    digest(batch, target, work.scratch.data(), work.rows.data());
    benchmark::ClobberMemory();
  }
  const auto time_per = [&](double per_iteration) {
    return benchmark::Counter(per_iteration, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  };
  const auto size = [](int l) { return static_cast<double>(n_cartesian(l)); };
  state.counters["integrals"] = benchmark::Counter(kernels.lanes * size(la) * size(lb) * size(lc) * size(ld),
                                                   benchmark::Counter::kIsIterationInvariantRate);
  state.counters["quartet"] = time_per(kernels.lanes);
  state.counters["primitive"] = time_per(kernels.lanes * std::pow(n_primitives, 4));
}

constexpr int FMA_CHAINS = 12;
using EIGHT __attribute__((vector_size(64))) = double;

/// x <- a x + b in chains that do not wait for each other, as wide as the processor can.
[[gnu::target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")]] void run_chains(EIGHT* x, int steps) {
  const EIGHT a = EIGHT{} + 0.999, b = EIGHT{} + 0.001;
  EIGHT chain[FMA_CHAINS];
  for (int c = 0; c < FMA_CHAINS; ++c) chain[c] = x[c];
  for (int n = 0; n < steps; ++n) {
#pragma GCC unroll 12
    for (int c = 0; c < FMA_CHAINS; ++c) chain[c] = chain[c] * a + b;
  }
  for (int c = 0; c < FMA_CHAINS; ++c) x[c] = chain[c];
}

/// What one thread can do at most, operations a second.
void peak(benchmark::State& state) {
  constexpr int steps = 1000;
  std::vector<EIGHT> x(FMA_CHAINS, EIGHT{} + 0.5);
  for (auto _ : state) {
    run_chains(x.data(), steps);
    benchmark::ClobberMemory();
  }
  state.counters["operations"] =
      benchmark::Counter(2.0 * 8 * FMA_CHAINS * steps, benchmark::Counter::kIsIterationInvariantRate);
}

enum class PART { setup, j, k, stored };

void build(benchmark::State& state, const std::string& geometry, const std::string& basis, PART part) {
  const MOLECULE_T molecule = TESTS::sample_molecule(geometry, basis);
  const std::vector<MATRIX> density(1, BENCH::core_density(molecule)), none;
  JK_BUILDER builder(molecule);
  if (part == PART::stored) builder.fill_store();
  for (auto _ : state) {
    if (part == PART::setup) {
      JK_BUILDER fresh(molecule);
      benchmark::DoNotOptimize(&fresh);
    } else {
      benchmark::DoNotOptimize(builder.build(part == PART::k ? none : density, part == PART::j ? none : density));
    }
  }
}

void register_all() {
  const int classes[][4] = {{0, 0, 0, 0}, {1, 0, 0, 0}, {1, 0, 1, 0}, {1, 1, 0, 0}, {1, 1, 1, 1}, {2, 0, 1, 0},
                            {2, 1, 2, 1}, {2, 2, 2, 2}, {3, 1, 3, 1}, {3, 2, 3, 2}, {3, 3, 3, 3}, {4, 4, 4, 4}};
  for (const auto& c : classes)
    for (int n : {1, 3}) {
      if (n > 1 && c[0] > 1) continue;
      const std::string name =
          std::string("quartet/") + LETTERS[c[0]] + LETTERS[c[1]] + LETTERS[c[2]] + LETTERS[c[3]] + "/" + std::to_string(n);
      benchmark::RegisterBenchmark(name.c_str(), quartet_class, c[0], c[1], c[2], c[3], n);
    }
  benchmark::RegisterBenchmark("peak/fma", peak);
  struct CASE_T {
    const char* name;
    std::string geometry, basis;
  };
  const std::vector<CASE_T> cases = {{"caffeine_6-31G*", TESTS::caffeine, "6-31G*"},
                                     {"C20H42_6-31G**", BENCH::alkane(20), "6-31G**"},
                                     {"water20_6-31G**", BENCH::waters(20), "6-31G**"},
                                     {"caffeine_cc-pVTZ", TESTS::caffeine, "cc-pVTZ"}};
  for (const CASE_T& c : cases)
    for (const auto& [label, part] : {std::pair("setup", PART::setup), std::pair("J", PART::j), std::pair("K", PART::k)})
      benchmark::RegisterBenchmark((std::string("build/") + c.name + '/' + label).c_str(), build, c.geometry, c.basis, part)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
  benchmark::RegisterBenchmark("build/caffeine_6-31G*/stored_JK", build, TESTS::caffeine, std::string("6-31G*"),
                               PART::stored)
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

#include "integrals/coulomb_walk.hpp"

#include <omp.h>

#include <algorithm>
#include <numeric>

#include "integrals/kernels/coulomb_kernels.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

using kernels::COULOMB_BRA_T;
using kernels::COULOMB_KERNEL;
using kernels::COULOMB_KETS_T;
using kernels::MAX_LANES;

/// Bras that pass over a stretch of kets together, so that the stretch is read from the cache.
struct TILE_T {
  int list = 0;
  int begin = 0;
  int end = 0;
  double cost = 0.0;
};

constexpr int MAX_TILE = 16;
/// Doubles of bra potentials in a tile and of ket blocks in a stretch: the first stays in the first-level cache, the second
/// in the second-level one.
constexpr int TILE_DOUBLES = 1024;
constexpr int STRETCH_DOUBLES = 8192;

/// Factors of the lanes of the block in which a bra meets itself: kets before it fully, itself half, later ones not at all.
struct WEIGHTS_T {
  alignas(64) double full[MAX_LANES];
  alignas(64) double self[MAX_LANES][MAX_LANES];
  WEIGHTS_T() {
    for (int lane = 0; lane < MAX_LANES; ++lane) {
      full[lane] = 1.0;
      for (int k = 0; k < MAX_LANES; ++k) self[lane][k] = k < lane ? 1.0 : k == lane ? 0.5 : 0.0;
    }
  }
};

/// Everything the threads of one build read.
struct BUILD_T {
  const HERMITE_PAIRS_T& pairs;
  const ALIGNED_VECTOR& hermite;
  const std::vector<COULOMB_LIST_T>& lists;
  double cut;
  int n_densities;
  kernels::ISA isa;
  int lanes;
  kernels::BOYS_SERVICE_T boys;
  WEIGHTS_T weights;
};

/// Working memory of one thread, made before the threads start.
struct THREAD_MEMORY_T {
  ALIGNED_VECTOR potential;  ///< of all lists, in their packed shape
  ALIGNED_VECTOR tile;       ///< potentials of the bras of a tile
  ALIGNED_VECTOR scratch;    ///< of the kernels
};

int tile_length(const BUILD_T& build, int order) {
  return std::clamp(TILE_DOUBLES / (n_hermite(order) * build.n_densities * build.lanes), 1, MAX_TILE);
}

/// Kernel of one bra order with one ket order and what one block costs there, relative to a multiply-add on a vector.
double block_cost(int bra_order, int ket_order, int n_densities) {
  const double m = bra_order + ket_order;
  return 2.0 * n_hermite(bra_order) * n_hermite(ket_order) * n_densities + (m + 1) * (m + 2) * (m + 3) / 4.0 + 50.0;
}

/// Ket blocks that bra number `bra` of list `l` meets in list `k`.
int block_limit(const BUILD_T& build, int l, int bra, int k) {
  const int limit = build.lists[k].blocks_above(build.cut / build.lists[l].key[bra], build.lanes);
  return l == k ? std::min(limit, bra / build.lanes + 1) : limit;
}

std::vector<TILE_T> make_tiles(const BUILD_T& build) {
  std::vector<TILE_T> tiles;
  for (int l = 0; l < static_cast<int>(build.lists.size()); ++l) {
    const COULOMB_LIST_T& list = build.lists[l];
    const int n = static_cast<int>(list.pair.size());
    const int length = tile_length(build, list.order);
    for (int begin = 0; begin < n; begin += length) {
      TILE_T tile{l, begin, std::min(begin + length, n), 0.0};
      for (int k = 0; k <= l; ++k)
        tile.cost += block_cost(list.order, build.lists[k].order, build.n_densities) *
                     block_limit(build, l, (tile.begin + tile.end) / 2, k) * (tile.end - tile.begin);
      tiles.push_back(tile);
    }
  }
  return tiles;
}

/// Deals the tiles out, dearest first, each to the thread with the least work so far. The deal depends on the thread count
/// alone, not on the speed of the threads, so that sums come out the same in every run.
std::vector<std::vector<TILE_T>> deal_tiles(std::vector<TILE_T> tiles, int n_threads) {
  std::stable_sort(tiles.begin(), tiles.end(), [](const TILE_T& a, const TILE_T& b) { return a.cost > b.cost; });
  std::vector<std::vector<TILE_T>> hands(n_threads);
  std::vector<double> work(n_threads, 0.0);
  for (const TILE_T& tile : tiles) {
    const auto least = std::min_element(work.begin(), work.end()) - work.begin();
    work[least] += tile.cost;
    hands[least].push_back(tile);
  }
  return hands;
}

/// The bras of a tile against one list of kets.
void meet_list(const BUILD_T& build, const TILE_T& tile, const COULOMB_BRA_T* bras, int k, THREAD_MEMORY_T& memory) {
  const COULOMB_LIST_T& list = build.lists[k];
  const int bra_order = build.lists[tile.list].order;
  const COULOMB_KERNEL kernel = ZX_PICK(build.isa, coulomb_kernel)(bra_order, list.order);
  COULOMB_KETS_T kets{list.order, list.geometry.data(), list.h.data(), memory.potential.data() + list.first, nullptr, 0, 0};

  const int n = tile.end - tile.begin;
  int limit[MAX_TILE];  // blocks met with full weight
  int longest = 0;
  for (int i = 0; i < n; ++i) {
    limit[i] = block_limit(build, tile.list, tile.begin + i, k);
    const int own = (tile.begin + i) / build.lanes;
    if (tile.list == k && limit[i] > own) {
      limit[i] = own;
      kets.weight = build.weights.self[(tile.begin + i) % build.lanes];
      kets.begin = own;
      kets.end = own + 1;
      kernel(build.boys, bras[i], kets, build.n_densities, memory.scratch.data());
    }
    longest = std::max(longest, limit[i]);
  }

  kets.weight = build.weights.full;
  const int stretch = std::max(1, STRETCH_DOUBLES / static_cast<int>(4 * build.lanes + 2 * list.block_size));
  for (int begin = 0; begin < longest; begin += stretch)
    for (int i = 0; i < n; ++i) {
      kets.begin = begin;
      kets.end = std::min(begin + stretch, limit[i]);
      if (kets.begin < kets.end) kernel(build.boys, bras[i], kets, build.n_densities, memory.scratch.data());
    }
}

/// Sums the bra potentials over the lanes into the thread's accumulator, where they carry the sign of a ket.
void collect_bras(const BUILD_T& build, const TILE_T& tile, THREAD_MEMORY_T& memory) {
  const COULOMB_LIST_T& list = build.lists[tile.list];
  const int nt = n_hermite(list.order);
  const std::vector<double>& sign = hermite_signs(list.order);
  const double* j = memory.tile.data();
  for (int bra = tile.begin; bra < tile.end; ++bra) {
    double* target = memory.potential.data() + list.first + bra / build.lanes * list.block_size + bra % build.lanes;
    for (int d = 0; d < build.n_densities; ++d)
      for (int t = 0; t < nt; ++t, j += build.lanes)
        target[(d * nt + t) * build.lanes] += sign[t] * std::accumulate(j, j + build.lanes, 0.0);
  }
}

void run_tile(const BUILD_T& build, const TILE_T& tile, THREAD_MEMORY_T& memory) {
  const COULOMB_LIST_T& list = build.lists[tile.list];
  const std::size_t bra_size = list.block_size;
  std::fill_n(memory.tile.begin(), bra_size * (tile.end - tile.begin), 0.0);
  COULOMB_BRA_T bras[MAX_TILE];
  for (int bra = tile.begin; bra < tile.end; ++bra) {
    const HERMITE_PAIR_T& pair = build.pairs.pairs[list.pair[bra]];
    bras[bra - tile.begin] = {list.order,
                              pair.p,
                              {pair.center[0], pair.center[1], pair.center[2]},
                              build.hermite.data() + pair.first,
                              static_cast<long>(build.pairs.size),
                              memory.tile.data() + bra_size * (bra - tile.begin)};
  }
  for (int k = 0; k <= tile.list; ++k) meet_list(build, tile, bras, k, memory);
  collect_bras(build, tile, memory);
}

std::vector<THREAD_MEMORY_T> make_memory(const BUILD_T& build, int n_threads) {
  std::size_t total = 0;
  std::size_t tile = TILE_DOUBLES;
  int order = 0;
  for (const COULOMB_LIST_T& list : build.lists) {
    total += list.n_blocks * list.block_size;
    tile = std::max(tile, list.block_size);
    order = std::max(order, list.order);
  }
  std::vector<THREAD_MEMORY_T> memory(n_threads);
  for (THREAD_MEMORY_T& own : memory) {
    own.potential.resize(total);
    own.tile.resize(tile);
    own.scratch.resize(kernels::coulomb_scratch(2 * order));
  }
  return memory;
}

/// Adds up the threads' potentials in their order and returns them to the order of the pairs, ket signs taken off.
void collect_threads(const BUILD_T& build, const std::vector<THREAD_MEMORY_T>& memory, ALIGNED_VECTOR& potential) {
  for (const COULOMB_LIST_T& list : build.lists) {
    const int nu = n_hermite(list.order);
    const std::vector<double>& sign = hermite_signs(list.order);
#pragma omp parallel for
    for (std::size_t n = 0; n < list.pair.size(); ++n) {
      const std::size_t source = list.first + n / build.lanes * list.block_size + n % build.lanes;
      for (int d = 0; d < build.n_densities; ++d) {
        double* target = potential.data() + d * build.pairs.size + build.pairs.pairs[list.pair[n]].first;
        for (int u = 0; u < nu; ++u) {
          double value = 0.0;
          for (const THREAD_MEMORY_T& own : memory) value += own.potential[source + (d * nu + u) * build.lanes];
          target[u] = sign[u] * value;
        }
      }
    }
  }
}

}  // namespace

ALIGNED_VECTOR hermite_potential(const HERMITE_PAIRS_T& pairs, const ALIGNED_VECTOR& hermite, const COULOMB_KEYS_T& keys,
                                 int n_densities, kernels::ISA isa) {
  const int lanes = kernels::lane_count(isa);
  const std::vector<COULOMB_LIST_T> lists = make_lists(pairs, keys, hermite, n_densities, lanes);
  const BUILD_T build{pairs, hermite, lists, keys.cut, n_densities, isa, lanes, kernels::boys_service(), {}};

  const int n_threads = omp_get_max_threads();
  const std::vector<std::vector<TILE_T>> hands = deal_tiles(make_tiles(build), n_threads);
  std::vector<THREAD_MEMORY_T> memory = make_memory(build, n_threads);
#pragma omp parallel for num_threads(n_threads) schedule(static, 1)
  for (int thread = 0; thread < n_threads; ++thread)
    for (const TILE_T& tile : hands[thread]) run_tile(build, tile, memory[thread]);

  ALIGNED_VECTOR potential(n_densities * pairs.size, 0.0);
  collect_threads(build, memory, potential);
  return potential;
}

}  // namespace zentrix::INTEGRALS_2E

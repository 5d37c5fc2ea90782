#pragma once

#include <vector>

#include "integrals/hermite_pairs.hpp"
#include "simd/aligned_vector.hpp"

// The Hermite pairs of one Coulomb build, in lists by total order, each sorted by importance and packed for the kernels.

namespace zentrix::INTEGRALS_2E {

/// Importance of every pair and the cut that belongs to it: an interaction whose keys multiply to less than `cut` changes no
/// element of J by the threshold.
struct COULOMB_KEYS_T {
  std::vector<double> key;
  double cut = 0.0;
};

/// With Q the bound of a pair's functions and S the norm of its density, the interaction of pairs 1 and 2 adds at most Q1 S2
/// and S1 Q2 to elements of J. For any scale s > 0 both are below the threshold where max(Q1, S1/s) max(Q2, S2/s) is below
/// threshold/s; that test needs one sorted list only. The scale is the one that lets the fewest interactions pass.
COULOMB_KEYS_T make_keys(const HERMITE_PAIRS_T& pairs, const std::vector<double>& density_norms, double threshold);

/// Pairs of one total order, most important first, `lanes` of them per block.
struct COULOMB_LIST_T {
  int order = 0;
  std::vector<int> pair;       ///< index in HERMITE_PAIRS_T::pairs
  std::vector<double> key;     ///< descending
  int n_blocks = 0;            ///< of `lanes` pairs each, the last one filled up
  ALIGNED_VECTOR geometry;     ///< [block][p, x, y, z][lane]; empty lanes hold p = 1 at the origin
  ALIGNED_VECTOR h;            ///< [block][density][u][lane], (-1)^u H_u; empty lanes hold zero
  std::size_t first = 0;       ///< place of its potential in the accumulator of a thread
  std::size_t block_size = 0;  ///< doubles of one block of h

  /// Number of blocks that hold a pair of at least this key.
  int blocks_above(double least_key, int lanes) const;
};

/// Sorts and packs; `hermite` holds one folded vector of pairs.size elements per density. Pairs that interact with nothing
/// are left out.
std::vector<COULOMB_LIST_T> make_lists(const HERMITE_PAIRS_T& pairs, const COULOMB_KEYS_T& keys,
                                       const ALIGNED_VECTOR& hermite, int n_densities, int lanes);

}  // namespace zentrix::INTEGRALS_2E

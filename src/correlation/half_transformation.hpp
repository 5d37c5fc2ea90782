#pragma once

#include "integrals/integral_panels.hpp"
#include "linalg/matrix.hpp"

namespace zentrix::CORRELATION {

/// Occupied orbitals first .. first + count - 1 of a list: those whose pairs with themselves and with all orbitals before
/// them are transformed together.
struct OCCUPIED_BATCH_T {
  int first = 0;
  int count = 0;
  int end() const { return first + count; }
};

/// Batches whose half-transformed sets stay within `budget` bytes each (at least one orbital a batch).
std::vector<OCCUPIED_BATCH_T> occupied_batches(int n_occupied, int n_components, std::int64_t budget);
/// Bytes of a batch's half-transformed set.
std::int64_t half_transformed_bytes(const OCCUPIED_BATCH_T& batch, int n_components);

/// A run of components, whole shells.
struct RANGE_T {
  int first = 0;
  int end = 0;
  int size() const { return end - first; }
};

/// Quarter-transformed integrals T_(ab),jd = sum_c C_cj L_(ab),(cd) of a tile of bras, a in one range of components and b in
/// another, for one range of occupied orbitals j: [a][b][d][j].
struct TILE_T {
  RANGE_T a, b;
  Eigen::Index orbitals = 0, components = 0;
  double* values = nullptr;
  double* of(int at_a, int at_b) const {
    return values + (static_cast<Eigen::Index>(at_a - a.first) * b.size() + (at_b - b.first)) * orbitals * components;
  }
  std::size_t doubles() const { return static_cast<std::size_t>(a.size() * b.size() * orbitals * components); }
};

/// Exchange-type half-transformed integrals K^ij_pq = (i p|j q) = sum_ac C_ai C_cj (ap|cq) over components p, q of the
/// panels, for the pairs (i, j), j <= i, of a batch. Both occupied indices are transformed first, because they are the short
/// ones: n_occ^2 n^2 numbers are left (P. Pulay, S. Saebo, K. Wolinski, Chem. Phys. Lett. 344 (2001) 543), and the first
/// quarter transformation, the only step of order n_occ n^4, is one matrix product per panel.
class HALF_TRANSFORMED_T {
 public:
  /// `occupied`: columns over the components of `panels`. Threaded; the digits do not depend on the number of threads.
  HALF_TRANSFORMED_T(const INTEGRALS_2E::ERI_PANELS& panels, const MATRIX& occupied, const OCCUPIED_BATCH_T& batch);

  /// K^ij for i in the batch and j <= i; rows belong to i, columns to j.
  void pair(int i, int j, MATRIX& k) const;

 private:
  /// H_pi,jq = sum_ac C_ai C_cj L_(ap),(cq) with L of ERI_PANELS: bra orbitals i, ket orbitals j of two ranges. With both
  /// ranges exchanged it completes K: K^ij = H^ij + (H^ji)^t.
  struct PART_T {
    OCCUPIED_BATCH_T bra, ket;
    int tile = 0;                          ///< of the quarter-transformed integrals that it is made of
    INTEGRALS_2E::ALIGNED_DOUBLES values;  ///< [p][i][q][j] while it is summed, [p][i][j][q] at the end
    std::size_t bra_doubles = 0;           ///< doubles of one i
    double* of(int p, int i) {
      return values.data() +
             (static_cast<std::size_t>(p) * static_cast<std::size_t>(bra.count) + static_cast<std::size_t>(i)) * bra_doubles;
    }
    const double* of(int p, int i) const { return const_cast<PART_T*>(this)->of(p, i); }
  };
  using MAP_T =
      Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>, 0, Eigen::OuterStride<>>;

  PART_T make_part(const OCCUPIED_BATCH_T& bra, const OCCUPIED_BATCH_T& ket, int tile) const;
  void add_tile(const TILE_T& tile, const MATRIX& occupied, PART_T& part) const;
  MAP_T matrix(const PART_T& part, int i, int j) const;
  void order_for_pairs(PART_T& part) const;

  int n_ = 0;  ///< components
  OCCUPIED_BATCH_T batch_;
  std::vector<PART_T> parts_;  ///< batch with itself; batch with the orbitals before it, and the other way round
};

}  // namespace zentrix::CORRELATION

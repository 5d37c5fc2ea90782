#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "integrals/exchange_engine.hpp"

namespace zentrix::INTEGRALS_2E {

/// One shell quartet (ij|kl) of the store.
struct QUARTET_INFO_T {
  std::array<int, 4> shell = {};       ///< i, j, k, l
  std::array<int, 4> l = {};           ///< their angular momenta
  std::array<int, 4> components = {};  ///< their numbers of Cartesian components
  std::size_t offset = 0;              ///< of integral (0 0|0 0) in the store
  std::size_t stride = 1;              ///< between its integrals: quartets lie interleaved, one per vector lane
  double scale = 1.0;                  ///< symmetry factor that the stored integrals carry
};

/// The kets of one list that meet one bra: the first `kets` of the list, in blocks of one vector width.
struct STORE_SEGMENT_T {
  BRA_T bra;
  int ket_list = 0;
  int kets = 0;
  std::size_t offset = 0;
};

/// True when the kets of a segment lie interleaved, one per vector lane; otherwise they follow one another.
bool in_lanes(const SHELL_PAIRS_T& data, const STORE_SEGMENT_T& segment);
/// Doubles that a segment takes, unused lanes included.
std::size_t segment_doubles(const SHELL_PAIRS_T& data, const STORE_SEGMENT_T& segment, int lanes);
/// Computes a segment's integrals: blocks [ab][cd] with their symmetry factors. `out` is aligned to 64 bytes.
void compute_segment(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels, const STORE_SEGMENT_T& segment,
                     double primitive_cutoff, const kernels::BOYS_SERVICE_T& boys, QUARTET_WORK_T& work, double* out);

/// Size of a store before it is planned.
struct STORE_SIZE_T {
  std::int64_t quartets = 0;
  std::int64_t integrals = 0;
};
STORE_SIZE_T count_integrals(const SHELL_PAIRS_T& data, double threshold);

/// All integrals of canonical quartets (i >= j, k >= l, ij >= kl in the order of the pair lists) with Q_ij Q_kl >=
/// threshold, in the lane order of the vector kernels, so that the digestion code of direct builds reads them as one stream
/// of memory.
class ERI_STORE_T {
 public:
  /// Plans the store; nothing is allocated or computed.
  ERI_STORE_T(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels, double threshold);

  std::int64_t quartets() const { return quartets_; }
  std::int64_t integrals() const { return integrals_; }
  /// Bytes of the array, unused lanes included.
  std::int64_t bytes() const { return static_cast<std::int64_t>(8 * doubles_); }

  /// Computes all integrals, in parallel. Stops the run when the memory is not there.
  void fill(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels);

  /// Coulomb and exchange matrices of symmetric densities over bare components, J and K digested together from one pass.
  void contract(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels, std::span<const MATRIX> for_j,
                std::span<const MATRIX> for_k, std::vector<MATRIX>& j, std::vector<MATRIX>& k) const;

  /// Descriptor of ket number `ket` of a segment, and the integrals themselves.
  QUARTET_INFO_T quartet(const SHELL_PAIRS_T& data, const STORE_SEGMENT_T& segment, int ket) const;
  const std::vector<STORE_SEGMENT_T>& segments() const { return segments_; }
  const double* values() const { return values_.data(); }

 private:
  std::vector<STORE_SEGMENT_T> segments_;  ///< in the order of the array, the segments of a bra together
  std::int64_t quartets_ = 0;
  std::int64_t integrals_ = 0;
  std::size_t doubles_ = 0;
  int lanes_ = 1;
  double primitive_cutoff_ = 0.0;
  ALIGNED_DOUBLES values_;
};

}  // namespace zentrix::INTEGRALS_2E

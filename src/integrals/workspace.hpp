#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

#include "integrals/shell_pairs.hpp"

namespace zentrix::INTEGRALS_2E {

/// Doubles at cache-line addresses, not initialised. Large arrays ask the system for large pages: filling gigabytes in pages
/// of 4 KiB costs more than computing the integrals.
class ALIGNED_DOUBLES {
 public:
  ALIGNED_DOUBLES() = default;
  /// Throws std::bad_alloc.
  explicit ALIGNED_DOUBLES(std::size_t n);
  double* data() { return data_.get(); }
  const double* data() const { return data_.get(); }
  std::size_t size() const { return size_; }
  double& operator[](std::size_t n) { return data_.get()[n]; }

 private:
  struct FREE {
    void operator()(double* p) const { std::free(p); }
  };
  std::unique_ptr<double, FREE> data_;
  std::size_t size_ = 0;
};

/// Doubles of scratch that fronts and backs up to angular momentum l need.
std::size_t scratch_doubles(int l, int max_primitives, int lanes);
/// The same for all pairs of a molecule; those with several contractions need more.
std::size_t scratch_doubles(const SHELL_PAIRS_T& data, int lanes);
/// Doubles of the rows (ab|f] that a front leaves, up to angular momentum l and for all pairs of a molecule.
std::size_t row_doubles(int l, int lanes);
std::size_t row_doubles(const SHELL_PAIRS_T& data, int lanes);

/// The same for the kernels of the exchange gradient with that many densities.
std::size_t gradient_scratch_doubles(int l, int max_primitives, int lanes, int n_densities);

/// Buffers of one thread for the quartet kernels, made once per build.
struct QUARTET_WORK_T {
  ALIGNED_DOUBLES scratch;
  ALIGNED_DOUBLES rows;
  std::vector<double> block;  ///< of the scalar kernel
  QUARTET_WORK_T(int l, int max_primitives, int lanes)
      : scratch(scratch_doubles(l, max_primitives, lanes)), rows(row_doubles(l, lanes)) {}
  QUARTET_WORK_T(const SHELL_PAIRS_T& data, int lanes)
      : scratch(scratch_doubles(data, lanes)), rows(row_doubles(data, lanes)) {}
};

}  // namespace zentrix::INTEGRALS_2E

#pragma once

#include <cstddef>
#include <memory>
#include <new>

#include "integrals/shell_pairs.hpp"

namespace zentrix::INTEGRALS_2E {

/// Doubles at cache-line addresses, not initialised.
class ALIGNED_DOUBLES {
 public:
  ALIGNED_DOUBLES() = default;
  explicit ALIGNED_DOUBLES(std::size_t n)
      : data_(static_cast<double*>(::operator new(n * sizeof(double), LINE))), size_(n) {}
  double* data() { return data_.get(); }
  const double* data() const { return data_.get(); }
  std::size_t size() const { return size_; }
  double& operator[](std::size_t n) { return data_.get()[n]; }

 private:
  static constexpr std::align_val_t LINE{64};
  struct FREE {
    void operator()(double* p) const { ::operator delete(p, LINE); }
  };
  std::unique_ptr<double, FREE> data_;
  std::size_t size_ = 0;
};

/// Doubles of scratch that fronts and backs up to angular momentum l need.
std::size_t scratch_doubles(int l, int max_primitives, int lanes);
/// Doubles of the rows (ab|f] that a front leaves.
std::size_t row_doubles(int l, int lanes);

/// Buffers of one thread for the quartet kernels, made once per build.
struct QUARTET_WORK_T {
  ALIGNED_DOUBLES scratch;
  ALIGNED_DOUBLES rows;
  QUARTET_WORK_T(int l, int max_primitives, int lanes)
      : scratch(scratch_doubles(l, max_primitives, lanes)), rows(row_doubles(l, lanes)) {}
};

}  // namespace zentrix::INTEGRALS_2E

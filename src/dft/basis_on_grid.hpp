#pragma once

#include <vector>

#include "dft/grid_batches.hpp"
#include "dft/kernels/grid_kernels.hpp"
#include "simd/aligned_vector.hpp"

namespace zentrix::DFT {

/// Values of the basis functions and their derivatives at the points of a batch, computed on demand or kept from one use to
/// the next.
class BASIS_ON_GRID_T {
 public:
  /// `order`: 0 values, 1 with gradients, 2 with second derivatives. `molecule` and `batches` must outlive the object.
  BASIS_ON_GRID_T(const MOLECULE_T& molecule, const GRID_BATCHES_T& batches, int order);

  int order() const { return order_; }
  /// Arrays per batch: 1, 4 or 10.
  std::size_t components() const { return order_ == 0 ? 1 : order_ == 1 ? 4 : 10; }

  /// Keeps the values of as many batches as fit into so many bytes; the first ones, which cost most.
  void keep(std::size_t bytes);

  /// Component q of function number f of the batch at its point p: [(q * functions + f) * points + p]. Computed into
  /// `scratch` (resized at need) unless kept.
  const double* values(std::size_t batch, ALIGNED_VECTOR& scratch) const;

  /// Doubles of one batch.
  std::size_t size_of(std::size_t batch) const;

 private:
  void compute(std::size_t batch, double* out) const;

  const GRID_BATCHES_T& batches_;
  int order_;
  kernels::GRID_KERNELS_T kernels_;
  std::vector<std::vector<double>> transforms_;  ///< per angular momentum, row by row

  std::vector<kernels::GRID_SHELL_T> shells_;
  std::vector<ALIGNED_VECTOR> kept_;
};

}  // namespace zentrix::DFT

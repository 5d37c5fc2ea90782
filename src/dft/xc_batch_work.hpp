#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <vector>

#include "dft/basis_on_grid.hpp"
#include "dft/functional_catalogue.hpp"
#include "dft/grid_batches.hpp"
#include "dft/xc_evaluator.hpp"
#include "linalg/matrix.hpp"

// What every integration over the grid shares: densities and functional values at the points of a batch.

namespace zentrix::DFT {

/// What one thread works with, allocated once: arrays over the points of a batch, arrays over functions and points, and the
/// thread's sums.
struct XC_WORKSPACE_T {
  static constexpr std::size_t max_channels = 2;
  ALIGNED_VECTOR basis;
  ALIGNED_VECTOR product, scaled;                                        ///< functions x points
  std::array<MATRIX, max_channels> local_density;                        ///< functions x functions
  std::array<std::array<std::vector<double>, 4>, max_channels> density;  ///< rho and its gradient, per channel
  std::array<std::vector<double>, max_channels> tau;
  std::vector<double> variables, energy, first;  ///< of the evaluator
  std::array<std::vector<double>, 4> factors;    ///< per point, of the terms of the potential
  std::vector<double> sums;
  double xc_energy = 0.0;
  double electrons = 0.0;
  std::size_t bad_point = std::numeric_limits<std::size_t>::max();  ///< first point whose density makes no sense
};

/// A functional on the grid of a molecule, in batches. `order`: derivatives of the basis functions that are wanted.
struct XC_BATCH_WORK_T {
  MOLECULE_T molecule;
  FUNCTIONAL_T functional;
  std::size_t channels;
  XC_EVALUATOR_T evaluator;
  GRID_BATCHES_T batches;
  BASIS_ON_GRID_T basis;
  kernels::GRID_KERNELS_T kernels;

  XC_BATCH_WORK_T(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid, const FUNCTIONAL_T& functional,
                  int channels, int order);
  XC_BATCH_WORK_T(const XC_BATCH_WORK_T&) = delete;
  XC_BATCH_WORK_T& operator=(const XC_BATCH_WORK_T&) = delete;

  void allocate(XC_WORKSPACE_T& work) const;
  /// The blocks of the density matrices that the batch's functions need.
  void gather(std::span<const MATRIX> densities, const GRID_BATCH_T& batch, XC_WORKSPACE_T& work) const;
  /// rho_s, grad rho_s = 2 sum (grad phi) (D phi) and tau_s = 1/2 sum_k (d_k phi) (D d_k phi) at the points of a batch.
  /// Leaves D phi of the last channel in `product` unless the functional needs tau.
  void densities_of_batch(const GRID_BATCH_T& batch, const double* values, XC_WORKSPACE_T& work) const;
  /// Energy density and its derivatives at the points of a batch; energy and electrons are added up.
  void evaluate(const GRID_BATCH_T& batch, XC_WORKSPACE_T& work) const;
  /// Adds the batch's electrons and notes the first point where the density makes no sense.
  void count_electrons(const GRID_BATCH_T& batch, XC_WORKSPACE_T& work) const;
  /// Weight times the vector g_s of the potential (rows 1 to 3 of `factors`) and, in row 0, weight times v_rho.
  void potential_factors(std::size_t channel, const GRID_BATCH_T& batch, XC_WORKSPACE_T& work) const;
  /// dE/dtau_s at the points.
  const double* tau_derivative(std::size_t channel, const XC_WORKSPACE_T& work) const;
  /// Stops the run when a thread has met a density that makes no sense.
  void check(const XC_WORKSPACE_T& work) const;

  /// out (points x functions) = a (points x functions) . m (functions x functions), all column by column.
  static void multiply(const GRID_BATCH_T& batch, const double* a, const MATRIX& m, double* out);
};

}  // namespace zentrix::DFT

#include "dft/partition.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "dft/atomic_scales.hpp"
#include "simd/aligned_vector.hpp"

namespace zentrix::DFT_GRID {
namespace {

/// Memory of the calling thread for the kernels; it lives as long as the thread.
double* scratch(std::size_t doubles) {
  thread_local ALIGNED_VECTOR memory;
  if (memory.size() < doubles) memory.resize(doubles);
  return memory.data();
}

}  // namespace

double size_adjustment(SIZE_ADJUSTMENT kind, double radius_i, double radius_j) {
  if (kind == SIZE_ADJUSTMENT::none) return 0.0;
  const double ratio = radius_i / radius_j;
  const double chi = kind == SIZE_ADJUSTMENT::treutler ? std::sqrt(ratio) : ratio;
  const double u = (chi - 1.0) / (chi + 1.0);
  return std::clamp(u / (u * u - 1.0), -0.5, 0.5);
}

PARTITION_T::PARTITION_T(const MOLECULE_T& molecule, SIZE_ADJUSTMENT adjustment) : isa_(kernels::chosen_isa()) {
  const std::size_t n = molecule.atoms.size();
  std::vector<double> radius;
  for (const ATOM_T& atom : molecule.atoms) {
    x_.push_back(atom.position[0]);
    y_.push_back(atom.position[1]);
    z_.push_back(atom.position[2]);
    radius.push_back(bragg_slater_radius(atom.z));
  }
  inverse_distance_.resize(n * n);
  adjustment_.resize(n * n);
  neighbours_.resize(n * n);
#pragma omp parallel for schedule(static)
  for (std::size_t i = 0; i < n; ++i) {
    std::vector<double> squared(n);
    for (std::size_t j = 0; j < n; ++j) {
      const double dx = x_[i] - x_[j];
      const double dy = y_[i] - y_[j];
      const double dz = z_[i] - z_[j];
      squared[j] = j == i ? -1.0 : dx * dx + dy * dy + dz * dz;
      if (squared[j] <= 0.0) continue;
      inverse_distance_[i * n + j] = 1.0 / std::sqrt(squared[j]);
      adjustment_[i * n + j] = size_adjustment(adjustment, radius[i], radius[j]);
    }
    int* order = neighbours_.data() + i * n;
    std::iota(order, order + n, 0);
    std::stable_sort(order, order + n, [&](int j, int k) { return squared[j] < squared[k]; });
  }
}

kernels::FUZZY_CELLS_T PARTITION_T::cells() const {
  return {n_atoms(), x_.data(), y_.data(), z_.data(), inverse_distance_.data(), adjustment_.data(), neighbours_.data()};
}

void PARTITION_T::weights(int owner, int n, const double* x, const double* y, const double* z, double negligible,
                          double* weight) const {
  double* memory = scratch(kernels::CELL_WEIGHTS_SCRATCH * x_.size());
  ZX_PICK(isa_, cell_weights)(cells(), {owner, n, x, y, z}, negligible, memory, weight);
}

void PARTITION_T::add_gradient(int owner, int n, const double* x, const double* y, const double* z, const double* value,
                               double* gradient) const {
  double* memory = scratch(kernels::CELL_GRADIENT_SCRATCH * x_.size());
  ZX_PICK(isa_, cell_gradient)(cells(), {owner, n, x, y, z}, value, memory, gradient);
}

}  // namespace zentrix::DFT_GRID

#include "dft/xc_gradient.hpp"

#include <omp.h>

#include <array>
#include <vector>

#include "dft/partition.hpp"
#include "dft/xc_batch_work.hpp"

// With X = D phi, Y_l = D d_l phi and the factors v_rho, g, v_tau of the potential, moving the centre of function m by dA
// changes the integrand at a fixed point by
//   -2 { d_k phi_m M_m + sum_l d_kl phi_m (g_l X_m + v_tau/2 Y_lm) },   M = D (v_rho phi + sum_l g_l d_l phi).
// Moving a point is moving all centres the other way, which takes care of the points that ride on the atom.

namespace zentrix::DFT {
namespace {

struct WORKSPACE_T : XC_WORKSPACE_T {
  ALIGNED_VECTOR x, m;                           ///< D phi and M, functions x points
  std::array<ALIGNED_VECTOR, 3> y;               ///< D d_l phi
  std::array<std::vector<double>, 3> per_point;  ///< sum over functions at every point
  std::vector<double> per_function;              ///< 3 sums of every function
  std::vector<double> weighted_energy;
  VECTOR gradient;
};

class GRADIENT_T : public XC_BATCH_WORK_T {
 public:
  GRADIENT_T(const MOLECULE_T& molecule_in, const DFT_GRID::MOLECULAR_GRID_T& grid, const FUNCTIONAL_T& functional_in,
             int channels_in)
      : XC_BATCH_WORK_T(molecule_in, grid, functional_in, channels_in, functional_in.needs_gradient ? 2 : 1),
        partition_(molecule, DFT_GRID::grid_level(grid.level).size_adjustment) {
    for (const SHELL_T& shell : molecule.shells)
      atom_of_function_.insert(atom_of_function_.end(), static_cast<std::size_t>(shell.nfunc), shell.atom);
  }

  VECTOR run(std::span<const MATRIX> densities) const {
    std::vector<WORKSPACE_T> spaces(static_cast<std::size_t>(omp_get_max_threads()));
#pragma omp parallel
    {
      WORKSPACE_T& work = spaces[static_cast<std::size_t>(omp_get_thread_num())];
      allocate_all(work);
#pragma omp for schedule(static, 1)
      for (std::size_t b = 0; b < batches.batches.size(); ++b) add_batch(b, densities, work);
    }
    VECTOR gradient = VECTOR::Zero(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
    for (const WORKSPACE_T& work : spaces) {
      check(work);
      if (work.gradient.size() > 0) gradient += work.gradient;
    }
    return gradient;
  }

 private:
  void allocate_all(WORKSPACE_T& work) const {
    allocate(work);
    const std::size_t values = batches.largest_points * batches.largest_functions;
    work.x.resize(values);
    work.m.resize(values);
    if (functional.needs_tau)
      for (ALIGNED_VECTOR& y : work.y) y.resize(values);
    for (auto& sums : work.per_point) sums.resize(batches.largest_points);
    work.per_function.resize(3 * batches.largest_functions);
    work.weighted_energy.resize(batches.largest_points);
    work.gradient = VECTOR::Zero(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
  }

  void add_batch(std::size_t b, std::span<const MATRIX> densities, WORKSPACE_T& work) const {
    const GRID_BATCH_T& batch = batches.batches[b];
    const double* values = basis.values(b, work.basis);
    gather(densities, batch, work);
    densities_of_batch(batch, values, work);
    count_electrons(batch, work);
    evaluate(batch, work);
    for (std::size_t s = 0; s < channels; ++s) add_channel(s, batch, values, work);
    add_weights(batch, work);
  }

  void add_channel(std::size_t s, const GRID_BATCH_T& batch, const double* values, WORKSPACE_T& work) const {
    const std::size_t functions = batch.functions.size();
    const std::size_t stride = functions * batch.points;
    std::array<const double*, 4> factors = {};
    for (std::size_t q = 0; q < 4; ++q) factors[q] = work.factors[q].data();
    potential_factors(s, batch, work);
    kernels.point_scale(functional.needs_gradient ? 4 : 1, functions, batch.points, factors.data(), values, stride,
                        work.scaled.data());
    multiply(batch, work.scaled.data(), work.local_density[s], work.m.data());
    kernels::CENTRE_TERMS_T terms;
    terms.values = values;
    terms.stride = stride;
    terms.m = work.m.data();
    if (functional.needs_gradient) {
      multiply(batch, values, work.local_density[s], work.x.data());
      terms.x = work.x.data();
      for (std::size_t l = 0; l < 3; ++l) terms.g[l] = factors[l + 1];
    }
    if (functional.needs_tau) {
      const double* v_tau = tau_derivative(s, work);
      const double* weight = &batches.weight[batch.first];
      for (std::size_t p = 0; p < batch.points; ++p) work.sums[p] = 0.5 * weight[p] * v_tau[p];
      terms.half_v_tau = work.sums.data();
      for (std::size_t l = 0; l < 3; ++l) {
        multiply(batch, values + (l + 1) * stride, work.local_density[s], work.y[l].data());
        terms.y[l] = work.y[l].data();
      }
    }
    std::array<double*, 3> per_point = {};
    for (std::size_t k = 0; k < 3; ++k) {
      std::fill(work.per_point[k].begin(), work.per_point[k].end(), 0.0);
      per_point[k] = work.per_point[k].data();
    }
    kernels.centre_sums(terms, functions, batch.points, work.per_function.data(), per_point.data());
    for (std::size_t f = 0; f < functions; ++f) {
      const int atom = atom_of_function_[static_cast<std::size_t>(batch.functions[f])];
      for (int k = 0; k < 3; ++k)
        work.gradient(3 * atom + k) -= 2.0 * work.per_function[3 * f + static_cast<std::size_t>(k)];
    }
    for (std::size_t p = 0; p < batch.points; ++p) {
      const int owner = batches.atom[batch.first + p];
      for (int k = 0; k < 3; ++k) work.gradient(3 * owner + k) += 2.0 * work.per_point[static_cast<std::size_t>(k)][p];
    }
  }

  /// The change of the weights, for runs of points that one atom owns.
  void add_weights(const GRID_BATCH_T& batch, WORKSPACE_T& work) const {
    for (std::size_t p = 0; p < batch.points; ++p)
      work.weighted_energy[p] = batches.weight[batch.first + p] * work.energy[p];
    std::size_t start = 0;
    while (start < batch.points) {
      const std::size_t at = batch.first + start;
      std::size_t count = 1;
      while (start + count < batch.points && batches.atom[at + count] == batches.atom[at]) ++count;
      partition_.add_gradient(batches.atom[at], static_cast<int>(count), &batches.x[at], &batches.y[at], &batches.z[at],
                              &work.weighted_energy[start], work.gradient.data());
      start += count;
    }
  }

  DFT_GRID::PARTITION_T partition_;
  std::vector<int> atom_of_function_;
};

}  // namespace

VECTOR xc_gradient(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid, const FUNCTIONAL_T& functional,
                   std::span<const MATRIX> densities) {
  return GRADIENT_T(molecule, grid, functional, static_cast<int>(densities.size())).run(densities);
}

}  // namespace zentrix::DFT

#include "dft/xc_integrator.hpp"

#include <cblas.h>
#include <omp.h>

#include <array>

#include "dft/xc_batch_work.hpp"

namespace zentrix::DFT {
namespace {

struct WORKSPACE_T : XC_WORKSPACE_T {
  MATRIX local_potential;
  std::vector<MATRIX> potentials;  ///< the thread's share
};

/// m = beta m + a^T b over the points of a batch.
void accumulate(const GRID_BATCH_T& batch, const double* a, const double* b, double beta, MATRIX& m) {
  const int n = static_cast<int>(batch.points);
  const int f = static_cast<int>(batch.functions.size());
  cblas_dgemm(CblasColMajor, CblasTrans, CblasNoTrans, f, f, n, 1.0, a, n, b, n, beta, m.data(), f);
}

}  // namespace

struct XC_INTEGRATOR_T::IMPLEMENTATION : XC_BATCH_WORK_T {
  using XC_BATCH_WORK_T::XC_BATCH_WORK_T;

  void add_potential(std::size_t channel, const GRID_BATCH_T& batch, const double* values, WORKSPACE_T& work) const;
  void scatter(std::size_t channel, const GRID_BATCH_T& batch, WORKSPACE_T& work) const;
  XC_RESULT_T run(std::span<const MATRIX> densities) const;
};

/// The batch's part of V_s = A + A^T with A = phi^T (w (v_rho/2) phi + w g . grad phi) + sum_k (d_k phi)^T (w v_tau/4) d_k
/// phi.
void XC_INTEGRATOR_T::IMPLEMENTATION::add_potential(std::size_t s, const GRID_BATCH_T& batch, const double* values,
                                                    WORKSPACE_T& work) const {
  const std::size_t functions = batch.functions.size();
  const std::size_t value_stride = functions * batch.points;
  std::array<const double*, 4> factors = {};
  for (std::size_t q = 0; q < 4; ++q) factors[q] = work.factors[q].data();
  potential_factors(s, batch, work);
  for (std::size_t p = 0; p < batch.points; ++p) work.factors[0][p] *= 0.5;

  const auto f = static_cast<Eigen::Index>(functions);
  work.local_potential.resize(f, f);
  kernels.point_scale(functional.needs_gradient ? 4 : 1, functions, batch.points, factors.data(), values, value_stride,
                      work.scaled.data());
  accumulate(batch, values, work.scaled.data(), 0.0, work.local_potential);
  if (functional.needs_tau) {
    const double* v_tau = tau_derivative(s, work);
    const double* weight = &batches.weight[batch.first];
    for (std::size_t p = 0; p < batch.points; ++p) work.factors[0][p] = 0.25 * weight[p] * v_tau[p];
    for (std::size_t q = 1; q < 4; ++q) {
      const double* gradient = values + q * value_stride;
      kernels.point_scale(1, functions, batch.points, factors.data(), gradient, value_stride, work.scaled.data());
      accumulate(batch, gradient, work.scaled.data(), 1.0, work.local_potential);
    }
  }
  scatter(s, batch, work);
}

void XC_INTEGRATOR_T::IMPLEMENTATION::scatter(std::size_t s, const GRID_BATCH_T& batch, WORKSPACE_T& work) const {
  MATRIX& whole = work.potentials[s];
  for (std::size_t j = 0; j < batch.functions.size(); ++j) {
    double* column = whole.col(batch.functions[j]).data();
    const double* local = work.local_potential.col(static_cast<Eigen::Index>(j)).data();
    for (std::size_t i = 0; i < batch.functions.size(); ++i) column[batch.functions[i]] += local[i];
  }
}

XC_RESULT_T XC_INTEGRATOR_T::IMPLEMENTATION::run(std::span<const MATRIX> densities) const {
  const bool with_potentials = !functional.components.empty();
  std::vector<WORKSPACE_T> spaces(static_cast<std::size_t>(omp_get_max_threads()));
#pragma omp parallel
  {
    WORKSPACE_T& work = spaces[static_cast<std::size_t>(omp_get_thread_num())];
    allocate(work);
    if (with_potentials) work.potentials.assign(channels, MATRIX::Zero(molecule.n_basis, molecule.n_basis));
      // Batches are sorted by cost, so dealing them out in turn balances the threads and keeps the sums reproducible.
#pragma omp for schedule(static, 1)
    for (std::size_t b = 0; b < batches.batches.size(); ++b) {
      const GRID_BATCH_T& batch = batches.batches[b];
      const double* values = basis.values(b, work.basis);
      gather(densities, batch, work);
      densities_of_batch(batch, values, work);
      count_electrons(batch, work);
      if (!with_potentials) continue;
      evaluate(batch, work);
      for (std::size_t s = 0; s < channels; ++s) add_potential(s, batch, values, work);
    }
  }
  XC_RESULT_T result;
  if (with_potentials) result.potentials.assign(channels, MATRIX::Zero(molecule.n_basis, molecule.n_basis));
  for (const WORKSPACE_T& work : spaces) {
    result.energy += work.xc_energy;
    result.electrons += work.electrons;
    check(work);
    for (std::size_t s = 0; s < work.potentials.size(); ++s) result.potentials[s] += work.potentials[s];
  }
  for (MATRIX& potential : result.potentials) potential = (potential + potential.transpose()).eval();
  return result;
}

XC_INTEGRATOR_T::XC_INTEGRATOR_T(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid,
                                 const FUNCTIONAL_T& functional, int channels)
    : implementation_(
          std::make_unique<IMPLEMENTATION>(molecule, grid, functional, channels, functional.needs_gradient ? 1 : 0)) {}
XC_INTEGRATOR_T::~XC_INTEGRATOR_T() = default;

void XC_INTEGRATOR_T::keep_values(std::size_t bytes) { implementation_->basis.keep(bytes); }

XC_RESULT_T XC_INTEGRATOR_T::integrate(std::span<const MATRIX> densities) const { return implementation_->run(densities); }

double integrate_density(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid, const MATRIX& density) {
  const XC_INTEGRATOR_T integrator(molecule, grid, FUNCTIONAL_T{}, 1);  // no components: values only
  return integrator.integrate(std::span<const MATRIX>(&density, 1)).electrons;
}

}  // namespace zentrix::DFT

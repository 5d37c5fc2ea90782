#include "dft/xc_integrator.hpp"

#include <cblas.h>
#include <fmt/format.h>
#include <omp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "dft/basis_on_grid.hpp"
#include "dft/grid_batches.hpp"
#include "dft/xc_evaluator.hpp"
#include "report/stop.hpp"

namespace zentrix::DFT {
namespace {

/// Basis functions below this everywhere in a batch are left out of it.
constexpr double value_cutoff = 1e-12;

/// No density is as high as this, electrons per bohr^3 (at the nucleus of radon it is about 1e6): orbitals have exploded.
constexpr double absurd_density = 1e12;

constexpr std::size_t max_channels = 2;
constexpr std::size_t max_variables = 7;

/// What one thread works with, allocated once: arrays over the points of a batch (`points_max` apart), arrays over functions
/// and points, and the thread's share of the potentials.
struct WORKSPACE_T {
  ALIGNED_VECTOR basis;
  ALIGNED_VECTOR product, scaled;                  ///< functions x points
  std::array<MATRIX, max_channels> local_density;  ///< functions x functions
  MATRIX local_potential;
  std::array<std::array<std::vector<double>, 4>, max_channels> density;  ///< rho and its gradient, per channel
  std::array<std::vector<double>, max_channels> tau;
  std::vector<double> variables, energy, first;  ///< of the evaluator
  std::array<std::vector<double>, 4> factors;    ///< of the potential
  std::vector<double> sums;
  std::vector<MATRIX> potentials;
  double xc_energy = 0.0;
  double electrons = 0.0;
  std::size_t bad_point = std::numeric_limits<std::size_t>::max();  ///< first point that is not finite
};

int as_int(std::size_t n) { return static_cast<int>(n); }

}  // namespace

struct XC_INTEGRATOR_T::IMPLEMENTATION {
  MOLECULE_T molecule;
  FUNCTIONAL_T functional;
  std::size_t channels;
  XC_EVALUATOR_T evaluator;
  GRID_BATCHES_T batches;
  BASIS_ON_GRID_T basis;
  kernels::GRID_KERNELS_T kernels;

  IMPLEMENTATION(const MOLECULE_T& molecule_in, const DFT_GRID::MOLECULAR_GRID_T& grid, const FUNCTIONAL_T& functional_in,
                 int channels_in)
      : molecule(molecule_in),
        functional(functional_in),
        channels(static_cast<std::size_t>(channels_in)),
        evaluator(functional_in, channels_in),
        batches(make_batches(molecule, grid, value_cutoff)),
        basis(molecule, batches, functional_in.needs_gradient || functional_in.needs_tau ? 1 : 0),
        kernels(ZX_PICK(kernels::chosen_isa(), grid_kernels)()) {}

  WORKSPACE_T make_workspace(bool with_potentials) const;
  void gather(std::span<const MATRIX> densities, const GRID_BATCH_T& batch, WORKSPACE_T& work) const;
  void densities_of_batch(std::size_t batch, const double* values, bool gradients, WORKSPACE_T& work) const;
  void evaluate(const GRID_BATCH_T& batch, WORKSPACE_T& work) const;
  void add_potential(std::size_t channel, const GRID_BATCH_T& batch, const double* values, WORKSPACE_T& work) const;
  void scatter(std::size_t channel, const GRID_BATCH_T& batch, WORKSPACE_T& work) const;
  void count_electrons(const GRID_BATCH_T& batch, WORKSPACE_T& work) const;
  XC_RESULT_T run(std::span<const MATRIX> densities) const;

  /// out (points x functions) = a (points x functions) . m (functions x functions), all column by column.
  static void multiply(const GRID_BATCH_T& batch, const double* a, const MATRIX& m, double* out) {
    const int n = as_int(batch.points), f = as_int(batch.functions.size());
    cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, f, f, 1.0, a, n, m.data(), f, 0.0, out, n);
  }
  /// m += a^T b.
  static void accumulate(const GRID_BATCH_T& batch, const double* a, const double* b, double beta, MATRIX& m) {
    const int n = as_int(batch.points), f = as_int(batch.functions.size());
    cblas_dgemm(CblasColMajor, CblasTrans, CblasNoTrans, f, f, n, 1.0, a, n, b, n, beta, m.data(), f);
  }
};

WORKSPACE_T XC_INTEGRATOR_T::IMPLEMENTATION::make_workspace(bool with_potentials) const {
  WORKSPACE_T work;
  const std::size_t points = batches.largest_points;
  const std::size_t values = points * batches.largest_functions;
  work.basis.resize(values * basis.components());
  work.product.resize(values);
  work.scaled.resize(values);
  for (std::size_t s = 0; s < channels; ++s) {
    for (auto& array : work.density[s]) array.resize(points);
    work.tau[s].resize(points);
  }
  work.variables.resize(max_variables * points);
  work.first.resize(max_variables * points);
  work.energy.resize(points);
  for (auto& array : work.factors) array.resize(points);
  work.sums.resize(points);
  if (with_potentials) work.potentials.assign(channels, MATRIX::Zero(molecule.n_basis, molecule.n_basis));
  return work;
}

void XC_INTEGRATOR_T::IMPLEMENTATION::gather(std::span<const MATRIX> densities, const GRID_BATCH_T& batch,
                                             WORKSPACE_T& work) const {
  const auto f = static_cast<Eigen::Index>(batch.functions.size());
  for (std::size_t s = 0; s < channels; ++s) {
    MATRIX& local = work.local_density[s];
    local.resize(f, f);
    for (Eigen::Index j = 0; j < f; ++j) {
      const auto column = densities[s].col(batch.functions[static_cast<std::size_t>(j)]);
      for (Eigen::Index i = 0; i < f; ++i) local(i, j) = column(batch.functions[static_cast<std::size_t>(i)]);
    }
  }
}

/// rho_s, grad rho_s = 2 sum (grad phi) (D phi) and tau_s = 1/2 sum_k (d_k phi) (D d_k phi) at the points of a batch.
void XC_INTEGRATOR_T::IMPLEMENTATION::densities_of_batch(std::size_t index, const double* values, bool gradients,
                                                         WORKSPACE_T& work) const {
  const GRID_BATCH_T& batch = batches.batches[index];
  const std::size_t functions = batch.functions.size();
  const std::size_t stride = functions * batch.points;
  for (std::size_t s = 0; s < channels; ++s) {
    multiply(batch, values, work.local_density[s], work.product.data());
    std::array<double*, 4> sums = {};
    for (std::size_t q = 0; q < 4; ++q) sums[q] = work.density[s][q].data();
    kernels.point_sums(gradients ? 4 : 1, functions, batch.points, values, stride, work.product.data(), sums.data());
    if (!gradients) continue;
    for (std::size_t q = 1; q < 4; ++q)
      for (std::size_t p = 0; p < batch.points; ++p) work.density[s][q][p] *= 2.0;
    if (!functional.needs_tau) continue;
    std::fill(work.tau[s].begin(), work.tau[s].end(), 0.0);
    for (std::size_t q = 1; q < 4; ++q) {
      const double* derivative = values + q * stride;
      multiply(batch, derivative, work.local_density[s], work.product.data());
      double* sum = work.sums.data();
      kernels.point_sums(1, functions, batch.points, derivative, stride, work.product.data(), &sum);
      for (std::size_t p = 0; p < batch.points; ++p) work.tau[s][p] += 0.5 * work.sums[p];
    }
  }
}

/// Energy density and its derivatives at the points of a batch; energy and electrons are added up.
void XC_INTEGRATOR_T::IMPLEMENTATION::evaluate(const GRID_BATCH_T& batch, WORKSPACE_T& work) const {
  const std::size_t stride = batches.largest_points;
  double* variable = work.variables.data();
  const auto append = [&](auto&& value) {
    for (std::size_t p = 0; p < batch.points; ++p) variable[p] = value(p);
    variable += stride;
  };
  for (std::size_t s = 0; s < channels; ++s) append([&](std::size_t p) { return work.density[s][0][p]; });
  if (functional.needs_gradient) {
    for (std::size_t s = 0; s < channels; ++s) {
      for (std::size_t t = s; t < channels; ++t) {
        const auto& a = work.density[s];
        const auto& b = work.density[t];
        append([&](std::size_t p) { return a[1][p] * b[1][p] + a[2][p] * b[2][p] + a[3][p] * b[3][p]; });
      }
    }
  }
  if (functional.needs_tau)
    for (std::size_t s = 0; s < channels; ++s) append([&](std::size_t p) { return work.tau[s][p]; });

  evaluator.evaluate(as_int(batch.points), as_int(stride), work.variables.data(), work.energy.data(), work.first.data());
  double energy = 0.0;
  for (std::size_t p = 0; p < batch.points; ++p) energy += batches.weight[batch.first + p] * work.energy[p];
  work.xc_energy += energy;
  if (!std::isfinite(energy)) work.bad_point = std::min(work.bad_point, batch.first);
}

/// Adds the batch's electrons and notes the first point where the density makes no sense.
void XC_INTEGRATOR_T::IMPLEMENTATION::count_electrons(const GRID_BATCH_T& batch, WORKSPACE_T& work) const {
  for (std::size_t s = 0; s < channels; ++s) {
    for (std::size_t p = 0; p < batch.points; ++p) {
      const double density = work.density[s][0][p];
      work.electrons += batches.weight[batch.first + p] * density;
      if (!(std::abs(density) < absurd_density)) work.bad_point = std::min(work.bad_point, batch.first + p);
    }
  }
}

/// The batch's part of V_s = A + A^T with A = phi^T (w (v_rho/2) phi + w g . grad phi) + sum_k (d_k phi)^T (w v_tau/4) d_k
/// phi.
void XC_INTEGRATOR_T::IMPLEMENTATION::add_potential(std::size_t s, const GRID_BATCH_T& batch, const double* values,
                                                    WORKSPACE_T& work) const {
  const std::size_t stride = batches.largest_points;
  const std::size_t functions = batch.functions.size();
  const std::size_t value_stride = functions * batch.points;
  const double* weight = &batches.weight[batch.first];
  const auto derivative = [&](std::size_t variable) { return work.first.data() + variable * stride; };
  std::array<const double*, 4> factors = {};
  for (std::size_t q = 0; q < 4; ++q) factors[q] = work.factors[q].data();

  const double* v_rho = derivative(s);
  for (std::size_t p = 0; p < batch.points; ++p) work.factors[0][p] = 0.5 * weight[p] * v_rho[p];
  if (functional.needs_gradient) {
    // sigma variables follow the densities: one for a closed shell; aa, ab, bb for an open one.
    const double* v_same = derivative(channels == 1 ? 1 : 2 + 2 * s);
    const double* v_mixed = channels == 1 ? nullptr : derivative(3);
    for (std::size_t q = 1; q < 4; ++q) {
      const double* own = work.density[s][q].data();
      const double* other = channels == 1 ? nullptr : work.density[1 - s][q].data();
      for (std::size_t p = 0; p < batch.points; ++p) {
        double g = 2.0 * v_same[p] * own[p];
        if (other != nullptr) g += v_mixed[p] * other[p];
        work.factors[q][p] = weight[p] * g;
      }
    }
  }
  const auto f = static_cast<Eigen::Index>(functions);
  work.local_potential.resize(f, f);
  kernels.point_scale(functional.needs_gradient ? 4 : 1, functions, batch.points, factors.data(), values, value_stride,
                      work.scaled.data());
  accumulate(batch, values, work.scaled.data(), 0.0, work.local_potential);
  if (functional.needs_tau) {
    const double* v_tau = derivative((channels == 1 ? 2 : 5) + s);
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
  const bool gradients = basis.order() > 0;
  std::vector<WORKSPACE_T> spaces(static_cast<std::size_t>(omp_get_max_threads()));
#pragma omp parallel
  {
    WORKSPACE_T& work = spaces[static_cast<std::size_t>(omp_get_thread_num())];
    work = make_workspace(with_potentials);
    // Batches are sorted by cost, so dealing them out in turn balances the threads and keeps the sums reproducible.
#pragma omp for schedule(static, 1)
    for (std::size_t b = 0; b < batches.batches.size(); ++b) {
      const GRID_BATCH_T& batch = batches.batches[b];
      const double* values = basis.values(b, work.basis);
      gather(densities, batch, work);
      densities_of_batch(b, values, gradients, work);
      count_electrons(batch, work);
      if (!with_potentials) continue;
      evaluate(batch, work);
      for (std::size_t s = 0; s < channels; ++s) add_potential(s, batch, values, work);
    }
  }
  XC_RESULT_T result;
  std::size_t bad_point = std::numeric_limits<std::size_t>::max();
  if (with_potentials) result.potentials.assign(channels, MATRIX::Zero(molecule.n_basis, molecule.n_basis));
  for (const WORKSPACE_T& work : spaces) {
    result.energy += work.xc_energy;
    result.electrons += work.electrons;
    bad_point = std::min(bad_point, work.bad_point);
    for (std::size_t s = 0; s < work.potentials.size(); ++s) result.potentials[s] += work.potentials[s];
  }
  if (bad_point < batches.x.size()) {
    throw run_stopped(
        fmt::format(" *** ERROR: The density at the point ({:.6f}, {:.6f}, {:.6f}) bohr makes no sense;\n"
                    "            the exchange-correlation energy cannot be integrated.",
                    batches.x[bad_point], batches.y[bad_point], batches.z[bad_point]));
  }
  for (MATRIX& potential : result.potentials) potential = (potential + potential.transpose()).eval();
  return result;
}

XC_INTEGRATOR_T::XC_INTEGRATOR_T(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid,
                                 const FUNCTIONAL_T& functional, int channels)
    : implementation_(std::make_unique<IMPLEMENTATION>(molecule, grid, functional, channels)) {}
XC_INTEGRATOR_T::~XC_INTEGRATOR_T() = default;

void XC_INTEGRATOR_T::keep_values(std::size_t bytes) { implementation_->basis.keep(bytes); }

XC_RESULT_T XC_INTEGRATOR_T::integrate(std::span<const MATRIX> densities) const { return implementation_->run(densities); }

double integrate_density(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid, const MATRIX& density) {
  const XC_INTEGRATOR_T integrator(molecule, grid, FUNCTIONAL_T{}, 1);  // no components: values only
  return integrator.integrate(std::span<const MATRIX>(&density, 1)).electrons;
}

}  // namespace zentrix::DFT

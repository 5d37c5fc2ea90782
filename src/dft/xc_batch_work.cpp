#include "dft/xc_batch_work.hpp"

#include <cblas.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "report/stop.hpp"

namespace zentrix::DFT {
namespace {

/// Basis functions below this everywhere in a batch are left out of it.
constexpr double value_cutoff = 1e-12;

/// No density is as high as this, electrons per bohr^3 (at the nucleus of radon it is about 1e6): orbitals have exploded.
constexpr double absurd_density = 1e12;

constexpr std::size_t max_variables = 7;

int as_int(std::size_t n) { return static_cast<int>(n); }

}  // namespace

XC_BATCH_WORK_T::XC_BATCH_WORK_T(const MOLECULE_T& molecule_in, const DFT_GRID::MOLECULAR_GRID_T& grid,
                                 const FUNCTIONAL_T& functional_in, int channels_in, int order)
    : molecule(molecule_in),
      functional(functional_in),
      channels(static_cast<std::size_t>(channels_in)),
      evaluator(functional_in, channels_in),
      batches(make_batches(molecule, grid, value_cutoff)),
      basis(molecule, batches, order),
      kernels(ZX_PICK(kernels::chosen_isa(), grid_kernels)()) {}

void XC_BATCH_WORK_T::allocate(XC_WORKSPACE_T& work) const {
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
}

void XC_BATCH_WORK_T::gather(std::span<const MATRIX> densities, const GRID_BATCH_T& batch, XC_WORKSPACE_T& work) const {
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

void XC_BATCH_WORK_T::densities_of_batch(const GRID_BATCH_T& batch, const double* values, XC_WORKSPACE_T& work) const {
  const bool gradients = functional.needs_gradient;
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

void XC_BATCH_WORK_T::evaluate(const GRID_BATCH_T& batch, XC_WORKSPACE_T& work) const {
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

void XC_BATCH_WORK_T::count_electrons(const GRID_BATCH_T& batch, XC_WORKSPACE_T& work) const {
  for (std::size_t s = 0; s < channels; ++s) {
    for (std::size_t p = 0; p < batch.points; ++p) {
      const double density = work.density[s][0][p];
      work.electrons += batches.weight[batch.first + p] * density;
      if (!(std::abs(density) < absurd_density)) work.bad_point = std::min(work.bad_point, batch.first + p);
    }
  }
}

void XC_BATCH_WORK_T::potential_factors(std::size_t s, const GRID_BATCH_T& batch, XC_WORKSPACE_T& work) const {
  const std::size_t stride = batches.largest_points;
  const double* weight = &batches.weight[batch.first];
  const auto derivative = [&](std::size_t variable) { return work.first.data() + variable * stride; };
  const double* v_rho = derivative(s);
  for (std::size_t p = 0; p < batch.points; ++p) work.factors[0][p] = weight[p] * v_rho[p];
  if (!functional.needs_gradient) return;
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

const double* XC_BATCH_WORK_T::tau_derivative(std::size_t s, const XC_WORKSPACE_T& work) const {
  return work.first.data() + ((channels == 1 ? 2 : 5) + s) * batches.largest_points;
}

void XC_BATCH_WORK_T::check(const XC_WORKSPACE_T& work) const {
  const std::size_t p = work.bad_point;
  if (p >= batches.x.size()) return;
  throw run_stopped(
      fmt::format(" *** ERROR: The density at the point ({:.6f}, {:.6f}, {:.6f}) bohr makes no sense;\n"
                  "            the exchange-correlation energy cannot be integrated.",
                  batches.x[p], batches.y[p], batches.z[p]));
}

void XC_BATCH_WORK_T::multiply(const GRID_BATCH_T& batch, const double* a, const MATRIX& m, double* out) {
  const int n = as_int(batch.points);
  const int f = as_int(batch.functions.size());
  cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, f, f, 1.0, a, n, m.data(), f, 0.0, out, n);
}

}  // namespace zentrix::DFT

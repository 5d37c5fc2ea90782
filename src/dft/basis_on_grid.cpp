#include "dft/basis_on_grid.hpp"

#include <algorithm>

#include "constants/limits.hpp"
#include "molecule/cartesian.hpp"

namespace zentrix::DFT {
namespace {

/// shell_functions(l) row by row.
std::vector<double> transform_of(int l, bool spherical) {
  const MATRIX& functions = shell_functions(l, spherical);
  std::vector<double> rows;
  for (Eigen::Index f = 0; f < functions.rows(); ++f)
    for (Eigen::Index c = 0; c < functions.cols(); ++c) rows.push_back(functions(f, c));
  return rows;
}

}  // namespace

BASIS_ON_GRID_T::BASIS_ON_GRID_T(const MOLECULE_T& molecule, const GRID_BATCHES_T& batches, int order)
    : batches_(batches), order_(order), kernels_(ZX_PICK(kernels::chosen_isa(), grid_kernels)()) {
  for (int l = 0; l <= LMAX_BASIS; ++l) transforms_.push_back(transform_of(l, molecule.spherical));
  for (const SHELL_T& shell : molecule.shells) {
    kernels::GRID_SHELL_T entry;
    entry.l = shell.l;
    entry.nprim = shell.nprim;
    std::copy_n(molecule.atoms[static_cast<std::size_t>(shell.atom)].position.begin(), 3, entry.centre);
    entry.alpha = shell.alpha.data();
    entry.coeff = shell.coeff.data();
    entry.transform = transforms_[static_cast<std::size_t>(shell.l)].data();
    entry.nfunc = shell.nfunc;
    shells_.push_back(entry);
  }
}

std::size_t BASIS_ON_GRID_T::size_of(std::size_t batch) const {
  return components() * batches_.batches[batch].functions.size() * batches_.batches[batch].points;
}

void BASIS_ON_GRID_T::keep(std::size_t bytes) {
  std::size_t left = bytes / sizeof(double);
  std::size_t count = 0;
  for (; count < batches_.batches.size() && size_of(count) <= left; ++count) left -= size_of(count);
  kept_.resize(count);
#pragma omp parallel for schedule(static, 1)
  for (std::size_t b = 0; b < count; ++b) {
    kept_[b].resize(size_of(b));
    compute(b, kept_[b].data());
  }
}

const double* BASIS_ON_GRID_T::values(std::size_t batch, ALIGNED_VECTOR& scratch) const {
  if (batch < kept_.size()) return kept_[batch].data();
  if (scratch.size() < size_of(batch)) scratch.resize(size_of(batch));
  compute(batch, scratch.data());
  return scratch.data();
}

void BASIS_ON_GRID_T::compute(std::size_t batch, double* out) const {
  const GRID_BATCH_T& b = batches_.batches[batch];
  const std::size_t stride = b.functions.size() * b.points;
  for (const int s : b.shells) {
    const kernels::GRID_SHELL_T& shell = shells_[static_cast<std::size_t>(s)];
    kernels_.basis_values(shell, order_, b.points, &batches_.x[b.first], &batches_.y[b.first], &batches_.z[b.first], out,
                          stride);
    out += static_cast<std::size_t>(shell.nfunc) * b.points;
  }
}

}  // namespace zentrix::DFT

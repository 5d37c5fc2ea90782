#include "dft/grid_batches.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <span>

#include "simd/isa.hpp"

namespace zentrix::DFT {
namespace {

using DFT_GRID::MOLECULAR_GRID_T;

struct BOX_T {
  std::array<double, 3> low = {1e300, 1e300, 1e300};
  std::array<double, 3> high = {-1e300, -1e300, -1e300};
  void include(const std::array<double, 3>& r) {
    for (std::size_t k = 0; k < 3; ++k) {
      low[k] = std::min(low[k], r[k]);
      high[k] = std::max(high[k], r[k]);
    }
  }
  double distance(const std::array<double, 3>& r) const {
    double square = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
      const double d = std::max({low[k] - r[k], r[k] - high[k], 0.0});
      square += d * d;
    }
    return std::sqrt(square);
  }
};

std::array<double, 3> position(const MOLECULAR_GRID_T& grid, std::size_t p) { return {grid.x[p], grid.y[p], grid.z[p]}; }

BOX_T box_of(const MOLECULAR_GRID_T& grid, std::span<const std::size_t> points) {
  BOX_T box;
  for (const std::size_t p : points) box.include(position(grid, p));
  return box;
}

/// Halves of whole batches: every leaf but the last of a branch is full.
void split(const MOLECULAR_GRID_T& grid, std::span<std::size_t> points, std::vector<std::span<std::size_t>>& leaves) {
  if (points.size() <= MAX_BATCH_POINTS) {
    leaves.push_back(points);
    return;
  }
  const BOX_T box = box_of(grid, points);
  std::size_t axis = 0;
  for (std::size_t k = 1; k < 3; ++k)
    if (box.high[k] - box.low[k] > box.high[axis] - box.low[axis]) axis = k;
  const std::size_t leaf_count = (points.size() + MAX_BATCH_POINTS - 1) / MAX_BATCH_POINTS;
  const std::size_t middle = leaf_count / 2 * MAX_BATCH_POINTS;
  const std::vector<double>& coordinate = axis == 0 ? grid.x : axis == 1 ? grid.y : grid.z;
  std::nth_element(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(middle), points.end(),
                   [&](std::size_t a, std::size_t b) {
                     return coordinate[a] < coordinate[b] || (coordinate[a] == coordinate[b] && a < b);
                   });
  split(grid, points.first(middle), leaves);
  split(grid, points.subspan(middle), leaves);
}

void append_points(const MOLECULAR_GRID_T& grid, std::span<const std::size_t> points, GRID_BATCHES_T& out) {
  const auto append = [&](std::size_t p, double weight) {
    out.x.push_back(grid.x[p]);
    out.y.push_back(grid.y[p]);
    out.z.push_back(grid.z[p]);
    out.weight.push_back(weight);
    out.atom.push_back(grid.atom[p]);
  };
  for (const std::size_t p : points) append(p, grid.weight[p]);
  while (out.x.size() % kernels::MAX_LANES != 0) append(points.back(), 0.0);
}

}  // namespace

double shell_extent(const SHELL_T& shell, double cutoff) {
  const double diffuse = *std::min_element(shell.alpha.begin(), shell.alpha.end());
  const auto bound = [&](double r) {
    double sum = 0.0;
    for (std::size_t i = 0; i < shell.alpha.size(); ++i) sum += std::abs(shell.coeff[i]) * std::exp(-shell.alpha[i] * r * r);
    return sum * std::pow(r, shell.l);
  };
  double near = std::sqrt(0.5 * shell.l / diffuse);  // every primitive falls off beyond its own maximum
  double far = near + 1.0;
  while (bound(far) > cutoff) far *= 1.5;
  while (far - near > 1e-3) {
    const double middle = 0.5 * (near + far);
    (bound(middle) > cutoff ? near : far) = middle;
  }
  return far;
}

GRID_BATCHES_T make_batches(const MOLECULE_T& molecule, const MOLECULAR_GRID_T& grid, double cutoff) {
  std::vector<double> extents;
  for (const SHELL_T& shell : molecule.shells) extents.push_back(shell_extent(shell, cutoff));
  std::vector<std::size_t> order(grid.size());
  std::iota(order.begin(), order.end(), 0);
  std::vector<std::span<std::size_t>> leaves;
  if (!order.empty()) split(grid, order, leaves);

  GRID_BATCHES_T out;
  for (const std::span<std::size_t> leaf : leaves) {
    const BOX_T box = box_of(grid, leaf);
    GRID_BATCH_T batch;
    for (std::size_t s = 0; s < molecule.shells.size(); ++s) {
      const SHELL_T& shell = molecule.shells[s];
      if (box.distance(molecule.atoms[static_cast<std::size_t>(shell.atom)].position) > extents[s]) continue;
      batch.shells.push_back(static_cast<int>(s));
      for (int f = 0; f < shell.nfunc; ++f) batch.functions.push_back(shell.first + f);
    }
    if (batch.shells.empty()) continue;
    batch.first = out.x.size();
    append_points(grid, leaf, out);
    batch.points = out.x.size() - batch.first;
    out.largest_points = std::max(out.largest_points, batch.points);
    out.largest_functions = std::max(out.largest_functions, batch.functions.size());
    out.batches.push_back(std::move(batch));
  }
  std::stable_sort(out.batches.begin(), out.batches.end(),
                   [](const GRID_BATCH_T& a, const GRID_BATCH_T& b) { return a.cost() > b.cost(); });
  return out;
}

}  // namespace zentrix::DFT

#include "correlation/half_transformation.hpp"

#include <omp.h>

#include <algorithm>
#include <new>

#include "report/stop.hpp"

namespace zentrix::CORRELATION {
namespace {

using INTEGRALS_2E::ALIGNED_DOUBLES;
using INTEGRALS_2E::ERI_PANEL_T;
using INTEGRALS_2E::ERI_PANELS;
using INTEGRALS_2E::PANEL_BRA_T;
using STRIDED = Eigen::OuterStride<>;
using COLUMNS = Eigen::Map<MATRIX, 0, STRIDED>;
using CONST_COLUMNS = Eigen::Map<const MATRIX, 0, STRIDED>;
using RECTANGLE = Eigen::Map<const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>, 0, STRIDED>;

/// Bytes of quarter-transformed integrals that are kept until they are worth a matrix product of the second quarter.
constexpr std::int64_t tile_bytes = 64 << 20;
/// Components of a tile beyond which the second quarter gains nothing.
constexpr int widest_tile = 48;

/// Whole shells of at most `width` components (or one shell).
struct RANGE_T {
  int first = 0;
  int end = 0;
  int size() const { return end - first; }
};

std::vector<RANGE_T> component_ranges(const std::vector<int>& starts, int width) {
  std::vector<RANGE_T> ranges;
  for (std::size_t s = 0; s + 1 < starts.size(); ++s) {
    if (ranges.empty() || starts[s + 1] - ranges.back().first > width) ranges.push_back({starts[s], starts[s]});
    ranges.back().end = starts[s + 1];
  }
  return ranges;
}

std::size_t range_of(const std::vector<RANGE_T>& ranges, int component) {
  const auto after =
      std::upper_bound(ranges.begin(), ranges.end(), component, [](int c, const RANGE_T& r) { return c < r.first; });
  return static_cast<std::size_t>(after - ranges.begin()) - 1;
}

ALIGNED_DOUBLES reserve(std::size_t doubles) {
  try {
    return ALIGNED_DOUBLES(std::max<std::size_t>(doubles, 8));
  } catch (const std::bad_alloc&) {
    throw run_stopped(" *** ERROR: Not enough memory for the half-transformed integrals.\n            Run aborted.");
  }
}

void clear(double* values, std::size_t n) {
  constexpr std::size_t piece = 1 << 16;
#pragma omp parallel for schedule(static)
  for (std::size_t at = 0; at < n; at += piece) std::fill_n(values + at, std::min(piece, n - at), 0.0);
}

/// Quarter-transformed integrals T_(ab),jd = sum_c C_cj L_(ab),(cd) of a tile of bras, a in one range of components and b in
/// another, for one range of occupied orbitals j: [a][b][d][j].
struct TILE_T {
  RANGE_T a, b;
  Eigen::Index orbitals = 0, components = 0;
  double* values = nullptr;
  double* of(int at_a, int at_b) const {
    return values + (static_cast<Eigen::Index>(at_a - a.first) * b.size() + (at_b - b.first)) * orbitals * components;
  }
};

/// First quarter: one panel into the rectangles T_(ab). `coefficients`: C^t, orbitals x components.
void transform_ket(const ERI_PANEL_T& panel, const PANEL_BRA_T& bra, const MATRIX& coefficients, const TILE_T& tile) {
  if (tile.orbitals == 0) return;
  for (int n = 0; n < panel.n_ab; ++n) {
    const int ab = panel.first_ab + n;
    COLUMNS target(tile.of(bra.first_a + ab / bra.n_b, bra.first_b + ab % bra.n_b), tile.orbitals, tile.components,
                   STRIDED(tile.orbitals));
    const RECTANGLE integrals(panel.rectangle(n), panel.n_c, panel.n_d, STRIDED(panel.row_stride));
    target.middleCols(panel.first_d, panel.n_d).noalias() += coefficients.middleCols(panel.first_c, panel.n_c) * integrals;
    if (!panel.square)
      target.middleCols(panel.first_c, panel.n_c).noalias() +=
          coefficients.middleCols(panel.first_d, panel.n_d) * integrals.transpose();
  }
}

}  // namespace

std::int64_t half_transformed_bytes(const OCCUPIED_BATCH_T& batch, int n_components) {
  const std::int64_t n = n_components, m = batch.count;
  return 8 * n * n * m * (m + 2 * batch.first);
}

std::vector<OCCUPIED_BATCH_T> occupied_batches(int n_occupied, int n_components, std::int64_t budget) {
  std::vector<OCCUPIED_BATCH_T> batches;
  for (int first = 0; first < n_occupied;) {
    OCCUPIED_BATCH_T batch{first, 1};
    while (batch.end() < n_occupied && half_transformed_bytes({first, batch.count + 1}, n_components) <= budget)
      ++batch.count;
    batches.push_back(batch);
    first = batch.end();
  }
  return batches;
}

HALF_TRANSFORMED_T::PART_T HALF_TRANSFORMED_T::make_part(const OCCUPIED_BATCH_T& bra, const OCCUPIED_BATCH_T& ket,
                                                         int tile) const {
  const auto n = static_cast<std::size_t>(n_);
  PART_T part;
  part.bra = bra;
  part.ket = ket;
  part.tile = tile;
  part.bra_doubles = n * static_cast<std::size_t>(ket.count);
  part.values = reserve(n * static_cast<std::size_t>(bra.count) * part.bra_doubles);
  clear(part.values.data(), part.values.size());
  return part;
}

HALF_TRANSFORMED_T::HALF_TRANSFORMED_T(const ERI_PANELS& panels, const MATRIX& occupied, const OCCUPIED_BATCH_T& batch)
    : n_(panels.n_components()), batch_(batch) {
  const OCCUPIED_BATCH_T before{0, batch.first};
  parts_.push_back(make_part(batch, batch, 0));
  if (before.count > 0) {
    parts_.push_back(make_part(batch, before, 1));
    parts_.push_back(make_part(before, batch, 0));
  }
  // Tile [0]: ket orbitals of the batch; [1]: those before it.
  const OCCUPIED_BATCH_T ket_ranges[2] = {batch, before};
  MATRIX transposed[2];
  for (int k = 0; k < 2; ++k) transposed[k] = occupied.middleCols(ket_ranges[k].first, ket_ranges[k].count).transpose();
  const std::int64_t bra_pair_bytes = 8 * static_cast<std::int64_t>(n_) * std::max(batch.end(), 1);
  int width = widest_tile;
  while (width > 8 && width * width * bra_pair_bytes > tile_bytes) width -= 4;
  const std::vector<RANGE_T> ranges = component_ranges(panels.shell_starts(), width);
  std::vector<std::vector<PANEL_BRA_T>> bras(ranges.size() * ranges.size());
  for (const PANEL_BRA_T& bra : panels.bras())
    bras[range_of(ranges, bra.first_a) * ranges.size() + range_of(ranges, bra.first_b)].push_back(bra);

  int widest = 0;
  for (const RANGE_T& range : ranges) widest = std::max(widest, range.size());
  ALIGNED_DOUBLES buffers[2];
  for (int k = 0; k < 2; ++k)
    buffers[k] = reserve(static_cast<std::size_t>(widest) * static_cast<std::size_t>(widest) * static_cast<std::size_t>(n_) *
                         static_cast<std::size_t>(ket_ranges[k].count));
  std::vector<ERI_PANELS::WORK_T> work;
  for (int thread = 0; thread < omp_get_max_threads(); ++thread) work.emplace_back(panels);

  for (std::size_t tile_number = 0; tile_number < bras.size(); ++tile_number) {
    const std::vector<PANEL_BRA_T>& own = bras[tile_number];
    if (own.empty()) continue;
    TILE_T tiles[2];
    for (int k = 0; k < 2; ++k) {
      tiles[k] = {ranges[tile_number / ranges.size()], ranges[tile_number % ranges.size()], ket_ranges[k].count, n_,
                  buffers[k].data()};
      clear(tiles[k].values, static_cast<std::size_t>(tiles[k].a.size() * tiles[k].b.size() * tiles[k].orbitals * n_));
    }
#pragma omp parallel for schedule(dynamic, 1)
    for (const PANEL_BRA_T& bra : own)
      panels.bra(bra, work[static_cast<std::size_t>(omp_get_thread_num())], [&](const ERI_PANEL_T& panel) {
        for (int k = 0; k < 2; ++k) transform_ket(panel, bra, transposed[k], tiles[k]);
      });

    // Second quarter, from either side of the bra: every component of a range has its own part of H.
    for (PART_T& part : parts_) {
      const TILE_T& tile = tiles[part.tile];
      const Eigen::Index rows = tile.orbitals * n_;
      const auto orbitals = occupied.middleCols(part.bra.first, part.bra.count);
#pragma omp parallel for schedule(dynamic, 1)
      for (int a = tile.a.first; a < tile.a.end; ++a) {
        COLUMNS target(part.of(a, 0), rows, part.bra.count, STRIDED(rows));
        target.noalias() += CONST_COLUMNS(tile.of(a, tile.b.first), rows, tile.b.size(), STRIDED(rows)) *
                            orbitals.middleRows(tile.b.first, tile.b.size());
      }
#pragma omp parallel for schedule(dynamic, 1)
      for (int b = tile.b.first; b < tile.b.end; ++b) {
        COLUMNS target(part.of(b, 0), rows, part.bra.count, STRIDED(rows));
        target.noalias() += CONST_COLUMNS(tile.of(tile.a.first, b), rows, tile.a.size(), STRIDED(rows * tile.b.size())) *
                            orbitals.middleRows(tile.a.first, tile.a.size());
      }
    }
  }
  for (PART_T& part : parts_) order_for_pairs(part);
}

/// [q][j] -> [j][q] for every p and i, so that a pair's matrix is made of contiguous rows.
void HALF_TRANSFORMED_T::order_for_pairs(PART_T& part) const {
  if (part.ket.count == 0) return;
#pragma omp parallel
  {
    MATRIX old(part.ket.count, n_);
#pragma omp for schedule(static)
    for (int p = 0; p < n_; ++p)
      for (int i = 0; i < part.bra.count; ++i) {
        double* values = part.of(p, i);
        old = Eigen::Map<const MATRIX>(values, part.ket.count, n_);
        Eigen::Map<MATRIX>(values, n_, part.ket.count) = old.transpose();
      }
  }
}

HALF_TRANSFORMED_T::MAP_T HALF_TRANSFORMED_T::matrix(const PART_T& part, int i, int j) const {
  const double* first = part.of(0, i - part.bra.first) + static_cast<std::ptrdiff_t>(j - part.ket.first) * n_;
  return {first, n_, n_, STRIDED(static_cast<Eigen::Index>(part.bra_doubles) * part.bra.count)};
}

void HALF_TRANSFORMED_T::pair(int i, int j, MATRIX& k) const {
  const bool inside = j >= batch_.first;
  k = matrix(parts_[inside ? 0 : 2], j, i).transpose();
  k += matrix(parts_[inside ? 0 : 1], i, j);
}

}  // namespace zentrix::CORRELATION

#include "correlation/half_transformation.hpp"

#include <omp.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

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

/// Bytes of quarter-transformed integrals that are kept until they are worth a matrix product of the second quarter: so
/// many, or this part of the half-transformed set.
constexpr std::int64_t tile_bytes = 64 << 20;
constexpr int tile_share = 8;
/// Components of a tile beyond which the second quarter gains nothing, and below which it loses much and tiles have too few
/// bras for the threads.
constexpr int widest_tile = 48;
constexpr int narrowest_tile = 20;

/// Ranges of whole shells of at most `width` components (or one shell).
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

/// Tile after tile of quarter-transformed integrals, for two ranges of occupied orbitals.
class FIRST_QUARTER_T {
 public:
  /// `coefficients`: C^t of either range. `budget`: bytes of a tile.
  FIRST_QUARTER_T(const ERI_PANELS& panels, std::array<MATRIX, 2> coefficients, std::int64_t budget)
      : panels_(panels), coefficients_(std::move(coefficients)) {
    const Eigen::Index n = panels.n_components(), orbitals = coefficients_[0].rows() + coefficients_[1].rows();
    int width = widest_tile;
    while (width > narrowest_tile && 8 * width * width * n * orbitals > budget) width -= 4;
    ranges_ = component_ranges(panels.shell_starts(), width);
    bras_.resize(ranges_.size() * ranges_.size());
    for (const PANEL_BRA_T& bra : panels.bras())
      bras_[range_of(ranges_, bra.first_a) * ranges_.size() + range_of(ranges_, bra.first_b)].push_back(bra);
    Eigen::Index widest = 0;
    for (const RANGE_T& range : ranges_) widest = std::max<Eigen::Index>(widest, range.size());
    for (std::size_t k = 0; k < 2; ++k)
      buffers_[k] = reserve(static_cast<std::size_t>(widest * widest * n * coefficients_[k].rows()));
    for (int thread = 0; thread < omp_get_max_threads(); ++thread) work_.emplace_back(panels);
  }

  std::size_t n_tiles() const { return bras_.size(); }
  /// False when the tile has no integrals.
  bool run(std::size_t number) {
    const std::vector<PANEL_BRA_T>& own = bras_[number];
    if (own.empty()) return false;
    for (std::size_t k = 0; k < 2; ++k) {
      tiles_[k] = {ranges_[number / ranges_.size()], ranges_[number % ranges_.size()], coefficients_[k].rows(),
                   panels_.n_components(), buffers_[k].data()};
      clear(tiles_[k].values, tiles_[k].doubles());
    }
#pragma omp parallel for schedule(dynamic, 1)
    for (const PANEL_BRA_T& bra : own)
      panels_.bra(bra, work_[static_cast<std::size_t>(omp_get_thread_num())], [&](const ERI_PANEL_T& panel) {
        for (std::size_t k = 0; k < 2; ++k) transform_ket(panel, bra, coefficients_[k], tiles_[k]);
      });
    return true;
  }
  const TILE_T& result(int range) const { return tiles_[static_cast<std::size_t>(range)]; }

 private:
  const ERI_PANELS& panels_;
  std::array<MATRIX, 2> coefficients_;
  std::vector<RANGE_T> ranges_;
  std::vector<std::vector<PANEL_BRA_T>> bras_;  ///< of tile (range of a, range of b)
  std::array<ALIGNED_DOUBLES, 2> buffers_;
  std::array<TILE_T, 2> tiles_;
  std::vector<ERI_PANELS::WORK_T> work_;
};

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
  const std::int64_t tile_budget = std::max(tile_bytes, half_transformed_bytes(batch, n_) / tile_share);
  FIRST_QUARTER_T first(panels,
                        {occupied.middleCols(batch.first, batch.count).transpose(),
                         occupied.middleCols(before.first, before.count).transpose()},
                        tile_budget);
  for (std::size_t tile = 0; tile < first.n_tiles(); ++tile) {
    if (!first.run(tile)) continue;
    for (PART_T& part : parts_) add_tile(first.result(part.tile), occupied, part);
  }
  for (PART_T& part : parts_) order_for_pairs(part);
}

/// Second quarter, from either side of the bras of a tile: every component of a range has its own part of H.
void HALF_TRANSFORMED_T::add_tile(const TILE_T& tile, const MATRIX& occupied, PART_T& part) const {
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

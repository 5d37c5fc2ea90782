#include "dft/grid_report.hpp"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include "dft/lebedev.hpp"
#include "dft/pruning.hpp"
#include "dft/radial_grid.hpp"

namespace zentrix::DFT_GRID {
namespace {

constexpr int CARBON = 6;

std::string radial_scheme_text(const GRID_LEVEL_T& level) {
  switch (level.radial_scheme) {
    case RADIAL_SCHEME::mura_knowles:
      return "Mura-Knowles Log3";
    case RADIAL_SCHEME::euler_maclaurin:
      return "Euler-Maclaurin (Murray-Handy-Laming)";
    case RADIAL_SCHEME::treutler_ahlrichs:
      break;
  }
  if (level.alpha == 0.0) return "Treutler-Ahlrichs M3 (G-Cheb + alpha=0)";
  if (level.alpha == 0.6) return "Treutler-Ahlrichs M4 (G-Cheb + alpha=0.6)";
  return fmt::format("Treutler-Ahlrichs (alpha={})", level.alpha);
}

std::string radial_points_text(const GRID_LEVEL_T& level) {
  if (level.pruning == PRUNING::five_zones_by_row) return "row-dep (39..64)";
  if (level.pruning == PRUNING::five_zones) {
    return fmt::format("{} (H/He {})", level.radial_points, radial_point_count(level, 1));
  }
  return std::to_string(level.radial_points);
}

std::string angular_scheme_text(const GRID_LEVEL_T& level) {
  switch (level.pruning) {
    case PRUNING::uniform:
      break;
    case PRUNING::tiered:
      return fmt::format("Lebedev, pruned ({} tiers, r/R_BS)", angular_zones(level, CARBON).sizes.size());
    case PRUNING::five_zones:
      return "Lebedev, pruned (5 zones, NWChem)";
    case PRUNING::five_zones_by_row:
      return "Lebedev, pruned (5 zones, r/R_BS)";
  }
  return "Lebedev, uniform (no pruning)";
}

/// Sizes of carbon's zones from the inside out.
std::string angular_sizes_text(const GRID_LEVEL_T& level) {
  std::string text;
  for (const int size : angular_zones(level, CARBON).sizes) text += (text.empty() ? "" : " / ") + std::to_string(size);
  return text;
}

std::string size_adjustment_text(SIZE_ADJUSTMENT adjustment) {
  switch (adjustment) {
    case SIZE_ADJUSTMENT::none:
      return "none (standard Becke)";
    case SIZE_ADJUSTMENT::becke:
      return "Becke (chi = R/R)";
    case SIZE_ADJUSTMENT::treutler:
      return "Treutler (chi = sqrt R/R)";
  }
  return fmt::format("mode={} (unknown)", static_cast<int>(adjustment));
}

}  // namespace

void print_missing_angular_rule(int points, std::ostream& report) {
  fmt::print(report, " *** WARNING: Lebedev grid with {} points not available. Using {}.\n", points,
             FALLBACK_ANGULAR_POINTS);
}

void print_grid(const MOLECULAR_GRID_T& grid, std::ostream& report) {
  const GRID_LEVEL_T& level = grid_level(grid.level);
  fmt::print(report, "   Grid               : {}\n", level.name);
  fmt::print(report, "   Radial scheme      : {}\n", radial_scheme_text(level));
  fmt::print(report, "   Radial points/atom : {}\n", radial_points_text(level));
  fmt::print(report, "   Angular scheme     : {}\n", angular_scheme_text(level));
  fmt::print(report, "   Angular sizes      : {}\n", angular_sizes_text(level));
  fmt::print(report, "   Becke size adj.    : {}\n", size_adjustment_text(level.size_adjustment));
  fmt::print(report, "   Grid points (total): {}\n", grid.size());
}

}  // namespace zentrix::DFT_GRID

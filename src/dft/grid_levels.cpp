#include <array>
#include <charconv>
#include <utility>

#include "dft/grid.hpp"

namespace zentrix::DFT_GRID {
namespace {

using enum RADIAL_SCHEME;

const GRID_LEVEL_T levels[] = {
    {"coarse", 25, mura_knowles, 0.0, PRUNING::uniform, 110, SIZE_ADJUSTMENT::none},
    {"medium", 50, mura_knowles, 0.0, PRUNING::tiered, 302, SIZE_ADJUSTMENT::none},
    {"fine", 75, mura_knowles, 0.0, PRUNING::tiered, 590, SIZE_ADJUSTMENT::none},
    {"ultrafine", 100, mura_knowles, 0.0, PRUNING::tiered, 590, SIZE_ADJUSTMENT::none},
    {"extreme", 150, mura_knowles, 0.0, PRUNING::tiered, 590, SIZE_ADJUSTMENT::none},
    {"Gaussian Fine", 75, euler_maclaurin, 0.0, PRUNING::five_zones, 302, SIZE_ADJUSTMENT::becke},
    {"Gaussian UltraFine", 99, euler_maclaurin, 0.0, PRUNING::five_zones, 590, SIZE_ADJUSTMENT::becke},
    {"Treutler (75,302)", 75, treutler_ahlrichs, 0.6, PRUNING::uniform, 302, SIZE_ADJUSTMENT::treutler},
    {"G09 ref (75,302)", 75, euler_maclaurin, 0.0, PRUNING::uniform, 302, SIZE_ADJUSTMENT::becke},
    {"ORCA7", 64, treutler_ahlrichs, 0.0, PRUNING::five_zones_by_row, 770, SIZE_ADJUSTMENT::none},
};

}  // namespace

const GRID_LEVEL_T& grid_level(int level) {
  const bool known = level >= 1 && level <= static_cast<int>(std::size(levels));
  return levels[known ? level - 1 : 1];
}

int grid_level_number(std::string_view word) {
  constexpr std::array<std::pair<std::string_view, int>, 5> names = {
      {{"FINE", 6}, {"ULTRAFINE", 7}, {"TM", 8}, {"G09", 9}, {"ORCA7", 10}}};
  for (const auto& [name, level] : names)
    if (word == name) return level;
  int level = 0;
  std::from_chars(word.data(), word.data() + word.size(), level);
  return level;
}

}  // namespace zentrix::DFT_GRID

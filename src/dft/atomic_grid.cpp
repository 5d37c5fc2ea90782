#include "dft/atomic_grid.hpp"

#include "constants/units.hpp"
#include "dft/atomic_scales.hpp"
#include "dft/grid_report.hpp"
#include "dft/pruning.hpp"
#include "dft/radial_grid.hpp"

namespace zentrix::DFT_GRID {

std::vector<RADIAL_SHELL_T> atomic_grid(const GRID_LEVEL_T& level, int z, std::ostream& report) {
  ANGULAR_ZONES_T zones = angular_zones(level, z);
  for (int& size : zones.sizes) {
    if (angular_rule(size) != nullptr) continue;
    print_missing_angular_rule(size, report);
    const int missing = size;
    for (int& other : zones.sizes) {
      if (other == missing) other = FALLBACK_ANGULAR_POINTS;
    }
  }
  const RADIAL_GRID_T radial = radial_grid(level, z);
  const double radius = bragg_slater_radius(z);
  std::vector<RADIAL_SHELL_T> shells;
  for (int i = 0; i < radial.size(); ++i) {
    const int size = angular_size(zones, radial.r[i] / radius);
    shells.push_back({radial.r[i], 4.0 * PI * radial.weight[i], angular_rule(size)});
  }
  return shells;
}

}  // namespace zentrix::DFT_GRID

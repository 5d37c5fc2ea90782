#include "geometry/covalent_radii.hpp"

#include <array>

#include "constants/units.hpp"

namespace zentrix::INTERNAL_COORDS {
namespace {

constexpr int LAST_Z = 86;
constexpr double DEFAULT_RADIUS = 1.5;  // angstrom

constexpr std::array<double, LAST_Z> radii = {
    0.31, 0.28, 1.28, 0.96, 0.84, 0.76, 0.71, 0.66, 0.57, 0.58, 1.66, 1.41, 1.21, 1.11, 1.07,  // H - P, angstrom
    1.05, 1.02, 1.06, 2.03, 1.76, 1.70, 1.60, 1.53, 1.39, 1.39, 1.32, 1.26, 1.24, 1.32, 1.22,  // S - Zn
    1.22, 1.20, 1.19, 1.20, 1.20, 1.16, 2.20, 1.95, 1.90, 1.75, 1.64, 1.54, 1.47, 1.46, 1.42,  // Ga - Rh
    1.39, 1.45, 1.44, 1.42, 1.39, 1.39, 1.38, 1.39, 1.40, 2.44, 2.15, 2.07, 2.04, 2.03, 2.01,  // Pd - Nd
    1.99, 1.98, 1.98, 1.96, 1.94, 1.92, 1.92, 1.89, 1.90, 1.87, 1.87, 1.75, 1.70, 1.62, 1.51,  // Pm - Re
    1.44, 1.41, 1.36, 1.36, 1.32, 1.45, 1.46, 1.48, 1.40, 1.50, 1.50};                         // Os - Rn

}  // namespace

double covalent_radius(int z) { return (z >= 1 && z <= LAST_Z ? radii[z - 1] : DEFAULT_RADIUS) * BOHR_PER_ANGSTROM; }

}  // namespace zentrix::INTERNAL_COORDS

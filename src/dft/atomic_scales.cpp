#include "dft/atomic_scales.hpp"

#include <algorithm>
#include <array>

#include "constants/units.hpp"

namespace zentrix::DFT_GRID {
namespace {

constexpr int LAST_Z = 36;
constexpr double DEFAULT_RADIUS = 1.5;  // angstrom

constexpr std::array<double, LAST_Z> radii = {
    0.35, 0.35, 1.45, 1.05, 0.85, 0.70, 0.65, 0.60, 0.50, 0.45, 1.80, 1.50,   // H - Mg, angstrom
    1.25, 1.10, 1.00, 1.00, 1.00, 1.00, 2.20, 1.80, 1.60, 1.40, 1.35, 1.40,   // Al - Cr
    1.40, 1.40, 1.35, 1.35, 1.35, 1.35, 1.30, 1.25, 1.15, 1.15, 1.15, 1.10};  // Mn - Kr

constexpr std::array<double, LAST_Z> xi = {0.8, 0.9, 1.8, 1.4, 1.3, 1.1, 0.9, 0.9, 0.9, 0.9, 1.4, 1.3,   // H - Mg, bohr
                                           1.3, 1.2, 1.1, 1.0, 1.0, 1.0, 1.5, 1.4, 1.3, 1.2, 1.2, 1.2,   // Al - Cr
                                           1.2, 1.2, 1.2, 1.1, 1.1, 1.1, 1.1, 1.0, 0.9, 0.9, 0.9, 0.9};  // Mn - Kr

constexpr std::array<int, 8> soft_metals = {3, 4, 11, 12, 19, 20, 37, 38};

bool in_tables(int z) { return z >= 1 && z <= LAST_Z; }

}  // namespace

double bragg_slater_radius(int z) { return (in_tables(z) ? radii[z - 1] : DEFAULT_RADIUS) * BOHR_PER_ANGSTROM; }

double treutler_ahlrichs_scale(int z) { return in_tables(z) ? xi[z - 1] : 1.0; }

double mura_knowles_scale(int z) {
  return std::find(soft_metals.begin(), soft_metals.end(), z) != soft_metals.end() ? 7.0 : 5.0;
}

}  // namespace zentrix::DFT_GRID

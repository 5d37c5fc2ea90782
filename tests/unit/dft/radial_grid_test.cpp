#include "dft/radial_grid.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "constants/units.hpp"
#include "dft/atomic_scales.hpp"

using namespace zentrix::DFT_GRID;

TEST(RadialGrid, CountsAndScalesByElement) {
  const int counts[][3] = {{1, 1, 25},   {6, 1, 39},   {6, 2, 39},   {6, 3, 75},   {7, 1, 51},   {7, 8, 99},
                           {9, 1, 75},   {10, 2, 39},  {10, 3, 44},  {10, 10, 44}, {10, 11, 49}, {10, 18, 49},
                           {10, 19, 54}, {10, 36, 54}, {10, 37, 59}, {10, 54, 59}, {10, 55, 64}};
  for (const auto& [level, z, points] : counts)
    EXPECT_EQ(radial_point_count(grid_level(level), z), points) << level << ' ' << z;
  GRID_LEVEL_T short_row = grid_level(6);
  short_row.radial_points = 15;
  EXPECT_EQ(radial_point_count(short_row, 1), 10);
  for (int z : {0, 37, 92}) {  // beyond the tables
    EXPECT_DOUBLE_EQ(bragg_slater_radius(z), 1.5 * zentrix::BOHR_PER_ANGSTROM) << z;
    EXPECT_DOUBLE_EQ(treutler_ahlrichs_scale(z), 1.0) << z;
  }
}

// The middle point of each map, from its formula.
TEST(RadialGrid, MapsOfTheThreeSchemes) {
  GRID_LEVEL_T level;
  level.radial_points = 3;  // x = 1/6, 1/2, 5/6; 1/4, 1/2, 3/4; or cos of 45, 90 and 135 degrees
  level.radial_scheme = RADIAL_SCHEME::mura_knowles;
  EXPECT_NEAR(radial_grid(level, 8).r[1], 5.0 * std::log(8.0 / 7.0), 1e-14);
  EXPECT_NEAR(radial_grid(level, 20).r[1], 7.0 * std::log(8.0 / 7.0), 1e-14);
  level.radial_scheme = RADIAL_SCHEME::euler_maclaurin;
  EXPECT_NEAR(radial_grid(level, 6).r[2], 9.0 * bragg_slater_radius(6), 1e-13);
  level.radial_scheme = RADIAL_SCHEME::treutler_ahlrichs;
  EXPECT_NEAR(radial_grid(level, 3).r[1], 1.8, 1e-14);
  level.alpha = 0.6;
  const double x = std::sqrt(0.5);
  EXPECT_NEAR(radial_grid(level, 1).r[2], 0.8 / std::log(2.0) * std::pow(1.0 + x, 0.6) * std::log(2.0 / (1.0 - x)), 1e-13);
}

// Relative errors of r^2 exp(-a r^2) from the density of a valence function to that of a core function, and of r^2 exp(-2
// zeta r) from zeta = 0.8 to the bare nucleus. A wrong Jacobian shows at once, a wrong map as lost digits. Level 10 ends
// at 7.5 bohr on hydrogen, which is what limits it.
TEST(RadialGrid, IntegratesGaussiansAndSlaterFunctions) {
  const double gaussian_bound[] = {5e-4, 2e-9, 1e-14, 1e-14, 1e-14, 4e-7, 2e-8, 4e-12, 6e-8, 2e-6};
  const double slater_bound[] = {1e-7, 1e-9, 1e-10, 1e-11, 1e-12, 1e-7, 2e-8, 2e-9, 1e-7, 2e-5};
  for (int level = 1; level <= 10; ++level) {
    for (int z : {1, 3, 6, 8, 17, 26, 35}) {
      const RADIAL_GRID_T grid = radial_grid(grid_level(level), z);
      ASSERT_TRUE(std::is_sorted(grid.r.begin(), grid.r.end()));
      ASSERT_GT(grid.r.front(), 0.0);
      ASSERT_TRUE(std::all_of(grid.weight.begin(), grid.weight.end(), [](double w) { return w > 0.0; }));
      double worst = 0.0;
      for (double alpha = 0.3; alpha <= 1.0 * z * z; alpha *= 2.0) {
        double sum = 0.0;
        for (int i = 0; i < grid.size(); ++i) sum += grid.weight[i] * std::exp(-alpha * grid.r[i] * grid.r[i]);
        worst = std::max(worst, std::abs(sum / (0.25 * std::sqrt(M_PI / (alpha * alpha * alpha))) - 1.0));
      }
      EXPECT_LT(worst, gaussian_bound[level - 1]) << "Gaussians, level " << level << ", Z = " << z;
      double slater = 0.0;
      for (double zeta = 0.8; zeta <= z; zeta *= 1.5) {
        double sum = 0.0;
        for (int i = 0; i < grid.size(); ++i) sum += grid.weight[i] * std::exp(-2.0 * zeta * grid.r[i]);
        slater = std::max(slater, std::abs(sum * 4.0 * zeta * zeta * zeta - 1.0));
      }
      EXPECT_LT(slater, slater_bound[level - 1]) << "Slater functions, level " << level << ", Z = " << z;
    }
  }
}

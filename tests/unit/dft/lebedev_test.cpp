#include "dft/lebedev.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numeric>

using namespace zentrix::DFT_GRID;

namespace {

const std::vector<int> all_sizes = {6, 14, 26, 38, 50, 74, 86, 110, 146, 170, 194, 230, 266, 302, 350, 434, 590, 770};

/// Largest mean over the rule of the spherical harmonics of degree l (normalised to 1 over the sphere), times sqrt(4 pi).
double largest_mean(const ANGULAR_RULE_T& rule, int l) {
  std::vector<std::complex<double>> sums(l + 1);
  for (int p = 0; p < rule.size(); ++p) {
    const double theta = std::atan2(std::hypot(rule.x[p], rule.y[p]), rule.z[p]);
    const double phi = std::atan2(rule.y[p], rule.x[p]);
    for (int m = 0; m <= l; ++m) sums[m] += rule.weight[p] * std::polar(1.0, m * phi) * std::sph_legendre(l, m, theta);
  }
  double largest = 0.0;
  for (const auto& sum : sums) largest = std::max(largest, std::sqrt(4.0 * M_PI) * std::abs(sum));
  return largest;
}

}  // namespace

// A wrong digit in a generator, a missing image of a point or a wrong degree.
TEST(Lebedev, RulesAreExactUpToTheirDegreeAndNoFurther) {
  const std::vector<int> degrees = {3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31, 35, 41, 47};
  for (std::size_t i = 0; i < all_sizes.size(); ++i) {
    const ANGULAR_RULE_T* rule = angular_rule(all_sizes[i]);
    ASSERT_NE(rule, nullptr) << all_sizes[i];
    EXPECT_EQ(rule->size(), all_sizes[i]);
    EXPECT_EQ(rule->degree, degrees[i]);
    EXPECT_NEAR(largest_mean(*rule, 0), 1.0, 1e-14) << all_sizes[i];
    for (int l = 1; l <= rule->degree; ++l) EXPECT_LT(largest_mean(*rule, l), 2e-14) << all_sizes[i] << " points, l = " << l;
    EXPECT_GT(largest_mean(*rule, rule->degree + 1), 1e-4) << all_sizes[i];
    for (int p = 0; p < rule->size(); ++p) {
      EXPECT_NEAR(std::hypot(rule->x[p], rule->y[p], rule->z[p]), 1.0, 1e-15) << all_sizes[i];
    }
  }
}

TEST(Lebedev, OtherSizesDoNotExist) {
  for (int size : {0, -6, 7, 301, 303, 974}) EXPECT_EQ(angular_rule(size), nullptr);
  EXPECT_EQ(next_smaller_angular_size(302), 266);
  EXPECT_EQ(next_smaller_angular_size(590), 434);
  EXPECT_EQ(next_smaller_angular_size(6), 6);
}

#include "dft/lebedev.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <tuple>

#include "dft/lebedev_table.hpp"

namespace zentrix::DFT_GRID {
namespace {

using POINT = std::array<double, 3>;

POINT representative(const LEBEDEV_GENERATOR_T& generator) {
  const double a = generator.a;
  const double b = generator.b;
  switch (generator.orbit) {
    case ORBIT::vertices:
      return {0.0, 0.0, 1.0};
    case ORBIT::edges:
      return {0.0, std::sqrt(0.5), std::sqrt(0.5)};
    case ORBIT::faces:
      return {std::sqrt(1.0 / 3.0), std::sqrt(1.0 / 3.0), std::sqrt(1.0 / 3.0)};
    case ORBIT::aab:
      return {a, a, std::sqrt(1.0 - 2.0 * a * a)};
    case ORBIT::ab0:
      return {a, std::sqrt(1.0 - a * a), 0.0};
    case ORBIT::abc:
      return {a, b, std::sqrt(1.0 - a * a - b * b)};
  }
  return {};
}

/// All images of a point with non-negative coordinates under permutations of the axes and changes of sign.
std::vector<POINT> orbit_points(POINT point) {
  std::vector<POINT> points;
  std::sort(point.begin(), point.end());
  do {
    for (int signs = 0; signs < 8; ++signs) {
      POINT image = point;
      bool repeated = false;
      for (int axis = 0; axis < 3; ++axis) {
        if ((signs >> axis & 1) == 0) continue;
        repeated = repeated || image[axis] == 0.0;
        image[axis] = -image[axis];
      }
      if (!repeated) points.push_back(image);
    }
  } while (std::next_permutation(point.begin(), point.end()));
  return points;
}

struct WEIGHTED_POINT_T {
  POINT position;
  double weight;
};

/// Halves the list along its longest axis, at a multiple of eight points, until no more than eight are left.
void order_compactly(WEIGHTED_POINT_T* begin, WEIGHTED_POINT_T* end) {
  const long count = end - begin;
  if (count <= 8) return;
  int longest = 0;
  double length = -1.0;
  for (int axis = 0; axis < 3; ++axis) {
    const auto [low, high] = std::minmax_element(
        begin, end, [axis](const auto& p, const auto& q) { return p.position[axis] < q.position[axis]; });
    const double extent = high->position[axis] - low->position[axis];
    if (extent > length + 1e-12) {
      length = extent;
      longest = axis;
    }
  }
  // Rules are symmetric: equal coordinates are the rule, and the other two axes decide.
  const int second = (longest + 1) % 3;
  const int third = (longest + 2) % 3;
  std::sort(begin, end, [=](const WEIGHTED_POINT_T& p, const WEIGHTED_POINT_T& q) {
    return std::tie(p.position[longest], p.position[second], p.position[third]) <
           std::tie(q.position[longest], q.position[second], q.position[third]);
  });
  WEIGHTED_POINT_T* middle = begin + (count / 2 + 7) / 8 * 8;
  order_compactly(begin, middle);
  order_compactly(middle, end);
}

ANGULAR_RULE_T expand(const LEBEDEV_ROW_T& row) {
  std::vector<WEIGHTED_POINT_T> points;
  for (const LEBEDEV_GENERATOR_T& generator : lebedev_generators().subspan(row.first, row.count)) {
    for (const POINT& point : orbit_points(representative(generator))) points.push_back({point, generator.weight});
  }
  order_compactly(points.data(), points.data() + points.size());
  ANGULAR_RULE_T rule;
  rule.degree = row.degree;
  for (const WEIGHTED_POINT_T& point : points) {
    rule.x.push_back(point.position[0]);
    rule.y.push_back(point.position[1]);
    rule.z.push_back(point.position[2]);
    rule.weight.push_back(point.weight);
  }
  return rule;
}

const std::vector<ANGULAR_RULE_T>& all_rules() {
  static const std::vector<ANGULAR_RULE_T> rules = [] {
    std::vector<ANGULAR_RULE_T> expanded;
    for (const LEBEDEV_ROW_T& row : lebedev_rows()) expanded.push_back(expand(row));
    return expanded;
  }();
  return rules;
}

}  // namespace

const ANGULAR_RULE_T* angular_rule(int points) {
  for (const ANGULAR_RULE_T& rule : all_rules()) {
    if (rule.size() == points) return &rule;
  }
  return nullptr;
}

int next_smaller_angular_size(int points) {
  int smaller = lebedev_rows().front().points;
  for (const LEBEDEV_ROW_T& row : lebedev_rows()) {
    if (row.points < points) smaller = row.points;
  }
  return smaller;
}

}  // namespace zentrix::DFT_GRID

#include "geometry/model_hessian.hpp"

#include <algorithm>
#include <cmath>

#include "geometry/covalent_radii.hpp"
#include "geometry/vectors.hpp"

namespace zentrix::OPTIMIZER {
namespace {

using namespace INTERNAL_COORDS;
using INPUT_PARSER::MODEL_HESSIAN;

/// Below this a coordinate would be free: steps along it could not be told from noise.
constexpr double SMALLEST_CONSTANT = 1e-3;

/// Torsion over a straight piece of several bonds: between the free turning of an alkyne (0) and the stiffness of a
/// cumulene.
constexpr double ACROSS_STRAIGHT_PIECE = 0.01;

/// Six or nine dihedrals around a saturated bond add up; each gets this share, which brings the turning of ethane (0.022
/// hartree) and of softer bonds within reach of the sum. Conjugated bonds, with four, are as stiff as the formula has them.
constexpr double SHARE_OF_MANY_DIHEDRALS = 0.35;
constexpr double SATURATED_BONDS = 5.0;

/// Row of the periodic table as the pair parameters know it: 0, 1, and 2 for the third row and all below.
int period(int z) { return z <= 2 ? 0 : z <= 10 ? 1 : 2; }

class FORCE_FIELD_T {
 public:
  FORCE_FIELD_T(const COORDINATE_SET_T& set, const std::vector<int>& z, const VECTOR& x) : set_(set), z_(z), x_(x) {}

  double constant(const INTCOORD_T& c, MODEL_HESSIAN model) const {
    const bool over_straight_piece =
        c.kind == KIND::dihedral && !c.through_space && set_.bonded(c.atoms[1] - 1, c.atoms[2] - 1) == 0;
    if (over_straight_piece) return ACROSS_STRAIGHT_PIECE;
    return model == MODEL_HESSIAN::diag ? lindh(c) : fischer_almloef(c);
  }

  double lindh(const INTCOORD_T& c) const {
    const auto& a = c.atoms;
    switch (c.kind) {
      case KIND::bond:
        return 0.45 * decay(a[0], a[1]);
      case KIND::angle:
      case KIND::linear_bend:
        return 0.15 * decay(a[0], a[1]) * decay(a[1], a[2]);
      case KIND::dihedral:
        return 0.005 * decay(a[0], a[1]) * decay(a[1], a[2]) * decay(a[2], a[3]);
    }
    return 0.0;
  }

  double fischer_almloef(const INTCOORD_T& c) const {
    if (c.through_space) return lindh(c);
    switch (c.kind) {
      case KIND::bond:
        return 0.3601 * std::exp(-1.944 * excess(c.atoms[0], c.atoms[1]));
      case KIND::angle:
      case KIND::linear_bend:
        return bend(c.atoms);
      case KIND::dihedral:
        return torsion(c.atoms);
    }
    return 0.0;
  }

  /// rho of Lindh's model: 1 at the reference distance of the two rows, exponentially less beyond.
  double decay(int i, int j) const {
    constexpr double alpha[3][3] = {{1.0000, 0.3949, 0.3949}, {0.3949, 0.2800, 0.2800}, {0.3949, 0.2800, 0.2800}};
    constexpr double reference[3][3] = {{1.35, 2.10, 2.53}, {2.10, 2.87, 3.40}, {2.53, 3.40, 3.40}};
    const int p = period(z_[i - 1]);
    const int q = period(z_[j - 1]);
    const double r = distance(i, j);
    return std::exp(alpha[p][q] * (reference[p][q] * reference[p][q] - r * r));
  }

 private:
  double distance(int i, int j) const { return (position_of(x_, i) - position_of(x_, j)).norm(); }
  double covalent(int i, int j) const { return covalent_radius(z_[i - 1]) + covalent_radius(z_[j - 1]); }
  double excess(int i, int j) const { return distance(i, j) - covalent(i, j); }
  int bonds_of(int i) const { return set_.bonded.row(i - 1).sum(); }

  double bend(const std::array<int, 4>& a) const {
    const double size = covalent(a[0], a[1]) * covalent(a[1], a[2]);
    return 0.089 + 0.11 / std::pow(size, -0.42) * std::exp(-0.44 * (excess(a[0], a[1]) + excess(a[1], a[2])));
  }

  double torsion(const std::array<int, 4>& a) const {
    const double around = std::max(bonds_of(a[1]) + bonds_of(a[2]) - 2, 1);
    const double r = distance(a[1], a[2]);
    const double r_covalent = covalent(a[1], a[2]);
    const double whole =
        0.0015 + 14.0 * std::pow(around, 0.57) / std::pow(r * r_covalent, 4.0) * std::exp(-2.85 * (r - r_covalent));
    return around >= SATURATED_BONDS ? SHARE_OF_MANY_DIHEDRALS * whole : whole;
  }

  const COORDINATE_SET_T& set_;
  const std::vector<int>& z_;
  const VECTOR& x_;
};

/// Adds the 1,3 stretches, expressed in the coordinates: where a distance depends on two bonds and their angle, it couples
/// them.
void add_couplings(const COORDINATE_SET_T& set, const FORCE_FIELD_T& field, const VECTOR& x, MATRIX& hessian) {
  COORDINATE_SET_T distances;
  for (const INTCOORD_T& c : set.coordinates) {
    if (c.kind != KIND::angle || set.bonded(c.atoms[0] - 1, c.atoms[2] - 1) != 0) continue;
    INTCOORD_T pair;
    pair.atoms = {c.atoms[0], c.atoms[2], 0, 0};
    distances.coordinates.push_back(pair);
  }
  if (distances.coordinates.empty()) return;
  const FRAME_T frame = frame_of(wilson_b(set, x));
  // d(distance)/dq = b B^+, one row per distance.
  const MATRIX rows = wilson_b(distances, x) * frame.v * frame.sigma.cwiseInverse().asDiagonal() * frame.u.transpose();
  VECTOR constants(rows.rows());
  for (Eigen::Index n = 0; n < rows.rows(); ++n) {
    const auto& atoms = distances.coordinates[static_cast<std::size_t>(n)].atoms;
    constants(n) = 0.45 * field.decay(atoms[0], atoms[1]);
  }
  hessian += rows.transpose() * constants.asDiagonal() * rows;
}

}  // namespace

MATRIX model_hessian(const COORDINATE_SET_T& set, const std::vector<int>& z, const VECTOR& positions, MODEL_HESSIAN model) {
  const FORCE_FIELD_T field(set, z, positions);
  const auto n = static_cast<Eigen::Index>(set.coordinates.size());
  MATRIX hessian = MATRIX::Zero(n, n);
  for (Eigen::Index k = 0; k < n; ++k) {
    const double constant = field.constant(set.coordinates[static_cast<std::size_t>(k)], model);
    hessian(k, k) = std::max(constant, SMALLEST_CONSTANT);
  }
  if (model == MODEL_HESSIAN::full) add_couplings(set, field, positions, hessian);
  return hessian;
}

}  // namespace zentrix::OPTIMIZER

#include "geometry/coordinate_system.hpp"

#include <algorithm>
#include <map>
#include <utility>

#include "geometry/model_hessian.hpp"

namespace zentrix::OPTIMIZER {

using namespace INTERNAL_COORDS;

INTERNAL_SYSTEM_T::INTERNAL_SYSTEM_T(std::vector<int> z, COORDINATE_SET_T set, std::vector<CONSTRAINT_T> constraints,
                                     FRAGMENT_LINKS links)
    : z_(std::move(z)), set_(std::move(set)), constraints_(std::move(constraints)), links_(links) {}

VECTOR INTERNAL_SYSTEM_T::values(const VECTOR& positions) const { return coordinate_values(set_, positions); }

VECTOR INTERNAL_SYSTEM_T::difference(const VECTOR& a, const VECTOR& b) const { return value_difference(set_, a, b); }

MATRIX INTERNAL_SYSTEM_T::b_matrix(const VECTOR& positions) const { return wilson_b(set_, positions); }

VECTOR INTERNAL_SYSTEM_T::displaced(const VECTOR& positions, const VECTOR& dq) const {
  // A step that cannot be followed (dihedrals near a straight angle turn fast) is halved until it can.
  constexpr int halvings = 6;
  constexpr double acceptable_error = 0.5;
  VECTOR wanted = dq;
  for (int n = 0; n < halvings; ++n, wanted *= 0.5) {
    VECTOR reached = back_transform(set_, positions, wanted).positions;
    const VECTOR made = difference(values(reached), values(positions));
    if ((made - wanted).norm() <= acceptable_error * wanted.norm()) return reached;
  }
  return back_transform(set_, positions, wanted).positions;
}

MATRIX INTERNAL_SYSTEM_T::model_hessian(const VECTOR& positions, INPUT_PARSER::MODEL_HESSIAN model) const {
  return OPTIMIZER::model_hessian(set_, z_, positions, model);
}

VECTOR INTERNAL_SYSTEM_T::weights() const {
  std::map<std::pair<int, int>, int> around;
  const auto bond_of = [](const INTCOORD_T& c) { return std::minmax(c.atoms[1], c.atoms[2]); };
  for (const INTCOORD_T& c : set_.coordinates)
    if (c.kind == KIND::dihedral) ++around[bond_of(c)];
  VECTOR weights = VECTOR::Ones(static_cast<Eigen::Index>(set_.coordinates.size()));
  for (Eigen::Index n = 0; n < weights.size(); ++n) {
    const INTCOORD_T& c = set_.coordinates[static_cast<std::size_t>(n)];
    if (c.kind == KIND::dihedral) weights(n) = 1.0 / around[bond_of(c)];
  }
  return weights;
}

std::vector<HELD_T> INTERNAL_SYSTEM_T::held() const {
  std::vector<HELD_T> held;
  for (std::size_t n = 0; n < set_.coordinates.size(); ++n) {
    if (set_.coordinates[n].frozen) held.push_back({static_cast<Eigen::Index>(n), set_.coordinates[n].target});
  }
  return held;
}

bool INTERNAL_SYSTEM_T::suits(const VECTOR& positions) const { return still_suited(set_, positions); }

bool INTERNAL_SYSTEM_T::remade_for(const VECTOR& positions) {
  if (suits(positions)) return false;
  COORDINATE_SET_T anew = generate_coordinates(z_, positions, links_);
  std::vector<CONSTRAINT_MATCH_T> matches;
  const int status = apply_constraints(constraints_, positions, anew, matches);
  // A set that does not serve the geometry either (a constraint that forces an angle straight), or one with too few
  // coordinates: better the old one.
  if (status != 0 || !still_suited(anew, positions)) return false;
  if (frame_of(wilson_b(anew, positions)).v.cols() < positions.size() - rigid_motions(positions).cols()) return false;
  set_ = std::move(anew);
  return true;
}

MATRIX CARTESIAN_SYSTEM_T::b_matrix(const VECTOR& positions) const {
  const MATRIX rigid = rigid_motions(positions);
  return MATRIX::Identity(positions.size(), positions.size()) - rigid * rigid.transpose();
}

MATRIX CARTESIAN_SYSTEM_T::model_hessian(const VECTOR& positions, INPUT_PARSER::MODEL_HESSIAN model) const {
  constexpr double elsewhere = 0.05;  // hartree/bohr^2, for motions that no internal coordinate sees
  const COORDINATE_SET_T set = generate_coordinates(z_, positions);
  if (set.coordinates.empty()) return elsewhere * MATRIX::Identity(positions.size(), positions.size());
  const MATRIX b = wilson_b(set, positions);
  const FRAME_T frame = frame_of(b);
  return b.transpose() * OPTIMIZER::model_hessian(set, z_, positions, model) * b +
         elsewhere * (MATRIX::Identity(positions.size(), positions.size()) - frame.v * frame.v.transpose());
}

}  // namespace zentrix::OPTIMIZER

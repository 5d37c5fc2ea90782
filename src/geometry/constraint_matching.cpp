#include "geometry/internal_coords.hpp"
#include "geometry/vectors.hpp"

namespace zentrix::INTERNAL_COORDS {
namespace {

KIND kind_of(char letter) { return letter == 'B' ? KIND::bond : letter == 'A' ? KIND::angle : KIND::dihedral; }

/// Kind as constraints and tables see it.
KIND table_kind(KIND kind) { return kind == KIND::linear_bend ? KIND::angle : kind; }

/// Either direction names the same coordinate.
bool same_atoms(const INTCOORD_T& coordinate, const std::vector<int>& atoms) {
  const auto begin = coordinate.atoms.begin();
  const auto end = begin + static_cast<std::ptrdiff_t>(atoms.size());
  return std::equal(begin, end, atoms.begin()) || std::equal(begin, end, atoms.rbegin());
}

/// Whether the atoms of a dihedral span its two planes. Near the line it turns with every rounding of the positions.
bool has_planes(const std::vector<int>& atoms, const VECTOR& x) {
  constexpr double nearly_straight = 179.0 * RADIAN_PER_DEGREE;
  const auto bent = [&](int i, int j, int k) {
    const double angle = angle_at(x, i, j, k);
    return angle < nearly_straight && angle > PI - nearly_straight;
  };
  return bent(atoms[0], atoms[1], atoms[2]) && bent(atoms[1], atoms[2], atoms[3]);
}

/// Whether the entry is well formed; tells in `match` what is wrong with it.
bool check(const CONSTRAINT_T& constraint, const VECTOR& x, CONSTRAINT_MATCH_T& match) {
  const auto n_atoms = static_cast<int>(x.size() / 3);
  const std::size_t size = constraint.kind == 'B' ? 2 : constraint.kind == 'A' ? 3 : constraint.kind == 'D' ? 4 : 0;
  const auto in_range = [&](std::size_t n) { return constraint.atoms[n] >= 1 && constraint.atoms[n] <= n_atoms; };
  if (size == 0 || constraint.atoms.size() != size) {
    match.outcome = CONSTRAINT_OUTCOME::unknown_kind;
  } else if (!in_range(0) || !in_range(1)) {
    match.outcome = CONSTRAINT_OUTCOME::atom_range;
  } else if (size == 3 && !in_range(2)) {
    match.outcome = CONSTRAINT_OUTCOME::angle_wing_range;
  } else if (size == 4 && (!in_range(2) || !in_range(3))) {
    match.outcome = CONSTRAINT_OUTCOME::dihedral_range;
  } else if (size == 4 && !has_planes(constraint.atoms, x)) {
    match.outcome = CONSTRAINT_OUTCOME::dihedral_in_line;
  } else {
    return true;
  }
  return false;
}

/// Value that the user means by "as it is": of a linear bend the angle itself.
double present_value(const INTCOORD_T& coordinate, const VECTOR& x) {
  if (coordinate.kind == KIND::linear_bend)
    return angle_at(x, coordinate.atoms[0], coordinate.atoms[1], coordinate.atoms[2]);
  return coordinate_value(coordinate, x);
}

void freeze(COORDINATE_SET_T& set, INTCOORD_T& coordinate, double target) {
  coordinate.frozen = true;
  coordinate.target = target;
  ++set.n_frozen;
}

/// Below this an angle that two linear bends stand for is held as an angle, which leaves the direction of the bend free;
/// above, its derivative is undefined and the chain is held straight.
constexpr double held_straight = PI - 0.1 * RADIAN_PER_DEGREE;

/// Freezes the coordinate (both bends of a linear chain); its number among those of its kind, 0 when there is none to
/// freeze.
int freeze_existing(COORDINATE_SET_T& set, const CONSTRAINT_T& constraint, const VECTOR& x, double& target) {
  const KIND kind = kind_of(constraint.kind);
  int number = 0;
  for (std::size_t n = 0; n < set.coordinates.size(); ++n) {
    INTCOORD_T& found = set.coordinates[n];
    if (table_kind(found.kind) != kind) continue;
    ++number;
    if (!same_atoms(found, constraint.atoms)) continue;
    target = constraint.target.value_or(present_value(found, x));
    if (found.kind != KIND::linear_bend) {
      freeze(set, found, target);
      return number;
    }
    if (target < held_straight) return 0;
    // Held as it is, a chain keeps its two values; moved to a target, it bends towards the first axis.
    const bool as_it_is = !constraint.target.has_value();
    freeze(set, found, as_it_is ? coordinate_value(found, x) : target);
    if (n + 1 < set.coordinates.size()) {
      INTCOORD_T& other = set.coordinates[n + 1];
      if (other.kind == KIND::linear_bend && same_atoms(other, constraint.atoms))
        freeze(set, other, as_it_is ? coordinate_value(other, x) : PI);
    }
    return number;
  }
  return 0;
}

/// Appends the coordinate and freezes it; 0 when its kind is full.
int append(COORDINATE_SET_T& set, const CONSTRAINT_T& constraint, const VECTOR& x, double& target) {
  const KIND kind = kind_of(constraint.kind);
  const int limit = kind == KIND::bond ? MAX_BONDS : kind == KIND::angle ? MAX_ANGLES : MAX_TORSIONS;
  int& count = kind == KIND::bond ? set.n_bonds : kind == KIND::angle ? set.n_angles : set.n_dihedrals;
  if (count == limit) return 0;
  ++count;
  INTCOORD_T added;
  added.kind = kind;
  std::copy(constraint.atoms.begin(), constraint.atoms.end(), added.atoms.begin());
  added.value = coordinate_value(added, x);
  target = constraint.target.value_or(added.value);
  freeze(set, added, target);
  set.coordinates.push_back(added);
  return count;
}

}  // namespace

int apply_constraints(const std::vector<CONSTRAINT_T>& constraints, const VECTOR& positions, COORDINATE_SET_T& set,
                      std::vector<CONSTRAINT_MATCH_T>& matches) {
  for (const CONSTRAINT_T& constraint : constraints) {
    CONSTRAINT_MATCH_T& match = matches.emplace_back();
    match.kind = constraint.kind;
    if (!check(constraint, positions, match)) return 1;
    match.number = freeze_existing(set, constraint, positions, match.value);
    if (match.number > 0) continue;
    match.number = append(set, constraint, positions, match.value);
    match.outcome = match.number > 0 ? CONSTRAINT_OUTCOME::added : CONSTRAINT_OUTCOME::set_full;
    if (match.number == 0) return 1;
  }
  return 0;
}

}  // namespace zentrix::INTERNAL_COORDS

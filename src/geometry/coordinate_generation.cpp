#include <algorithm>
#include <limits>
#include <numeric>

#include "geometry/covalent_radii.hpp"
#include "geometry/internal_coords.hpp"
#include "geometry/vectors.hpp"

namespace zentrix::INTERNAL_COORDS {
namespace {

constexpr double SHORTEST_BOND = 0.1;  // bohr
constexpr double BOND_FACTOR = 1.3;
/// Forming bonds between two fragments within this factor of the shortest are taken together.
constexpr double AS_SHORT = 1.05;
/// An angle above this becomes two linear bends, and no dihedral goes through it.
constexpr double LINEAR_ANGLE = 175.0 * RADIAN_PER_DEGREE;
/// Margins before an optimisation that drifts over the limit makes its coordinates anew.
constexpr double STILL_AN_ANGLE = 177.5 * RADIAN_PER_DEGREE;
constexpr double STILL_LINEAR = 165.0 * RADIAN_PER_DEGREE;
/// Angles around a centre of three bonds that sum to more than this make it nearly planar, and a set without an out-of-plane
/// dihedral there unsuited.
constexpr double PLANAR_SUM = 340.0 * RADIAN_PER_DEGREE;
constexpr double STILL_PYRAMIDAL = 345.0 * RADIAN_PER_DEGREE;

/// Wing, apex, wing, wing of the centres of three bonds whose angles sum to more than `sum` and which no dihedral sees leave
/// their plane: angles cannot.
std::vector<std::array<int, 4>> planar_centres(const COORDINATE_SET_T& set, const VECTOR& x, double sum) {
  const int n = static_cast<int>(set.bonded.rows());
  std::vector<bool> covered(static_cast<std::size_t>(n) + 1, false);
  for (const INTCOORD_T& c : set.coordinates) {
    if (c.kind == KIND::dihedral) covered[c.atoms[1]] = covered[c.atoms[2]] = true;
  }
  std::vector<std::array<int, 4>> centres;
  for (int apex = 1; apex <= n; ++apex) {
    if (covered[apex] || set.bonded.row(apex - 1).sum() != 3) continue;
    std::vector<int> w;
    for (int j = 1; j <= n; ++j) {
      if (set.bonded(apex - 1, j - 1) != 0) w.push_back(j);
    }
    const double first = angle_at(x, w[0], apex, w[1]);
    if (first > LINEAR_ANGLE || angle_at(x, apex, w[1], w[2]) > LINEAR_ANGLE) continue;
    if (first + angle_at(x, w[1], apex, w[2]) + angle_at(x, w[0], apex, w[2]) > sum)
      centres.push_back({w[0], apex, w[1], w[2]});
  }
  return centres;
}

class GENERATOR_T {
 public:
  GENERATOR_T(const std::vector<int>& z, const VECTOR& x, FRAGMENT_LINKS links)
      : z_(z),
        x_(x),
        links_wanted_(links),
        n_(static_cast<int>(z.size())),
        neighbours_(z.size() + 1),
        links_(Eigen::MatrixXi::Zero(n_, n_)) {
    set_.bonded = Eigen::MatrixXi::Zero(n_, n_);
  }

  COORDINATE_SET_T generate() {
    find_bonds();
    join_fragments();
    find_neighbours();
    find_angles();
    find_dihedrals();
    find_planar_centres();
    complete();
    for (INTCOORD_T& coordinate : set_.coordinates) coordinate.value = coordinate_value(coordinate, x_);
    return std::move(set_);
  }

 private:
  double distance(int i, int j) const { return (position_of(x_, i) - position_of(x_, j)).norm(); }
  bool linear(int i, int j, int k) const { return angle_at(x_, i, j, k) > LINEAR_ANGLE; }
  bool linked(int i, int j) const { return links_(i - 1, j - 1) != 0; }

  /// False when the limit is reached.
  bool add_bond(int i, int j, bool through_space) {
    if (set_.n_bonds == MAX_BONDS) {
      set_.bonds_truncated = true;
      return false;
    }
    ++set_.n_bonds;
    set_.bonded(i - 1, j - 1) = set_.bonded(j - 1, i - 1) = 1;
    if (through_space) links_(i - 1, j - 1) = links_(j - 1, i - 1) = 1;
    INTCOORD_T bond;
    bond.atoms = {i, j, 0, 0};
    bond.through_space = through_space;
    set_.coordinates.push_back(bond);
    return true;
  }

  void add_angle(const INTCOORD_T& angle) {
    if (set_.n_angles == MAX_ANGLES) return;
    ++set_.n_angles;
    set_.coordinates.push_back(angle);
  }

  void add_dihedral(int i, int j, int k, int l, bool through_space) {
    if (set_.n_dihedrals == MAX_TORSIONS) return;
    ++set_.n_dihedrals;
    INTCOORD_T dihedral;
    dihedral.kind = KIND::dihedral;
    dihedral.atoms = {i, j, k, l};
    dihedral.through_space = through_space;
    set_.coordinates.push_back(dihedral);
  }

  void find_bonds() {
    for (int i = 1; i <= n_; ++i) {
      for (int j = i + 1; j <= n_; ++j) {
        const double d = distance(i, j);
        const double limit = BOND_FACTOR * (covalent_radius(z_[i - 1]) + covalent_radius(z_[j - 1]));
        if (d > SHORTEST_BOND && d < limit && !add_bond(i, j, false)) return;
      }
    }
  }

  /// Number of the fragment of every atom (index 0 unused).
  std::vector<int> fragments() const {
    std::vector<int> fragment(static_cast<std::size_t>(n_) + 1, 0);
    int count = 0;
    for (int start = 1; start <= n_; ++start) {
      if (fragment[start] != 0) continue;
      std::vector<int> open = {start};
      fragment[start] = ++count;
      while (!open.empty()) {
        const int i = open.back();
        open.pop_back();
        for (int j = 1; j <= n_; ++j) {
          if (fragment[j] != 0 || set_.bonded(i - 1, j - 1) == 0) continue;
          fragment[j] = count;
          open.push_back(j);
        }
      }
    }
    return fragment;
  }

  double relative_distance(int i, int j) const {
    return distance(i, j) / (covalent_radius(z_[i - 1]) + covalent_radius(z_[j - 1]));
  }

  /// What makes a link between fragments short.
  double link_length(int i, int j) const {
    return links_wanted_ == FRAGMENT_LINKS::nearest ? distance(i, j) : relative_distance(i, j);
  }

  /// The shortest link first, until one piece is left.
  void join_fragments() {
    while (true) {
      const std::vector<int> fragment = fragments();
      double shortest = std::numeric_limits<double>::infinity();
      int first = 0;
      int second = 0;
      for (int i = 1; i <= n_; ++i) {
        for (int j = i + 1; j <= n_; ++j) {
          if (fragment[i] == fragment[j] || distance(i, j) <= SHORTEST_BOND || link_length(i, j) >= shortest) continue;
          shortest = link_length(i, j);
          first = i;
          second = j;
        }
      }
      if (first == 0 || !add_bond(first, second, true)) return;
      if (links_wanted_ == FRAGMENT_LINKS::forming_bonds && !add_links_as_short(fragment, first, second)) return;
    }
  }

  /// The other links between the fragments of a link that are as short.
  bool add_links_as_short(const std::vector<int>& fragment, int first, int second) {
    const auto joined = std::minmax(fragment[first], fragment[second]);
    const double limit = AS_SHORT * relative_distance(first, second);
    for (int i = 1; i <= n_; ++i) {
      for (int j = i + 1; j <= n_; ++j) {
        if (set_.bonded(i - 1, j - 1) != 0 || std::minmax(fragment[i], fragment[j]) != joined) continue;
        if (distance(i, j) > SHORTEST_BOND && relative_distance(i, j) <= limit && !add_bond(i, j, true)) return false;
      }
    }
    return true;
  }

  void find_neighbours() {
    for (int i = 1; i <= n_; ++i) {
      for (int j = 1; j <= n_; ++j) {
        if (set_.bonded(i - 1, j - 1) != 0) neighbours_[i].push_back(j);
      }
    }
  }

  void find_angles() {
    for (int apex = 1; apex <= n_; ++apex) {
      const std::vector<int>& wings = neighbours_[apex];
      for (std::size_t a = 0; a < wings.size(); ++a) {
        for (std::size_t b = a + 1; b < wings.size(); ++b) add_angle_or_bends(wings[a], apex, wings[b]);
      }
    }
  }

  void add_angle_or_bends(int i, int apex, int k) {
    INTCOORD_T angle;
    angle.kind = KIND::angle;
    angle.atoms = {i, apex, k, 0};
    angle.through_space = linked(i, apex) || linked(apex, k);
    if (!linear(i, apex, k)) {
      add_angle(angle);
      return;
    }
    // The first axis lies in the plane of a chain that is a little bent, so that this bend has all of its curvature.
    const VECTOR3 chain = position_of(x_, k) - position_of(x_, i);
    const VECTOR3 bisector = (position_of(x_, i) - position_of(x_, apex)).normalized() +
                             (position_of(x_, k) - position_of(x_, apex)).normalized();
    const VECTOR3 first = unit_across(chain, bisector.norm() > 1e-4 ? bisector : VECTOR3::Zero());
    const VECTOR3 second = chain.normalized().cross(first);
    angle.kind = KIND::linear_bend;
    angle.axis = {first.x(), first.y(), first.z()};
    add_angle(angle);
    angle.axis = {second.x(), second.y(), second.z()};
    add_angle(angle);
  }

  void find_dihedrals() {
    for (int j = 1; j <= n_; ++j) {
      for (const int next : neighbours_[j]) {
        const std::vector<int> path = straight_path(j, next);
        // Of a path and its reverse one is enough.
        if (j < path.back()) add_dihedrals_over(path);
      }
    }
  }

  /// From a bond on through the atoms that have two neighbours in line: torsion goes on across them (as in allene).
  std::vector<int> straight_path(int first, int second) const {
    std::vector<int> path = {first, second};
    while (static_cast<int>(path.size()) <= n_) {
      const int last = path.back();
      const int before = path[path.size() - 2];
      const std::vector<int>& around = neighbours_[last];
      if (around.size() != 2) break;
      const int next = around[0] == before ? around[1] : around[0];
      if (!linear(before, last, next)) break;
      path.push_back(next);
    }
    return path;
  }

  void add_dihedrals_over(const std::vector<int>& path) {
    const int j = path.front();
    const int k = path.back();
    if (j == k) return;
    bool space = false;
    for (std::size_t n = 1; n < path.size(); ++n) space = space || linked(path[n - 1], path[n]);
    for (const int i : neighbours_[j]) {
      if (i == path[1] || i == k || linear(i, j, k)) continue;
      for (const int l : neighbours_[k]) {
        if (l == path[path.size() - 2] || l == i || l == j || linear(j, k, l)) continue;
        add_dihedral(i, j, k, l, space || linked(i, j) || linked(k, l));
      }
    }
  }

  void find_planar_centres() {
    for (const auto& [i, apex, k, l] : planar_centres(set_, x_, PLANAR_SUM)) add_out_of_plane(i, apex, k, l);
  }

  void add_out_of_plane(int i, int apex, int k, int l) {
    if (linear(i, apex, k) || linear(apex, k, l)) return;
    add_dihedral(i, apex, k, l, linked(i, apex) || linked(apex, k) || linked(apex, l));
  }

  /// What is still missing of the 3N - 6 (3N - 5) motions: out-of-plane dihedrals, then distances, each where it adds one.
  void complete() {
    if (set_.bonds_truncated) return;
    const MATRIX rigid = rigid_motions(x_);
    const FRAME_T frame = frame_of(wilson_b(set_, x_));
    const Eigen::Index n_missing = x_.size() - rigid.cols() - frame.v.cols();
    if (n_missing <= 0) return;
    MATRIX known(x_.size(), rigid.cols() + frame.v.cols());
    known << rigid, frame.v;
    const Eigen::HouseholderQR<MATRIX> qr(known);
    MATRIX missing = (qr.householderQ() * MATRIX::Identity(x_.size(), x_.size())).rightCols(n_missing);
    for (int apex = 1; apex <= n_ && missing.cols() > 0; ++apex) {
      const std::vector<int>& w = neighbours_[apex];
      for (std::size_t a = 2; a < w.size() && missing.cols() > 0; ++a) {
        if (!sees({KIND::dihedral, {w[0], apex, w[a - 1], w[a]}}, missing)) continue;
        add_out_of_plane(w[0], apex, w[a - 1], w[a]);
      }
    }
    for (int i = 1; i <= n_ && missing.cols() > 0; ++i) {
      for (int j = i + 1; j <= n_ && missing.cols() > 0; ++j) {
        if (set_.bonded(i - 1, j - 1) == 0 && distance(i, j) > SHORTEST_BOND && sees({KIND::bond, {i, j, 0, 0}}, missing))
          if (!add_bond(i, j, true)) return;
      }
    }
  }

  /// Whether a coordinate has a good part of its derivative in the missing motions; what it sees is then taken out of them.
  bool sees(const INTCOORD_T& coordinate, MATRIX& missing) const {
    constexpr double good_part = 0.1;
    COORDINATE_SET_T alone;
    alone.coordinates = {coordinate};
    const VECTOR row = wilson_b(alone, x_).transpose();
    const VECTOR part = missing.transpose() * row;
    if (part.norm() <= good_part * row.norm()) return false;
    const Eigen::HouseholderQR<MATRIX> qr(part);
    const MATRIX basis = qr.householderQ() * MATRIX::Identity(part.size(), part.size());
    missing = (missing * basis.rightCols(part.size() - 1)).eval();
    return true;
  }

  const std::vector<int>& z_;
  const VECTOR& x_;
  FRAGMENT_LINKS links_wanted_;
  int n_;
  std::vector<std::vector<int>> neighbours_;  // of every atom, from 1
  Eigen::MatrixXi links_;                     // bonds that only join fragments
  COORDINATE_SET_T set_;
};

bool ends_bent(const INTCOORD_T& c, const VECTOR& x) {
  return angle_at(x, c.atoms[0], c.atoms[1], c.atoms[2]) < STILL_AN_ANGLE &&
         angle_at(x, c.atoms[1], c.atoms[2], c.atoms[3]) < STILL_AN_ANGLE;
}

}  // namespace

COORDINATE_SET_T generate_coordinates(const std::vector<int>& z, const VECTOR& positions, FRAGMENT_LINKS links) {
  return GENERATOR_T(z, positions, links).generate();
}

bool still_suited(const COORDINATE_SET_T& set, const VECTOR& positions) {
  for (const INTCOORD_T& c : set.coordinates) {
    if (c.kind == KIND::dihedral && !ends_bent(c, positions)) return false;
    if (c.kind == KIND::angle && !c.frozen && coordinate_value(c, positions) > STILL_AN_ANGLE) return false;
    if (c.kind == KIND::linear_bend && angle_at(positions, c.atoms[0], c.atoms[1], c.atoms[2]) < STILL_LINEAR) return false;
  }
  return planar_centres(set, positions, STILL_PYRAMIDAL).empty();
}

}  // namespace zentrix::INTERNAL_COORDS

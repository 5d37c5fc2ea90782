#include "hessian/symmetry_number.hpp"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "hessian/vibrations.hpp"

namespace zentrix::VIBRATIONS {
namespace {

constexpr double first_tolerance = 0.03;  ///< bohr
/// Two atoms span a plane with the centre when one of them is that many tolerances from the line through the other.
constexpr double shortest_arm = 10.0;

using VECTOR3 = Eigen::Vector3d;
using PERMUTATION_T = std::vector<std::size_t>;  ///< atom i goes where atom [i] is

/// A pair of atoms that a rotation about the centre is determined by.
using PAIR_T = std::pair<std::size_t, std::size_t>;

class ROTATION_SEARCH_T {
 public:
  explicit ROTATION_SEARCH_T(const MOLECULE_T& molecule) {
    const VECTOR3 centre = inertia_of(molecule).centre;
    for (const ATOM_T& atom : molecule.atoms) {
      z_.push_back(atom.z);
      r_.emplace_back(Eigen::Map<const VECTOR3>(atom.position.data()) - centre);
    }
  }

  /// Permutations of atoms by proper rotations; the identity among them.
  std::set<PERMUTATION_T> rotations(double tolerance) const {
    std::set<PERMUTATION_T> found;
    const std::optional<PAIR_T> reference = reference_pair(tolerance);
    if (!reference) return found;
    const auto [a, b] = *reference;
    for (std::size_t a2 = 0; a2 < r_.size(); ++a2) {
      if (!alike(a, a2, tolerance)) continue;
      for (std::size_t b2 = 0; b2 < r_.size(); ++b2) {
        if (!alike(b, b2, tolerance) || std::abs((r_[a] - r_[b]).norm() - (r_[a2] - r_[b2]).norm()) > 2.0 * tolerance)
          continue;
        if (arm(a2, b2) < 0.5 * shortest_arm * tolerance) continue;
        const std::optional<PERMUTATION_T> images = permutation(frame(a2, b2) * frame(a, b).transpose(), tolerance);
        if (images) found.insert(*images);
      }
    }
    return found;
  }

  bool has_inversion(double tolerance) const { return images_under(-Eigen::Matrix3d::Identity(), tolerance).has_value(); }

 private:
  /// Same element, same distance from the centre.
  bool alike(std::size_t i, std::size_t j, double tolerance) const {
    return z_[i] == z_[j] && std::abs(r_[i].norm() - r_[j].norm()) <= tolerance;
  }

  std::size_t n_alike(std::size_t i, double tolerance) const {
    std::size_t n = 0;
    for (std::size_t j = 0; j < r_.size(); ++j) n += alike(i, j, tolerance) ? 1 : 0;
    return n;
  }

  double area(std::size_t a, std::size_t b) const { return r_[a].cross(r_[b]).norm(); }

  /// Distance of atom b from the line through the centre and atom a; 0 when a lies at the centre.
  double arm(std::size_t a, std::size_t b) const { return r_[a].norm() > 0.0 ? area(a, b) / r_[a].norm() : 0.0; }

  /// The pair with the fewest possible images among those with long levers, the farther atom first: the rotation that maps
  /// two atoms is the less accurate the nearer they are to the centre and to one line.
  std::optional<PAIR_T> reference_pair(double tolerance) const {
    std::vector<std::size_t> n;
    double largest = 0.0;
    for (std::size_t i = 0; i < r_.size(); ++i) {
      n.push_back(n_alike(i, tolerance));
      for (std::size_t j = 0; j < i; ++j) largest = std::max(largest, area(i, j));
    }
    std::optional<PAIR_T> best;
    for (std::size_t a = 0; a < r_.size(); ++a) {
      for (std::size_t b = 0; b < r_.size(); ++b) {
        if (arm(a, b) < shortest_arm * tolerance || area(a, b) < 0.5 * largest || r_[a].norm() < r_[b].norm()) continue;
        if (!best || n[a] * n[b] < n[best->first] * n[best->second]) best = PAIR_T{a, b};
      }
    }
    return best;
  }

  Eigen::Matrix3d frame(std::size_t a, std::size_t b) const {
    Eigen::Matrix3d axes;
    axes.col(0) = r_[a].normalized();
    axes.col(2) = r_[a].cross(r_[b]).normalized();
    axes.col(1) = axes.col(2).cross(axes.col(0));
    return axes;
  }

  /// Nearest equal atom of every image, when each is within the tolerance and taken once.
  std::optional<PERMUTATION_T> images_under(const Eigen::Matrix3d& rotation, double tolerance) const {
    PERMUTATION_T images;
    std::vector<bool> taken(r_.size(), false);
    for (std::size_t i = 0; i < r_.size(); ++i) {
      const VECTOR3 image = rotation * r_[i];
      std::size_t nearest = r_.size();
      double distance = tolerance;
      for (std::size_t j = 0; j < r_.size(); ++j) {
        if (z_[i] != z_[j] || (image - r_[j]).norm() > distance) continue;
        nearest = j;
        distance = (image - r_[j]).norm();
      }
      if (nearest == r_.size() || taken[nearest]) return std::nullopt;
      taken[nearest] = true;
      images.push_back(nearest);
    }
    return images;
  }

  /// The permutation of a rotation known from two atoms only. Their inaccuracy grows with the distance from the centre, so
  /// atoms are paired generously first and judged after the rotation has been fitted to all of them (W. Kabsch, Acta
  /// Crystallogr. A 32 (1976) 922).
  std::optional<PERMUTATION_T> permutation(const Eigen::Matrix3d& guess, double tolerance) const {
    constexpr double generosity = 5.0;
    const std::optional<PERMUTATION_T> rough = images_under(guess, generosity * tolerance);
    if (!rough) return std::nullopt;
    Eigen::Matrix3d covariance = Eigen::Matrix3d::Zero();
    for (std::size_t i = 0; i < r_.size(); ++i) covariance += r_[(*rough)[i]] * r_[i].transpose();
    const Eigen::JacobiSVD<Eigen::Matrix3d> svd(covariance, Eigen::ComputeFullU | Eigen::ComputeFullV);
    const double handedness = (svd.matrixU() * svd.matrixV().transpose()).determinant();
    const Eigen::Matrix3d fitted = svd.matrixU() * VECTOR3(1.0, 1.0, handedness).asDiagonal() * svd.matrixV().transpose();
    return images_under(fitted, tolerance);
  }

  std::vector<int> z_;
  std::vector<VECTOR3> r_;
};

bool is_group(const std::set<PERMUTATION_T>& permutations) {
  for (const PERMUTATION_T& p : permutations) {
    for (const PERMUTATION_T& q : permutations) {
      PERMUTATION_T product;
      for (const std::size_t image : p) product.push_back(q[image]);
      if (permutations.count(product) == 0) return false;
    }
  }
  return !permutations.empty();
}

}  // namespace

int rotational_symmetry_number(const MOLECULE_T& molecule) {
  if (molecule.atoms.size() < 2) return 1;
  const ROTATION_SEARCH_T search(molecule);
  if (inertia_of(molecule).linear) return search.has_inversion(first_tolerance) ? 2 : 1;
  constexpr double last_tolerance = 1e-6;
  for (double tolerance = first_tolerance; tolerance > last_tolerance; tolerance *= 0.5) {
    const std::set<PERMUTATION_T> permutations = search.rotations(tolerance);
    if (is_group(permutations)) return static_cast<int>(permutations.size());
  }
  return 1;
}

}  // namespace zentrix::VIBRATIONS

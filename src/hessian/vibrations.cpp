#include "hessian/vibrations.hpp"

#include <algorithm>
#include <cmath>

#include "constants/elements.hpp"
#include "constants/units.hpp"
#include "hessian/vibration_report.hpp"
#include "linalg/lapack.hpp"

namespace zentrix::VIBRATIONS {
namespace {

/// A molecule is linear when its smallest moment of inertia is below this part of the largest.
constexpr double linearity_ratio = 1e-6;
/// Shortest remainder of a rigid motion that is still independent of the others.
constexpr double independence = 1e-6;
/// Share of the root of the largest moment from which a rotation of a linear molecule counts: what the rotation about its
/// own axis leaves of a molecule that is not quite straight is a bend.
constexpr double rotation_share = 0.1;
/// Displacements shorter than this are not scaled to unit length.
constexpr double shortest_mode = 1e-10;

double mass_of(const ATOM_T& atom) { return atomic_weight(atom.z) * ELECTRON_MASSES_PER_U; }

Eigen::Vector3d position_of(const ATOM_T& atom) { return Eigen::Map<const Eigen::Vector3d>(atom.position.data()); }

/// Mass-weighted translations along x, y, z, then rotations about them through the centre of mass; columns.
MATRIX rigid_motions(const MOLECULE_T& molecule, const Eigen::Vector3d& centre, const VECTOR& root_mass) {
  MATRIX motions = MATRIX::Zero(root_mass.size(), 6);
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    const auto row = static_cast<Eigen::Index>(3 * a);
    const Eigen::Vector3d r = position_of(molecule.atoms[a]) - centre;
    motions.block<3, 3>(row, 0).setIdentity();
    for (int axis = 0; axis < 3; ++axis) {
      motions.block<3, 1>(row, 3 + axis) = Eigen::Vector3d::Unit(axis).cross(r);
    }
  }
  return root_mass.asDiagonal() * motions;
}

MODE_TYPE type_of(double frequency) {
  if (std::abs(frequency) < TR_THRESHOLD) return MODE_TYPE::tr;
  return frequency < 0.0 ? MODE_TYPE::imaginary : MODE_TYPE::vibration;
}

/// (d mu/dQ)^2 of a displacement per unit of the mass-weighted coordinate, km/mol.
double intensity(const MATRIX& dipole_derivatives, const VECTOR& displacement) {
  return (dipole_derivatives * displacement).squaredNorm() * KM_MOL_PER_AU;
}

}  // namespace

INERTIA_T inertia_of(const MOLECULE_T& molecule) {
  INERTIA_T inertia;
  inertia.centre.setZero();
  for (const ATOM_T& atom : molecule.atoms) {
    inertia.mass += mass_of(atom);
    inertia.centre += mass_of(atom) * position_of(atom);
  }
  inertia.centre /= inertia.mass;
  MATRIX tensor = MATRIX::Zero(3, 3);
  for (const ATOM_T& atom : molecule.atoms) {
    const Eigen::Vector3d r = position_of(atom) - inertia.centre;
    tensor += mass_of(atom) * (r.squaredNorm() * Eigen::Matrix3d::Identity() - r * r.transpose());
  }
  VECTOR moments;
  if (symmetric_eigenvalues(tensor, moments) != 0) return inertia;
  for (int k = 0; k < 3; ++k) inertia.moments[static_cast<std::size_t>(k)] = moments(k);
  // An atom has no moments; rounding of its centre must not make it a rod.
  inertia.linear = molecule.atoms.size() > 1 && moments(2) > 0.0 && moments(0) < linearity_ratio * moments(2);
  return inertia;
}

VECTOR root_masses(const MOLECULE_T& molecule) {
  VECTOR root(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    root.segment<3>(static_cast<Eigen::Index>(3 * a)).setConstant(std::sqrt(mass_of(molecule.atoms[a])));
  }
  return root;
}

MATRIX mass_weighted(const MATRIX& hessian, const VECTOR& root_mass) {
  const VECTOR inverse = root_mass.cwiseInverse();
  return inverse.asDiagonal() * hessian * inverse.asDiagonal();
}

PROJECTION_T project_rigid_motions(const MATRIX& weighted, const MOLECULE_T& molecule, const VECTOR& root_mass) {
  const INERTIA_T inertia = inertia_of(molecule);
  const Eigen::Index expected = inertia.linear ? 5 : 6;
  const double shortest_rotation =
      inertia.linear ? std::max(independence, rotation_share * std::sqrt(inertia.moments[2])) : independence;
  MATRIX motions = rigid_motions(molecule, inertia.centre, root_mass);
  Eigen::Index kept = 0;  // the first columns, orthonormal
  for (Eigen::Index candidate = 0; candidate < motions.cols() && kept < expected; ++candidate) {
    VECTOR v = motions.col(candidate);
    for (Eigen::Index k = 0; k < kept; ++k) v -= motions.col(k).dot(v) * motions.col(k);
    const double norm = v.norm();
    if (norm > (candidate < 3 ? independence : shortest_rotation)) motions.col(kept++) = v / norm;
  }
  const MATRIX basis = motions.leftCols(kept);
  const MATRIX projector = MATRIX::Identity(weighted.rows(), weighted.cols()) - basis * basis.transpose();
  const MATRIX half = weighted * projector;
  return {projector * half, static_cast<int>(kept), inertia.linear};
}

int VIBRATIONS_T::count(MODE_TYPE type) const { return static_cast<int>(std::count(types.begin(), types.end(), type)); }

double VIBRATIONS_T::zero_point_energy() const {
  double sum = 0.0;
  for (std::size_t m = 0; m < types.size(); ++m) {
    if (types[m] == MODE_TYPE::vibration) sum += 0.5 * std::sqrt(eigenvalues(static_cast<Eigen::Index>(m)));
  }
  return sum;
}

double VIBRATIONS_T::zero_point_wavenumber() const {
  double sum = 0.0;
  for (std::size_t m = 0; m < types.size(); ++m) {
    if (types[m] == MODE_TYPE::vibration) sum += 0.5 * frequencies(static_cast<Eigen::Index>(m));
  }
  return sum;
}

VIBRATIONS_T vibrations_of(const VECTOR& eigenvalues, const MATRIX& eigenvectors, const VECTOR& root_mass,
                           const MATRIX* dipole_derivatives) {
  VIBRATIONS_T result;
  result.eigenvalues = eigenvalues;
  result.frequencies =
      eigenvalues.unaryExpr([](double x) { return (x < 0.0 ? -std::sqrt(-x) : std::sqrt(x)) * WAVENUMBER_PER_HARTREE; });
  result.modes = root_mass.cwiseInverse().asDiagonal() * eigenvectors;
  if (dipole_derivatives != nullptr) result.intensities = VECTOR::Zero(eigenvalues.size());
  for (Eigen::Index m = 0; m < eigenvalues.size(); ++m) {
    result.types.push_back(type_of(result.frequencies(m)));
    if (dipole_derivatives != nullptr && result.types.back() != MODE_TYPE::tr) {
      result.intensities(m) = intensity(*dipole_derivatives, result.modes.col(m));
    }
    const double length = result.modes.col(m).norm();
    if (length > shortest_mode) result.modes.col(m) /= length;
  }
  return result;
}

int analyse_vibrations(const MOLECULE_T& molecule, const MATRIX& hessian, const MATRIX* dipole_derivatives,
                       VIBRATIONS_T& vibrations, std::ostream& report) {
  print_hessian(hessian, report);
  const VECTOR root_mass = root_masses(molecule);
  const PROJECTION_T projection = project_rigid_motions(mass_weighted(hessian, root_mass), molecule, root_mass);
  print_projection(projection, report);
  VECTOR eigenvalues;
  MATRIX eigenvectors;
  if (const int info = symmetric_eigen(projection.matrix, eigenvalues, eigenvectors); info != 0) {
    print_eigenvalue_failure(info, report);
    return info;
  }
  vibrations = vibrations_of(eigenvalues, eigenvectors, root_mass, dipole_derivatives);
  print_vibrations(vibrations, report);
  return 0;
}

}  // namespace zentrix::VIBRATIONS

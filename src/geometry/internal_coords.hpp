#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "linalg/matrix.hpp"

// Redundant internal coordinates: bonds, angles and dihedrals of a molecule, their values and Wilson's B matrix, the way
// back to Cartesian coordinates, and the coordinates that a constraint holds.
//
// Positions are 3 x natom values in bohr, atom by atom; angles are radian. Atoms are counted from 1.

namespace zentrix::INTERNAL_COORDS {

inline constexpr int MAX_BONDS = 500;
inline constexpr int MAX_ANGLES = 1000;
inline constexpr int MAX_TORSIONS = 2000;

enum class KIND {
  bond,
  angle,
  linear_bend,  ///< one of the two bends that stand for a near-linear angle; counted and printed as an angle
  dihedral
};

struct INTCOORD_T {
  KIND kind = KIND::bond;
  std::array<int, 4> atoms = {};    ///< from 1: two, three with the apex in the middle, or four
  double value = 0.0;               ///< bohr or radian, at the geometry that the set was made for
  bool frozen = false;              ///< held by a constraint
  double target = 0.0;              ///< what the constraint holds it at
  std::array<double, 3> axis = {};  ///< of a linear bend: fixed unit vector across the chain, towards which it bends
  bool through_space = false;       ///< a bond that only joins two fragments, or an angle or dihedral over such a bond
};

struct COORDINATE_SET_T {
  std::vector<INTCOORD_T> coordinates;  ///< as generated, bonds first; constraints append theirs
  Eigen::MatrixXi bonded;               ///< natom x natom, 1 where two atoms are bonded
  int n_bonds = 0;
  int n_angles = 0;  ///< linear bends included
  int n_dihedrals = 0;
  int n_frozen = 0;
  bool bonds_truncated = false;  ///< more than MAX_BONDS were found
};

/// What joins fragments that no bond does.
enum class FRAGMENT_LINKS {
  nearest,       ///< the two nearest atoms
  forming_bonds  ///< the pair nearest in units of its covalent radii, with all that are as near: carbon atoms between which
                 ///< bonds form are farther apart than the hydrogen atoms beside them
};

/// Bonds by covalent radii, with the shortest links between fragments; all angles at bonded atoms (two linear bends where
/// the angle is above 175 degrees); dihedrals over bonded chains, across linear segments too; out-of-plane dihedrals where
/// a planar centre has no other. `z`: atomic numbers.
COORDINATE_SET_T generate_coordinates(const std::vector<int>& z, const VECTOR& positions,
                                      FRAGMENT_LINKS links = FRAGMENT_LINKS::nearest);

/// The value of a coordinate. An angle with a bond of length zero is pi. A linear bend is the sum of the angles that its two
/// bonds make with the axis: pi for a straight chain, less when it bends towards the axis.
double coordinate_value(const INTCOORD_T& coordinate, const VECTOR& positions);
VECTOR coordinate_values(const COORDINATE_SET_T& set, const VECTOR& positions);

/// a - b, dihedral differences wrapped into (-pi, pi].
VECTOR value_difference(const COORDINATE_SET_T& set, const VECTOR& a, const VECTOR& b);
double wrapped(double angle);

/// Wilson's B matrix, coordinates x 3 natom (E. B. Wilson, J. C. Decius, P. C. Cross, Molecular Vibrations, 1955; dihedrals
/// after A. Blondel, M. Karplus, J. Comput. Chem. 17 (1996) 1132). Rows of linear bends are cleared of rigid motions, from
/// which the fixed axis does not free them when the chain is not straight.
MATRIX wilson_b(const COORDINATE_SET_T& set, const VECTOR& positions);

/// Orthonormal translations and rotations, 3 natom x 6 (5 for a linear molecule, 3 for an atom).
MATRIX rigid_motions(const VECTOR& positions);

/// What is independent in the coordinates: B = u diag(sigma) v^T over the non-zero singular values.
struct FRAME_T {
  MATRIX u;  ///< coordinates x rank
  VECTOR sigma;
  MATRIX v;  ///< 3 natom x rank
  /// Gradient in the coordinates, of minimal norm, from the Cartesian one.
  VECTOR internal_gradient(const VECTOR& cartesian) const;
  /// The smallest Cartesian displacement with the coordinate changes dq (least squares).
  VECTOR cartesian_step(const VECTOR& dq) const;
};
FRAME_T frame_of(const MATRIX& b);

struct BACK_TRANSFORMATION_T {
  VECTOR positions;
  bool converged = false;
  int iterations = 0;
};

/// Positions whose coordinates differ from those at `positions` by dq, iterated with the generalised inverse until the
/// displacement is below 1e-8 bohr, at most 50 times; otherwise the best found. Frozen coordinates go to their targets
/// exactly.
BACK_TRANSFORMATION_T back_transform(const COORDINATE_SET_T& set, const VECTOR& positions, const VECTOR& dq);

/// Whether the set still suits the geometry: no angle became linear, no linear bend became an angle, no centre that only
/// angles describe became planar.
bool still_suited(const COORDINATE_SET_T& set, const VECTOR& positions);

/// A coordinate to be held, as the user names it.
struct CONSTRAINT_T {
  char kind = 'B';  ///< B, A, D
  std::vector<int> atoms;
  std::optional<double> target;  ///< bohr or radian; without it the present value
};

enum class CONSTRAINT_OUTCOME {
  matched,
  added,
  set_full,
  unknown_kind,
  atom_range,
  angle_wing_range,
  dihedral_range,
  dihedral_in_line
};

/// What became of one constraint.
struct CONSTRAINT_MATCH_T {
  CONSTRAINT_OUTCOME outcome = CONSTRAINT_OUTCOME::matched;
  char kind = 'B';
  int number = 0;      ///< of the coordinate among those of its kind, from 1
  double value = 0.0;  ///< target
};

/// Finds every constraint among the coordinates, or appends it, and freezes it. Stops at the first that fails: the last
/// match then tells why, and the status is not 0.
[[nodiscard]] int apply_constraints(const std::vector<CONSTRAINT_T>& constraints, const VECTOR& positions,
                                    COORDINATE_SET_T& set, std::vector<CONSTRAINT_MATCH_T>& matches);

}  // namespace zentrix::INTERNAL_COORDS

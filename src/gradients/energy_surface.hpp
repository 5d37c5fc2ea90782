#pragma once

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// Energy and gradient of the chosen method at a geometry: all that optimisers, numerical Hessians, scans, counterpoise and
// transition-state searches know of electronic structure.

namespace zentrix::GRADIENTS {

/// Cartesian positions or gradients of all atoms: 3 x natom values, atom by atom, x, y, z.
using CARTESIAN_T = VECTOR;

struct SURFACE_POINT_T {
  double energy = 0.0;    ///< hartree
  CARTESIAN_T gradient;   ///< hartree/bohr; empty when only the energy was asked for
  bool converged = true;  ///< false: the numbers are those of an iteration that has not converged
};

/// A potential-energy surface. Every evaluation builds what belongs to its geometry anew and drops it; only the density of
/// the last converged evaluation travels, as the start of the next one.
class ENERGY_SURFACE_T {
 public:
  virtual ~ENERGY_SURFACE_T() = default;
  /// The molecule whose atoms move (its positions are those of the input, not of the last evaluation).
  virtual const MOLECULE_T& molecule() const = 0;
  /// `positions` in bohr.
  [[nodiscard]] virtual SURFACE_POINT_T energy(const CARTESIAN_T& positions) = 0;
  [[nodiscard]] virtual SURFACE_POINT_T energy_and_gradient(const CARTESIAN_T& positions) = 0;
  /// From now on every evaluation starts from what the density at hand now tells, and none becomes the reference of the next:
  /// geometries displaced from a reference are all nearest to the reference.
  virtual void hold_start() {}
};

/// The molecule with its atoms elsewhere (bohr).
MOLECULE_T moved(const MOLECULE_T& molecule, const CARTESIAN_T& positions);
/// Positions of the molecule's atoms.
CARTESIAN_T positions_of(const MOLECULE_T& molecule);

}  // namespace zentrix::GRADIENTS

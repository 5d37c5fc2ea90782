#pragma once

#include <vector>

#include "hessian/vibrations.hpp"

// Statistical thermodynamics of an ideal gas of rigid rotors and harmonic oscillators (D. A. McQuarrie, Statistical
// Mechanics, 1976, chapters 5 to 8), at 298.15 K and 1 atm.

namespace zentrix::VIBRATIONS {

/// Vibrations below this, cm^-1, enter the quasi-harmonic entropy as if they had it (R. F. Ribeiro, A. V. Marenich,
/// C. J. Cramer, D. G. Truhlar, J. Phys. Chem. B 115 (2011) 14556).
inline constexpr double QUASI_HARMONIC_LIMIT = 100.0;

enum class ROTOR { atom, linear, nonlinear };

/// What one kind of motion adds, hartree and hartree/K.
struct MOTION_T {
  double energy = 0.0;  ///< thermal, without the zero-point energy
  double heat_capacity = 0.0;
  double entropy = 0.0;
};

struct THERMOCHEMISTRY_T {
  double temperature = 0.0;  ///< K
  double mass = 0.0;         ///< u
  ROTOR rotor = ROTOR::nonlinear;
  int symmetry_number = 1;
  std::vector<double> rotational_constants;  ///< cm^-1, descending: none, one or three
  MOTION_T translation;
  MOTION_T rotation;
  MOTION_T vibration;
  MOTION_T electronic;
  double quasi_harmonic_entropy = 0.0;  ///< of vibration
  int n_raised = 0;                     ///< vibrations that were raised for it
  int n_imaginary = 0;                  ///< modes left out
  int n_soft = 0;                       ///< vibrations below TR_THRESHOLD: in the quasi-harmonic entropy alone
  double energy = 0.0;                  ///< electronic, nuclear repulsion included
  double zero_point_energy = 0.0;

  MOTION_T total() const;
  double internal_energy() const { return energy + zero_point_energy + total().energy; }
  double enthalpy() const;
  double gibbs_energy() const { return enthalpy() - temperature * total().entropy; }
  double quasi_harmonic_total_entropy() const { return total().entropy - vibration.entropy + quasi_harmonic_entropy; }
  double quasi_harmonic_gibbs_energy() const { return enthalpy() - temperature * quasi_harmonic_total_entropy(); }
};

/// `energy`: of the molecule at rest, hartree. Modes of type vibration count, others do not.
THERMOCHEMISTRY_T thermochemistry(const MOLECULE_T& molecule, const VIBRATIONS_T& vibrations, double energy);

}  // namespace zentrix::VIBRATIONS

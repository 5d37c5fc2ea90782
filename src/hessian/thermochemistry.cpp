#include "hessian/thermochemistry.hpp"

#include <algorithm>
#include <cmath>

#include "constants/units.hpp"
#include "hessian/symmetry_number.hpp"

namespace zentrix::VIBRATIONS {
namespace {

/// S/k = ln(q/N) + 5/2 with q = (m k T / 2 pi)^(3/2) k T / p (Sackur and Tetrode; hbar = 1).
MOTION_T translation(double mass, double temperature) {
  const double kt = BOLTZMANN * temperature;
  const double volume = kt / (ATMOSPHERE / PASCAL_PER_AU);
  const double q = std::pow(mass * kt / (2.0 * PI), 1.5) * volume;
  return {1.5 * kt, 1.5 * BOLTZMANN, BOLTZMANN * (2.5 + std::log(q))};
}

/// q = 2 I k T / sigma for a linear rotor, sqrt(pi) (2 k T)^(3/2) sqrt(Ia Ib Ic) / sigma for the others.
MOTION_T rotation(const INERTIA_T& inertia, ROTOR rotor, int symmetry_number, double temperature) {
  if (rotor == ROTOR::atom) return {};
  const double kt = BOLTZMANN * temperature;
  const auto [a, b, c] = inertia.moments;
  const bool linear = rotor == ROTOR::linear;
  const double q = (linear ? 2.0 * c * kt : std::sqrt(PI * a * b * c) * std::pow(2.0 * kt, 1.5)) / symmetry_number;
  const double half_degrees = linear ? 1.0 : 1.5;
  return {half_degrees * kt, half_degrees * BOLTZMANN, BOLTZMANN * (half_degrees + std::log(q))};
}

/// One oscillator of energy quantum `quantum` (hartree).
MOTION_T oscillator(double quantum, double temperature) {
  const double x = quantum / (BOLTZMANN * temperature);
  const double occupation = 1.0 / std::expm1(x);
  return {quantum * occupation, BOLTZMANN * x * x * occupation * (occupation + 1.0),
          BOLTZMANN * (x * occupation - std::log(-std::expm1(-x)))};
}

void add(MOTION_T& sum, const MOTION_T& part) {
  sum.energy += part.energy;
  sum.heat_capacity += part.heat_capacity;
  sum.entropy += part.entropy;
}

void add_vibrations(const VIBRATIONS_T& vibrations, THERMOCHEMISTRY_T& result) {
  const double limit = QUASI_HARMONIC_LIMIT / WAVENUMBER_PER_HARTREE;
  for (std::size_t m = 0; m < vibrations.types.size(); ++m) {
    if (vibrations.types[m] != MODE_TYPE::vibration) continue;
    const double quantum = std::sqrt(vibrations.eigenvalues(static_cast<Eigen::Index>(m)));
    add(result.vibration, oscillator(quantum, result.temperature));
    result.quasi_harmonic_entropy += oscillator(std::max(quantum, limit), result.temperature).entropy;
    if (quantum < limit) ++result.n_raised;
  }
  // Vibrations below the limit of translations and rotations: only the quasi-harmonic form can tell their entropy.
  const int n_rigid = result.rotor == ROTOR::atom ? 3 : result.rotor == ROTOR::linear ? 5 : 6;
  result.n_soft = std::max(0, vibrations.count(MODE_TYPE::tr) - n_rigid);
  result.quasi_harmonic_entropy += result.n_soft * oscillator(limit, result.temperature).entropy;
  result.n_raised += result.n_soft;
  result.n_imaginary = vibrations.count(MODE_TYPE::imaginary);
  result.zero_point_energy = vibrations.zero_point_energy();
}

ROTOR rotor_of(const INERTIA_T& inertia, std::size_t n_atoms) {
  if (n_atoms == 1) return ROTOR::atom;
  return inertia.linear ? ROTOR::linear : ROTOR::nonlinear;
}

/// 1/(2 I) of the moments that the rotor has, cm^-1, descending.
std::vector<double> rotational_constants(const INERTIA_T& inertia, ROTOR rotor) {
  std::vector<double> constants;
  const std::size_t first = rotor == ROTOR::atom ? 3 : rotor == ROTOR::linear ? 2 : 0;
  for (std::size_t k = first; k < 3; ++k) constants.push_back(WAVENUMBER_PER_HARTREE / (2.0 * inertia.moments[k]));
  return constants;
}

}  // namespace

MOTION_T THERMOCHEMISTRY_T::total() const {
  MOTION_T sum;
  for (const MOTION_T& part : {translation, rotation, vibration, electronic}) add(sum, part);
  return sum;
}

double THERMOCHEMISTRY_T::enthalpy() const { return internal_energy() + BOLTZMANN * temperature; }

THERMOCHEMISTRY_T thermochemistry(const MOLECULE_T& molecule, const VIBRATIONS_T& vibrations, double energy) {
  THERMOCHEMISTRY_T result;
  const INERTIA_T inertia = inertia_of(molecule);
  result.temperature = STANDARD_TEMPERATURE;
  result.mass = inertia.mass / ELECTRON_MASSES_PER_U;
  result.rotor = rotor_of(inertia, molecule.atoms.size());
  result.symmetry_number = rotational_symmetry_number(molecule);
  result.rotational_constants = rotational_constants(inertia, result.rotor);
  result.energy = energy;
  result.translation = translation(inertia.mass, result.temperature);
  result.rotation = rotation(inertia, result.rotor, result.symmetry_number, result.temperature);
  result.electronic.entropy = BOLTZMANN * std::log(molecule.multiplicity);
  add_vibrations(vibrations, result);
  return result;
}

}  // namespace zentrix::VIBRATIONS

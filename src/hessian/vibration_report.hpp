#pragma once

#include <iosfwd>

#include "hessian/thermochemistry.hpp"
#include "hessian/vibrations.hpp"

// The printed blocks of the vibrational analysis and the thermochemistry.

namespace zentrix::VIBRATIONS {

/// The matrix in blocks of six columns, hartree/bohr^2.
void print_hessian(const MATRIX& hessian, std::ostream& report);
void print_projection(const PROJECTION_T& projection, std::ostream& report);
void print_eigenvalue_failure(int info, std::ostream& report);
/// Frequency table, counts, zero-point energy, normal modes.
void print_vibrations(const VIBRATIONS_T& vibrations, std::ostream& report);
void print_thermochemistry(const THERMOCHEMISTRY_T& thermochemistry, std::ostream& report);

/// A warning when a structure found as a minimum has imaginary modes.
void print_minimum_verdict(const VECTOR& frequencies, std::ostream& report);
/// Whether a structure found as a transition state has its one imaginary mode. `frequencies` in cm^-1, imaginary ones
/// negative; `converged`: everything before it.
void print_saddle_verdict(const VECTOR& frequencies, bool converged, std::ostream& report);

}  // namespace zentrix::VIBRATIONS

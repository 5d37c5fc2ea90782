#pragma once

#include <functional>
#include <iosfwd>
#include <vector>

#include "input/input_data.hpp"

// Front door of the counterpoise analysis: the basis-set superposition error of a complex of fragments by S. F. Boys, F.
// Bernardi, Mol. Phys. 19 (1970) 553, for any number of fragments each computed in the basis of the whole complex. Where the
// energies come from is the caller's business.

namespace zentrix::COMPOSITE {

enum class SUBSYSTEM {
  complex,           ///< all atoms
  isolated,          ///< the fragment's atoms only
  in_complex_basis,  ///< the fragment's atoms, and the others as ghosts: basis functions without charge or electrons
};

/// Input of one energy calculation: atoms, charge and multiplicity of fragment `fragment` (from 1; not used for the
/// complex), every other setting as in `input`, except that dispersion is off.
INPUT_PARSER::INPUT_DATA_T select_fragment_system(const INPUT_PARSER::INPUT_DATA_T& input, int fragment, SUBSYSTEM mode);

struct SUBSYSTEM_ENERGY_T {
  double energy = 0.0;  ///< hartree
  bool failed = false;  ///< the molecule could not be built, the SCF did not converge, or a fault stopped it
};
using ENERGY_OF_T = std::function<SUBSYSTEM_ENERGY_T(const INPUT_PARSER::INPUT_DATA_T& subsystem)>;

/// Energies of a counterpoise analysis, hartree.
struct COUNTERPOISE_T {
  double complex = 0.0;
  std::vector<double> isolated;          ///< per fragment, in its own basis
  std::vector<double> in_complex_basis;  ///< per fragment, in the basis of the complex
  double sum_isolated() const;
  double sum_in_complex_basis() const;
  double uncorrected() const { return complex - sum_isolated(); }        ///< interaction energy
  double corrected() const { return complex - sum_in_complex_basis(); }  ///< with the counterpoise correction
  double bsse() const { return uncorrected() - corrected(); }            ///< zero or below
};

/// Runs all energies, printing the heading of each, and the summary. 0 on success; non-zero, after the line of the step that
/// failed and without a summary, otherwise.
[[nodiscard]] int run_counterpoise(const INPUT_PARSER::INPUT_DATA_T& input, const ENERGY_OF_T& energy_of,
                                   COUNTERPOISE_T& result, std::ostream& report);

}  // namespace zentrix::COMPOSITE

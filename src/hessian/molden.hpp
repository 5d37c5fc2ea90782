#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "molecule/types.hpp"
#include "scf/scf.hpp"

// Molden files for visualisation: orbitals, vibrations (G. Schaftenaar, J. H. Noordik, J. Comput.-Aided Mol. Des. 14 (2000)
// 123). What a reader has to know of them stands in docs/side-files.md.

namespace zentrix::MOLDEN {

/// Components of a shell in the order of the format: entry i is the position, from 0, that component i has in this
/// program's order. Cartesian or spherical, l up to 4.
std::vector<int> component_order(int l, bool spherical);

/// Contraction coefficients of a shell over normalised primitives x^l; with them the contraction is normalised.
std::vector<double> normalised_coefficients(const SHELL_T& shell);

/// The orbital file; `scf` over the molecule's basis functions.
std::string orbitals_text(const MOLECULE_T& molecule, const SCF::SCF_RESULT_T& scf);
/// The vibrational file: frequencies (cm^-1) and Cartesian modes of unit length (columns).
std::string vibrations_text(const MOLECULE_T& molecule, const VECTOR& frequencies, const MATRIX& modes);

/// Writes base_mo.molden. Functions beyond g have no place in the format: then a warning and no file. Returns the name;
/// empty when nothing was written.
std::string export_orbitals(const std::string& base, const MOLECULE_T& molecule, const SCF::SCF_RESULT_T& scf,
                            std::ostream& report);
/// Writes base.molden. Returns the name; empty after a warning.
std::string write_vibrations(const std::string& base, const MOLECULE_T& molecule, const VECTOR& frequencies,
                             const MATRIX& modes, std::ostream& report);

}  // namespace zentrix::MOLDEN

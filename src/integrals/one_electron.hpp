#pragma once

#include <array>
#include <iosfwd>
#include <string>

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

namespace zentrix::INTEGRALS_1E {

/// S, T, V and H_core = T + V over the functions of the run, n_basis x n_basis; the last three in hartree.
struct ONE_ELECTRON_T {
  MATRIX s;
  MATRIX t;
  MATRIX v;
  MATRIX h_core;
};

/// All four matrices, threaded over shell pairs; no printing.
ONE_ELECTRON_T one_electron_matrices(const MOLECULE_T& molecule);
/// The same with progress lines and the diagnostics of every matrix.
ONE_ELECTRON_T compute_one_electron(const MOLECULE_T& molecule, std::ostream& report);

/// <mu|nu>, n_basis x n_basis like all that follow.
MATRIX overlap(const MOLECULE_T& molecule);
/// -1/2 <mu| nabla^2 |nu>, hartree.
MATRIX kinetic(const MOLECULE_T& molecule);
/// -sum_A Z_A <mu| 1/|r - R_A| |nu>, hartree; Z_A the atom record's charge.
MATRIX nuclear_attraction(const MOLECULE_T& molecule);
/// <mu|x|nu>, <mu|y|nu>, <mu|z|nu> about the point `origin`, bohr.
std::array<MATRIX, 3> dipole(const MOLECULE_T& molecule, const std::array<double, 3>& origin = {});

/// Derivative of tr D (T + V) - tr W S with respect to the nuclear positions at fixed D and W (symmetric, n_basis x n_basis,
/// functions of the run), basis functions and nuclei moving alike: 3 x natom values, atom by atom, hartree/bohr. D is the
/// total density, W the energy-weighted one. One pass over the shell pairs. Stops the run when a shell is not sound or above
/// LMAX_GRAD.
VECTOR one_electron_gradient(const MOLECULE_T& molecule, const MATRIX& density, const MATRIX& energy_weighted);

/// Trace, largest absolute element, smallest and largest diagonal element under a one-letter label.
void print_matrix_diagnostics(const std::string& label, const MATRIX& matrix, std::ostream& report);
/// Title line and the matrix in blocks of columns.
void print_matrix(const std::string& title, const MATRIX& matrix, std::ostream& report);

}  // namespace zentrix::INTEGRALS_1E

#pragma once

#include <span>

#include "dft/functional_catalogue.hpp"
#include "dft/grid.hpp"
#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

namespace zentrix::DFT {

/// Derivative of the exchange-correlation energy with respect to the nuclear positions at fixed density matrices (one of a
/// closed shell, two of the spins), 3 x natom values, atom by atom, hartree/bohr. The points move with their atoms and the
/// weights change with all of them, so this is the derivative of the energy that the integrator returns, and its components
/// sum to zero (B. G. Johnson, P. M. W. Gill, J. A. Pople, J. Chem. Phys. 98 (1993) 5612).
[[nodiscard]] VECTOR xc_gradient(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid,
                                 const FUNCTIONAL_T& functional, std::span<const MATRIX> densities);

}  // namespace zentrix::DFT

#pragma once

#include <span>

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// The two-electron part of the nuclear gradient: derivatives of Coulomb and exchange energies at fixed density matrices.
//
// Densities are symmetric, n_basis x n_basis, in the run's functions (Cartesian or spherical). Gradients are 3 x natom
// values, atom by atom, x, y, z, in hartree/bohr; their sum over the atoms is zero to rounding. With the density-matrix
// response left to the overlap term (energy-weighted density), the gradient of a calculation takes
//
//   closed shell, density P (occupation 2), share a of exact exchange:  coulomb(P) - (a/2) exchange({P})
//   two spin densities:                    coulomb(P_alpha + P_beta) - a exchange({P_alpha, P_beta})

namespace zentrix::INTEGRALS_2E {

/// Default neglect threshold of gradients, hartree/bohr: interactions of two shell pairs whose rigorous bound on the
/// derivative lies below it are skipped. What is neglected stays far below what an optimiser or a Hessian can feel.
inline constexpr double GRADIENT_THRESHOLD = 1e-12;

/// Derivative of 1/2 sum_abcd D_ab D_cd (ab|cd). Stops the run when a shell is not sound or above LMAX_GRAD.
[[nodiscard]] VECTOR coulomb_gradient(const MOLECULE_T& molecule, const MATRIX& density,
                                      double threshold = GRADIENT_THRESHOLD);

/// Derivative of 1/2 sum_s sum_abcd D^s_ac D^s_bd (ab|cd), the sum running over the densities s; all of them in one pass
/// over the shell quartets. No densities: zero. Stops the run as above.
[[nodiscard]] VECTOR exchange_gradient(const MOLECULE_T& molecule, std::span<const MATRIX> densities,
                                       double threshold = GRADIENT_THRESHOLD);

}  // namespace zentrix::INTEGRALS_2E

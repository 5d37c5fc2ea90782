#pragma once

#include "dft/functional_catalogue.hpp"
#include "gradients/energy_surface.hpp"
#include "gradients/gradient_observer.hpp"
#include "scf/scf.hpp"

namespace zentrix::GRADIENTS {

/// The terms of the gradient of an SCF energy, 3 x natom values each, hartree/bohr.
struct SCF_GRADIENT_T {
  CARTESIAN_T nuclear;       ///< nuclear repulsion
  CARTESIAN_T one_electron;  ///< overlap with the energy-weighted density, kinetic energy, attraction
  CARTESIAN_T two_electron;  ///< Coulomb and exchange
  CARTESIAN_T xc;            ///< exchange-correlation with the motion of the grid; zero for Hartree-Fock
  CARTESIAN_T total() const { return nuclear + one_electron + two_electron + xc; }
};

/// sum_s g C_occ e_occ C_occ^T, the energy-weighted density of all channels.
MATRIX energy_weighted_density(const SCF::SCF_RESULT_T& scf);

/// Derivative of sum_(A<B) Z_A Z_B / R_AB.
CARTESIAN_T nuclear_repulsion_gradient(const MOLECULE_T& molecule);

/// Analytic gradient of a converged SCF state at its geometry (P. Pulay, Mol. Phys. 17 (1969) 197): with D_s = g C_occ
/// C_occ^T,
///   dE = dE_nuc + tr D dH - tr W dS + 1/2 sum D D d(J) - a/(2g) sum_s D_s D_s d(K) + dE_xc.
SCF_GRADIENT_T scf_gradient(const SCF::GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                            const SCF::SCF_RESULT_T& scf, GRADIENT_OBSERVER_T& observer);

/// "Pulay + finite differences": the overlap term analytically, everything else by central differences (1e-5 bohr) of the
/// energy at fixed density matrices. Restricted and unrestricted alike.
CARTESIAN_T semi_analytical_gradient(const SCF::GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                                     const SCF::SCF_RESULT_T& scf, GRADIENT_OBSERVER_T& observer);

}  // namespace zentrix::GRADIENTS

#pragma once

#include <memory>
#include <span>
#include <vector>

#include "dft/functional_catalogue.hpp"
#include "dft/grid.hpp"
#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// Front door of the exchange-correlation integration: energy and potential matrices of densities on the molecular grid.

namespace zentrix::DFT {

/// Result of one integration.
struct XC_RESULT_T {
  double energy = 0.0;             ///< hartree
  double electrons = 0.0;          ///< integral of the density
  std::vector<MATRIX> potentials;  ///< dE/dD of every channel, n_basis x n_basis
};

/// Integrates one functional over the grid of one geometry. With density matrices D_s, rho_s = sum D_mn phi_m phi_n and
///   V_mn = sum_p w_p [ v_rho phi_m phi_n + g . grad(phi_m phi_n) + v_tau/2 grad phi_m . grad phi_n ],
/// g = 2 v_sigma grad rho for a closed shell, g_a = 2 v_aa grad rho_a + v_ab grad rho_b for an open one (J. A. Pople, P. M.
/// W. Gill, B. G. Johnson, Chem. Phys. Lett. 199 (1992) 557). Points are worked off in spatial batches as matrix products
/// over the functions that reach them; functions below 1e-12 everywhere in a batch are left out.
class XC_INTEGRATOR_T {
 public:
  /// `channels`: 1 for the total density of a closed shell, 2 for two spin densities. Copies what it needs.
  XC_INTEGRATOR_T(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid, const FUNCTIONAL_T& functional,
                  int channels);
  ~XC_INTEGRATOR_T();
  XC_INTEGRATOR_T(const XC_INTEGRATOR_T&) = delete;
  XC_INTEGRATOR_T& operator=(const XC_INTEGRATOR_T&) = delete;

  /// Keeps basis-function values for later calls as far as so many bytes go.
  void keep_values(std::size_t bytes);

  /// Energy, electron count and potentials. Deterministic for a given number of threads. Stops the run when the density or
  /// the energy is not finite somewhere.
  [[nodiscard]] XC_RESULT_T integrate(std::span<const MATRIX> densities) const;

 private:
  struct IMPLEMENTATION;
  std::unique_ptr<IMPLEMENTATION> implementation_;
};

/// The integral of a density matrix over the grid: the electron count, up to the quadrature error.
[[nodiscard]] double integrate_density(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& grid,
                                       const MATRIX& density);

}  // namespace zentrix::DFT

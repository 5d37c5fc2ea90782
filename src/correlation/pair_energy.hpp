#pragma once

#include <array>
#include <vector>

#include "correlation/mp2.hpp"
#include "integrals/integral_panels.hpp"

namespace zentrix::CORRELATION {

struct CORRELATED_ORBITAL_T {
  int spin = 0;
  double energy = 0.0;  ///< hartree
  VECTOR overlaps;      ///< with the virtual orbitals of the other spin
};

/// The orbitals of all channels as the pairs need them: the correlated occupied ones of alpha and then of beta in one list,
/// so that one transformation serves all spin cases.
struct PAIR_ORBITALS_T {
  std::vector<CORRELATED_ORBITAL_T> occupied;
  MATRIX occupied_coefficients;  ///< over the components of the panels, a column each
  std::array<MATRIX, 2> virtual_coefficients;
  std::array<VECTOR, 2> virtual_energies;
};
PAIR_ORBITALS_T pair_orbitals(const INTEGRALS_2E::ERI_PANELS& panels, const SCF::SCF_RESULT_T& scf, const MATRIX& overlap,
                              const MP2_DIMENSIONS_T& sizes);

/// Sums over the virtual orbitals a, b of a pair i, j with X_ab = (ia|jb)/(e_i + e_j - e_a - e_b).
struct PAIR_ENERGY_T {
  double direct = 0.0;        ///< sum X_ab (ia|jb), hartree
  double exchange = 0.0;      ///< sum X_ab (ib|ja); 0 for different spins
  double spin_overlap = 0.0;  ///< sum X_ab S_ib S_ja for different spins
};

/// Buffers of one thread.
struct PAIR_WORK_T {
  MATRIX k;  ///< K^ij over the components of the panels: to be filled before the call
  MATRIX half, mo;
  VECTOR amplitudes;
};
PAIR_ENERGY_T pair_energy(const PAIR_ORBITALS_T& orbitals, int i, int j, PAIR_WORK_T& work);

}  // namespace zentrix::CORRELATION

#pragma once

#include <array>
#include <vector>

#include "scf/scf.hpp"

namespace zentrix::SCF {

/// Ground state of a neutral atom, or of its valence shell above an effective core potential.
struct ATOMIC_STATE_T {
  int n_alpha = 0;
  int n_beta = 0;
  std::array<SHELL_FILLING_T, 2> filling;  ///< alpha, beta; the electrons of an open shell are spread over its components
  int multiplicity() const { return n_alpha - n_beta + 1; }
};

/// Electron configuration of the ground state (Hund's rules in every open shell; cerium's two open shells are coupled
/// antiparallel), 1 <= z <= 86, less the `n_core` electrons that an effective core potential replaces. Configurations: A.
/// Kramida et al., NIST Atomic Spectra Database.
ATOMIC_STATE_T atomic_ground_state(int z, int n_core = 0);

}  // namespace zentrix::SCF

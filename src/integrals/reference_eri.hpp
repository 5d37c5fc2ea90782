#pragma once

#include <array>
#include <vector>

#include "molecule/types.hpp"

// The plain scalar engine: one shell quartet at a time, any angular momentum up to LMAX, no screening. It is the independent
// reference of the vectorised kernels and serves shells they do not cover (h functions).

namespace zentrix::INTEGRALS_2E {

/// A shell with its position, free of any molecule.
struct CENTERED_SHELL_T {
  SHELL_T shell;
  std::array<double, 3> center = {};  ///< bohr
};

/// Bare Cartesian integrals (ab|cd), chemists' notation, block[((a nb + b) nc + c) nd + d], hartree. Stops the run when a
/// shell is not sound (checked in the order a, b, c, d).
void compute_eri_contracted(const CENTERED_SHELL_T& a, const CENTERED_SHELL_T& b, const CENTERED_SHELL_T& c,
                            const CENTERED_SHELL_T& d, std::vector<double>& block);

/// The same for one primitive of each shell (its coefficient included).
void compute_eri_primitive(const CENTERED_SHELL_T& a, int pa, const CENTERED_SHELL_T& b, int pb, const CENTERED_SHELL_T& c,
                           int pc, const CENTERED_SHELL_T& d, int pd, std::vector<double>& block);

/// First derivatives with respect to the four centres: twelve blocks (Ax, Ay, Az, Bx, ..., Dz) one after the other.
void compute_deri_contracted(const CENTERED_SHELL_T& a, const CENTERED_SHELL_T& b, const CENTERED_SHELL_T& c,
                             const CENTERED_SHELL_T& d, std::vector<double>& blocks);

}  // namespace zentrix::INTEGRALS_2E

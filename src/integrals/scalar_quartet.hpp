#pragma once

#include <vector>

#include "integrals/shell_pairs.hpp"

// Whole quartets by the scalar reference kernel, for shells that the vector kernels do not cover (h functions).

namespace zentrix::INTEGRALS_2E {

/// Bare integrals of a quartet, block[ab * n_cd + cd], times its symmetry factor.
void scalar_block(const SHELL_PAIRS_T& data, const SHELL_PAIR_T& bra, const SHELL_PAIR_T& ket, std::vector<double>& block);

/// The four exchange updates of a scaled block into the bra's panel; dp and kp as in kernels::DIGEST_T.
void digest_scalar_exchange(const SHELL_PAIRS_T& data, const SHELL_PAIR_T& bra, const SHELL_PAIR_T& ket, const double* block,
                            const double* dp, double* kp);
/// The two Coulomb updates; densities and targets are component blocks over pairs (SHELL_PAIR_T::block).
void digest_scalar_coulomb(const SHELL_PAIRS_T& data, const SHELL_PAIR_T& bra, const SHELL_PAIR_T& ket, const double* block,
                           const double* pair_density, double* pair_coulomb);

}  // namespace zentrix::INTEGRALS_2E

#pragma once

#include <vector>

#include "integrals/shell_pairs.hpp"

namespace zentrix::INTEGRALS_2E {

/// For every pair of every list a bound G of the Coulomb norms of the derivatives of its function products (functions of
/// self-overlap 1) with respect to either centre: |d(ab|cd)/dA| <= G_ab Q_cd by the Cauchy-Schwarz inequality. The
/// primitives are taken together by the triangle inequality. Angular momenta up to LMAX_GRAD.
std::vector<std::vector<double>> derivative_bounds(const SHELL_PAIRS_T& data);

}  // namespace zentrix::INTEGRALS_2E

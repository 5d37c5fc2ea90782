#pragma once

#include "integrals/coulomb_lists.hpp"
#include "simd/isa.hpp"

namespace zentrix::INTEGRALS_2E {

/// Potentials J_t = sum_u (-1)^u R_(t+u) H_u of every pair's Hermite functions in all densities, in the shape of `hermite`
/// (pairs.size elements per density), up to interactions that the keys let pass. Threaded; equal input and equal thread
/// count give bit-identical results.
ALIGNED_VECTOR hermite_potential(const HERMITE_PAIRS_T& pairs, const ALIGNED_VECTOR& hermite, const COULOMB_KEYS_T& keys,
                                 int n_densities, kernels::ISA isa);

}  // namespace zentrix::INTEGRALS_2E

#pragma once

#include <span>
#include <vector>

#include "integrals/kernels/spread_kernels.hpp"
#include "integrals/quartet_walk.hpp"

namespace zentrix::INTEGRALS_2E {

/// Kernels of the instruction set in use.
struct KERNEL_CHOICE_T {
  const kernels::QUARTET_KERNELS_T* table = nullptr;
  const kernels::SPREAD_KERNELS_T* spread = nullptr;
  int lanes = 0;
};
KERNEL_CHOICE_T choose_kernels(kernels::ISA isa);

/// Exchange matrices of symmetric densities over bare Cartesian components, computed directly: every vector lane holds one
/// ket shell pair, quartets below the density-weighted Schwarz bound are never started. Symmetric results.
std::vector<MATRIX> exchange_direct(const SHELL_PAIRS_T& data, const KERNEL_CHOICE_T& kernels,
                                    const std::vector<const MATRIX*>& densities, double threshold);

}  // namespace zentrix::INTEGRALS_2E

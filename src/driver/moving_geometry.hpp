#pragma once

#include <string>
#include <vector>

#include "driver/run_state.hpp"
#include "gradients/scf_surface.hpp"

// What every section that moves the atoms of the run does with their geometry.

namespace zentrix {

/// Keeps a geometry in hand, so that an interruption prints it. `positions`: bohr.
void keep_for_interruption(const std::vector<std::string>& symbols, const VECTOR& positions);

/// Leaves the run at the last geometry of the surface, with its SCF. `positions`: bohr.
void settle(RUN_T& run, GRADIENTS::SCF_SURFACE_T& surface, const VECTOR& positions);

}  // namespace zentrix

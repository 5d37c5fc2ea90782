#pragma once

#include <iosfwd>
#include <memory>

#include "driver/run_state.hpp"
#include "gradients/scf_surface.hpp"

namespace zentrix {

/// The energy surface of the run's method: the one place where an input's method words become "energy and gradient at a
/// geometry". Every job that moves atoms asks here, so that whatever a method adds (dispersion, solvation, correlation) is
/// added to all of them at once. `report`: where SCF tables and gradient progress go; null for a silent surface. Its first
/// evaluation starts from the run's converged SCF where there is one. The surface refers to `run`, which must outlive it.
std::unique_ptr<GRADIENTS::SCF_SURFACE_T> method_surface(const RUN_T& run, std::ostream* report);

/// The same with other settings than the run's own, which must outlive the surface too.
std::unique_ptr<GRADIENTS::SCF_SURFACE_T> method_surface(const RUN_T& run, const INPUT_PARSER::INPUT_DATA_T& settings,
                                                         std::ostream* report);

}  // namespace zentrix

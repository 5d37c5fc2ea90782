#pragma once

#include <iosfwd>

#include "driver/run_state.hpp"

// The numbered sections of a run, one file each. Every section prints its heading, does its work through the front doors of
// the subsystems and returns 0, or non-zero after the line that says why the run stops.

namespace zentrix {

/// 1: command line, input file, method, molecule, tables.
[[nodiscard]] int section_input(int argc, char** argv, RUN_T& run, std::ostream& report);
/// 2: S, T, V and the core Hamiltonian.
[[nodiscard]] int section_one_electron(RUN_T& run, std::ostream& report);
/// 3: initial guess and self-consistent field.
[[nodiscard]] int section_scf(RUN_T& run, std::ostream& report);
/// 4: energy gradient at the input geometry.
[[nodiscard]] int section_gradient(RUN_T& run, std::ostream& report);
/// 5: geometry optimisation; leaves the molecule at the last geometry, with the SCF there.
[[nodiscard]] int section_optimization(RUN_T& run, std::ostream& report);
/// The composite jobs scan and scanopt: all points of the grid and their tables.
[[nodiscard]] int section_rigid_scan(RUN_T& run, std::ostream& report);
[[nodiscard]] int section_relaxed_scan(RUN_T& run, std::ostream& report);
/// 6: Hessian, frequencies, thermochemistry and their side files at the run's geometry.
[[nodiscard]] int section_frequencies(RUN_T& run, std::ostream& report);
/// 5/6: search for a transition state from the Hessian of a file or of the input geometry.
[[nodiscard]] int section_transition_state(RUN_T& run, std::ostream& report);
/// 6 after a search: Hessian and frequencies of the structure found.
[[nodiscard]] int section_validation(RUN_T& run, std::ostream& report);
/// 7: final energies, populations, dipole moment, orbitals.
[[nodiscard]] int section_output(RUN_T& run, std::ostream& report);
/// Counterpoise analysis: a job of its own after Section 1.
[[nodiscard]] int section_counterpoise(RUN_T& run, std::ostream& report);

}  // namespace zentrix

#pragma once

#include <iosfwd>

#include "driver/run_state.hpp"
#include "hessian/hessian_file.hpp"

// The Hessian of a run: from a file or computed at the run's geometry, and what follows from it. Shared by every job that
// has to do with Hessians.

namespace zentrix {

/// The Hessian of the file that %read_hess names, with the energy of the run's SCF in place of the file's. Non-zero after
/// the line that says why it is not the run's; `purpose` ends that line ("frequency analysis").
[[nodiscard]] int read_cached_hessian(RUN_T& run, const char* purpose, HESSIAN::HESSIAN_FILE_T& hessian,
                                      std::ostream& report);

/// Computes the Hessian, with its energy and gradient, at the run's geometry, starting from the run's SCF where there is
/// one, and leaves the density there for what follows. The run counts as not converged when an SCF of it did not converge.
void compute_hessian(RUN_T& run, HESSIAN::HESSIAN_FILE_T& hessian, std::ostream& report);

/// Writes the Hessian file, its frequencies and modes included, without a line of the vibrational analysis.
void save_hessian(const RUN_T& run, HESSIAN::HESSIAN_FILE_T& hessian, std::ostream& report);

/// Frequencies and thermochemistry, then the side files: the Hessian file of a `computed` Hessian, the vibrational Molden
/// file of every one. Non-zero after its line when the Hessian could not be diagonalised.
[[nodiscard]] int analyse_hessian(const RUN_T& run, HESSIAN::HESSIAN_FILE_T& hessian, bool computed, std::ostream& report);

}  // namespace zentrix

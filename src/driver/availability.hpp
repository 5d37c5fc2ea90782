#pragma once

#include <string>

#include "dft/functional_catalogue.hpp"
#include "input/input_data.hpp"
#include "molecule/types.hpp"

// What this version cannot serve, as far as no subsystem refuses it by itself. A run asks it before any integral is
// computed, so that nothing half-runs; a subsystem that arrives removes its line here.

namespace zentrix {

/// Megabytes that a run's matrices take at least: those of the SCF with its history, for every spin channel.
double matrices_mb(const MOLECULE_T& molecule);

/// What of the input is not available ("%dispersion D4", "%job gradient with %method MP2", ...); empty when all is.
std::string missing_for_input(const INPUT_PARSER::INPUT_DATA_T& input, const DFT::FUNCTIONAL_T& functional);

/// The same for what only the built molecule shows: effective core potentials.
std::string missing_for_molecule(const MOLECULE_T& molecule);

}  // namespace zentrix

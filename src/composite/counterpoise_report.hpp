#pragma once

#include <iosfwd>
#include <string>

#include "composite/counterpoise.hpp"

// The texts of the counterpoise analysis.

namespace zentrix::COMPOSITE {

/// Title, and the note that energies of this job are without dispersion where `dispersion` names a model.
void print_counterpoise_title(int n_fragments, const std::string& dispersion, std::ostream& report);
void print_step(SUBSYSTEM mode, int fragment, std::ostream& report);
void print_failed_step(SUBSYSTEM mode, int fragment, std::ostream& report);
void print_counterpoise_summary(const COUNTERPOISE_T& result, std::ostream& report);

}  // namespace zentrix::COMPOSITE

#pragma once

#include <iosfwd>

#include "dispersion/d3_parameters.hpp"

namespace zentrix::DISPERSION {

/// The model and its damping parameters.
void print_dispersion(const D3_PARAMETERS_T& parameters, std::ostream& report);

}  // namespace zentrix::DISPERSION

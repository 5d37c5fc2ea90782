#include "dispersion/d3_report.hpp"

#include <fmt/ostream.h>

namespace zentrix::DISPERSION {

void print_dispersion(const D3_PARAMETERS_T& parameters, std::ostream& report) {
  fmt::print(report, "   Dispersion correction:\n     Model:          {}\n", parameters.model);
  fmt::print(report, "     Fit-to:         {}\n", parameters.functional);
  fmt::print(report, "     s6:             {}\n     s8:             {}\n", parameters.s6, parameters.s8);
  fmt::print(report, "     a1:             {}\n     a2:             {}\n", parameters.a1, parameters.a2);
}

}  // namespace zentrix::DISPERSION

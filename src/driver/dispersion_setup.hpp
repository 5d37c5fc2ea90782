#pragma once

#include <iosfwd>

#include "driver/run_state.hpp"

namespace zentrix {

/// Loads the data of the dispersion correction that the input asks for and makes its term of the energy. 0 on success,
/// otherwise a code after the reason was printed.
[[nodiscard]] int set_up_dispersion(RUN_T& run, std::ostream& report);

}  // namespace zentrix

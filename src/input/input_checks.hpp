#pragma once

#include <iosfwd>

#include "input/input_data.hpp"

namespace zentrix::INPUT_PARSER {

/// Everything that can only be judged when the whole file is known. Counts the fragments of a counterpoise job. 0, or
/// non-zero after a message.
[[nodiscard]] int check_input(INPUT_DATA_T& input, bool has_constraint_block, std::ostream& report);

}  // namespace zentrix::INPUT_PARSER

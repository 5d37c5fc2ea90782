#pragma once

#include <iosfwd>

#include "input/input_data.hpp"

namespace zentrix::INPUT_PARSER {

/// Everything that can only be judged when the whole file is known. Counts the fragments of a counterpoise job. 0, or
/// non-zero after a message.
[[nodiscard]] int check_input(INPUT_DATA_T& input, bool has_constraint_block, std::ostream& report);

/// A warning for every setting that has no effect on the job.
void warn_unused_settings(const INPUT_DATA_T& input, std::ostream& report);

/// Charge and multiplicity of every fragment of a counterpoise job, where the input does not give them, and whether they fit
/// together with those of the complex.
[[nodiscard]] int settle_fragment_states(INPUT_DATA_T& input, std::ostream& report);

}  // namespace zentrix::INPUT_PARSER

#pragma once

#include <iosfwd>

#include "input/input_data.hpp"
#include "input/line_reader.hpp"

namespace zentrix::INPUT_PARSER {

/// A line "%keyword value": looks the keyword up and fills its field. 0, or non-zero after a message that quotes the line.
[[nodiscard]] int parse_keyword_line(const INPUT_LINE_T& line, INPUT_DATA_T& input, std::ostream& report);

}  // namespace zentrix::INPUT_PARSER

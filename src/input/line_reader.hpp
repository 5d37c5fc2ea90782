#pragma once

#include <iosfwd>
#include <string>

// The input file line by line.

namespace zentrix::INPUT_PARSER {

/// Longest line in characters, line end not counted.
inline constexpr std::size_t line_length_limit = 512;

struct INPUT_LINE_T {
  std::string written;  ///< as in the file, without blanks at both ends
  std::string text;     ///< the same without its comment; empty for an empty line or a comment line
};

enum class READ_STATUS { line, end, error };

/// Reads one line; the last one needs no line end, CR LF ends and a byte order mark at the start of the file are accepted. A
/// line longer than the limit is an error (its message is printed), never a silent cut, and so is a NUL character.
READ_STATUS read_line(std::istream& file, INPUT_LINE_T& line, std::ostream& report);

}  // namespace zentrix::INPUT_PARSER

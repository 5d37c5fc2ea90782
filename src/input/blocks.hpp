#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "input/input_data.hpp"

// Readers of the block contents. Each takes the block's non-empty lines, comments removed, and returns 0 or prints the
// fault.

namespace zentrix::INPUT_PARSER {

/// Atomic number of an atom token ("6", "C", "C12"); 0 when it is none.
int token_atomic_number(const std::string& token);
/// Prints the message of a token that is none of the three forms.
void print_bad_token(const std::string& token, std::ostream& report);

/// Cartesian lines: token, x, y, z, and the fragment number in a counterpoise job. `bohr`: unit of the coordinates.
[[nodiscard]] int parse_cartesian_block(const std::vector<std::string>& lines, bool bohr, bool with_fragments,
                                        std::vector<INPUT_ATOM_T>& atoms, std::ostream& report);

/// Z-matrix rows with their references resolved to row numbers.
[[nodiscard]] int parse_zmatrix_block(const std::vector<std::string>& lines, std::vector<ZMATRIX_ROW_T>& rows,
                                      std::ostream& report);

[[nodiscard]] int parse_scan_block(const std::vector<std::string>& lines, std::vector<SCAN_VARIABLE_T>& scan,
                                   std::ostream& report);
[[nodiscard]] int check_scan(const INPUT_DATA_T& input, std::ostream& report);

[[nodiscard]] int parse_constraint_block(const std::vector<std::string>& lines, std::vector<CONSTRAINT_T>& constraints,
                                         std::ostream& report);
[[nodiscard]] int check_constraints(const INPUT_DATA_T& input, std::ostream& report);

/// Warns about text after a complete value.
void warn_trailing_text(std::string_view text, std::ostream& report);
/// The same for the fields of one line from number `used` (from 0) on, if there are any.
void warn_unused_fields(const std::vector<std::string_view>& fields, std::size_t used, std::ostream& report);

}  // namespace zentrix::INPUT_PARSER

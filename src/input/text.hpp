#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Words and numbers of the input file: the only place where text becomes a value. Every reader is strict: the whole text
// must be the value, and numbers must be finite and in range.

namespace zentrix::INPUT_PARSER {

/// Letters a-z to upper case, everything else unchanged.
std::string upper(std::string_view text);
/// Without leading and trailing blanks, tabs and control characters.
std::string_view trimmed(std::string_view text);
/// Without a comment: everything from '#' or '!' on where that is the first character or follows a blank.
std::string_view without_comment(std::string_view line);
/// Words between blanks and tabs.
std::vector<std::string_view> words(std::string_view text);

/// "12", "+1", "-1".
std::optional<int> read_integer(std::string_view text);
/// "1.5", "+.5", "1e-8", "1D-8"; no nan, no inf, no overflow.
std::optional<double> read_real(std::string_view text);
/// YES ON TRUE 1 T / NO OFF FALSE 0 F in any case.
std::optional<bool> read_yes_no(std::string_view text);

/// First token and rest of a block line. Status 0: a token was found; 1: empty line; 2: a line that begins with '%'.
struct BLOCK_LINE_T {
  int status = 0;
  std::string token;
  std::string rest;
};
BLOCK_LINE_T split_block_line(std::string_view line);

}  // namespace zentrix::INPUT_PARSER

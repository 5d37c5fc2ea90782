#include "input/keyword_line.hpp"

#include <fmt/ostream.h>

#include "input/blocks.hpp"
#include "input/keyword_table.hpp"
#include "input/text.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

void print_offending_line(const INPUT_LINE_T& line, std::ostream& report) {
  fmt::print(report, "            Offending input line:\n              {}\n", line.written);
}

int print_unknown_keyword(std::string_view word, const INPUT_LINE_T& line, std::ostream& report) {
  fmt::print(report, " *** ERROR: Unknown input keyword: %{} (please check spelling).\n", word);
  print_offending_line(line, report);
  return 1;
}

int print_bad_value(const char* what, std::string_view word, const KEYWORD_T& row, const INPUT_LINE_T& line,
                    std::ostream& report) {
  fmt::print(report, "{}{}\n            (please check spelling).\n", what, word);
  print_offending_line(line, report);
  fmt::print(report, "            Valid: {}\n", row.valid);
  return 1;
}

/// Splits off the first word: what follows it stays in `text`.
std::string_view take_word(std::string_view& text) {
  const std::string_view word = words(text).empty() ? std::string_view() : words(text).front();
  text = trimmed(text.substr(word.size()));
  return word;
}

}  // namespace

int parse_keyword_line(const INPUT_LINE_T& line, INPUT_DATA_T& input, std::ostream& report) {
  std::string_view value = trimmed(std::string_view(line.text).substr(1));
  const std::string_view word = take_word(value);
  const KEYWORD_T* row = find_keyword(word);
  if (row == nullptr) return print_unknown_keyword(word, line, report);
  if (value.empty()) {
    if (!row->value.bare_yes) return print_bad_value(" *** ERROR: Missing or empty value for %", word, *row, line, report);
    value = "YES";
  }
  std::string_view rest;
  if (!row->value.rest_of_line) {
    rest = value;
    value = take_word(rest);
  }
  if (!row->value.set(input, value)) return print_bad_value(" *** ERROR: Invalid value for %", word, *row, line, report);
  if (!rest.empty()) warn_trailing_text(rest, report);
  return 0;
}

}  // namespace zentrix::INPUT_PARSER

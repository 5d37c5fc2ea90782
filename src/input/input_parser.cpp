#include "input/input_parser.hpp"

#include <fmt/ostream.h>

#include <fstream>
#include <optional>

#include "input/blocks.hpp"
#include "input/input_checks.hpp"
#include "input/keyword_table.hpp"
#include "input/text.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

constexpr std::size_t line_length_limit = 512;

enum class BLOCK { none, cartesian, zmatrix, scan, constrain };

/// Contents of the blocks, read when the whole file is known (the job decides what a geometry line must hold).
struct RAW_INPUT_T {
  std::vector<std::string> cartesian;
  std::vector<std::string> zmatrix;
  std::vector<std::string> scan;
  std::vector<std::string> constrain;
  bool has_cartesian = false;
  bool has_zmatrix = false;
  bool has_constrain = false;
};

bool begins(const std::string& text, std::string_view prefix) { return text.compare(0, prefix.size(), prefix) == 0; }

/// Block that a line (upper case) opens. A longer word with an underscore is a keyword that merely begins alike.
BLOCK opened_block(const std::string& line) {
  if (begins(line, "*GEOM")) return BLOCK::cartesian;
  if (begins(line, "%GZ")) return BLOCK::zmatrix;
  const std::string word = line.substr(0, line.find_first_of(" \t"));
  if (find_keyword(std::string_view(word).substr(std::min<std::size_t>(1, word.size()))) != nullptr) return BLOCK::none;
  if (begins(line, "%GEO") && !begins(line, "%GEOM_")) return BLOCK::cartesian;
  if (begins(line, "%SCAN") && !begins(line, "%SCAN_")) return BLOCK::scan;
  if (begins(line, "%CONSTRAIN") && !begins(line, "%CONSTRAIN_")) return BLOCK::constrain;
  return BLOCK::none;
}

const char* block_word(BLOCK block) {
  switch (block) {
    case BLOCK::cartesian:
      return "%geo";
    case BLOCK::zmatrix:
      return "%gz";
    case BLOCK::scan:
      return "%scan";
    default:
      return "%constrain";
  }
}

int print_keyword_inside_block(BLOCK block, const std::string& line, std::ostream& report) {
  if (block == BLOCK::scan) {
    fmt::print(report, " *** ERROR: %-keyword inside an open %scan block (missing *end?): {}\n", line);
  } else if (block == BLOCK::constrain) {
    fmt::print(report, " *** ERROR: %-keyword inside an open %constrain block (missing *end?): {}\n", line);
  } else {
    fmt::print(report, " *** ERROR: %-keyword inside an open {} block (missing *end?): {}\n", block_word(block), line);
  }
  return 1;
}

void print_offending_line(const std::string& line, std::ostream& report) {
  fmt::print(report, "            Offending input line:\n              {}\n", line);
}

int print_unknown_keyword(std::string_view word, const std::string& line, std::ostream& report) {
  fmt::print(report, " *** ERROR: Unknown input keyword: %{} (please check spelling).\n", word);
  print_offending_line(line, report);
  fmt::print(report, "            Run aborted.\n");
  return 1;
}

int print_bad_value(const char* what, std::string_view word, const KEYWORD_T& row, const std::string& line,
                    std::ostream& report) {
  fmt::print(report, "{}{}\n            (please check spelling).\n", what, word);
  print_offending_line(line, report);
  fmt::print(report, "            Valid: {}\n            Run aborted.\n", row.valid);
  return 1;
}

/// A keyword line: "%", the keyword, blanks, the value.
int parse_keyword_line(const std::string& line, INPUT_DATA_T& input, std::ostream& report) {
  const std::string_view body = trimmed(std::string_view(line).substr(1));
  const std::string_view word = body.substr(0, body.find_first_of(" \t"));
  std::string_view value = trimmed(body.substr(word.size()));
  const KEYWORD_T* row = find_keyword(word);
  if (row == nullptr) return print_unknown_keyword(word, line, report);
  if (value.empty()) {
    if (!row->bare_yes) return print_bad_value(" *** ERROR: Missing or empty value for %", word, *row, line, report);
    value = "YES";
  }
  std::string_view rest;
  if (!row->whole_line) {
    const std::size_t length = std::min(value.find_first_of(" \t"), value.size());
    rest = trimmed(value.substr(length));
    value = value.substr(0, length);
  }
  if (!row->set(input, value)) return print_bad_value(" *** ERROR: Invalid value for %", word, *row, line, report);
  if (!rest.empty()) warn_trailing_text(std::string(rest), report);
  return 0;
}

/// Opens a block; a second geometry is refused, a later scan or constraint block replaces the earlier one.
int open_block(BLOCK block, const std::string& upper_line, RAW_INPUT_T& raw, INPUT_DATA_T& input, std::ostream& report) {
  if (block == BLOCK::cartesian || block == BLOCK::zmatrix) {
    if (raw.has_cartesian || raw.has_zmatrix) {
      fmt::print(report, " *** ERROR: more than one geometry block (%geo or %gz) in the input file.\n");
      return 1;
    }
    raw.has_cartesian = block == BLOCK::cartesian;
    raw.has_zmatrix = block == BLOCK::zmatrix;
    input.bohr_units = raw.has_cartesian && upper_line.find("BOHR") != std::string::npos;
  } else if (block == BLOCK::scan) {
    raw.scan.clear();
  } else {
    raw.constrain.clear();
    raw.has_constrain = true;
  }
  return 0;
}

std::vector<std::string>& lines_of(BLOCK block, RAW_INPUT_T& raw) {
  switch (block) {
    case BLOCK::cartesian:
      return raw.cartesian;
    case BLOCK::zmatrix:
      return raw.zmatrix;
    case BLOCK::scan:
      return raw.scan;
    default:
      return raw.constrain;
  }
}

/// Reads one line of at most the buffer's length; empty at the end of the file, a longer line is an error.
std::optional<std::string> next_line(std::istream& file, std::ostream& report, int& error) {
  std::string line;
  bool any = false;
  for (int c = file.get(); c != std::char_traits<char>::eof(); c = file.get()) {
    any = true;
    if (c == '\n') return line;
    line += static_cast<char>(c);
    if (line.size() > line_length_limit) {
      fmt::print(report, " *** ERROR: Input line is longer than {} characters; it begins:\n              {}\n",
                 line_length_limit, line.substr(0, 60));
      error = 1;
      return std::nullopt;
    }
  }
  return any ? std::optional<std::string>(line) : std::nullopt;
}

int read_lines(std::istream& file, RAW_INPUT_T& raw, INPUT_DATA_T& input, std::ostream& report) {
  BLOCK block = BLOCK::none;
  int error = 0;
  while (const auto read = next_line(file, report, error)) {
    const std::string line(trimmed(without_comment(trimmed(*read))));
    if (line.empty()) continue;
    const std::string upper_line = upper(line);
    if (block != BLOCK::none) {
      if (begins(upper_line, "*END")) {
        block = BLOCK::none;
      } else if (line[0] == '%') {
        return print_keyword_inside_block(block, line, report);
      } else {
        lines_of(block, raw).push_back(line);
      }
      continue;
    }
    const BLOCK opened = opened_block(upper_line);
    if (opened != BLOCK::none) {
      block = opened;
      error = open_block(block, upper_line, raw, input, report);
    } else if (line[0] == '%') {
      error = parse_keyword_line(line, input, report);
    } else {
      fmt::print(report, "   *** WARNING: line outside any block is ignored: {}\n", line);
    }
    if (error != 0) return error;
  }
  if (error == 0 && block != BLOCK::none) {
    fmt::print(report, " *** ERROR: {} block is not closed (missing *end).\n", block_word(block));
    return 1;
  }
  return error;
}

int build_geometry(const RAW_INPUT_T& raw, INPUT_DATA_T& input, std::ostream& report) {
  if (!raw.has_zmatrix) {
    return parse_cartesian_block(raw.cartesian, input.bohr_units, input.job == JOB::bsse, input.atoms, report);
  }
  if (const int error = parse_zmatrix_block(raw.zmatrix, input.zmatrix, report); error != 0) return error;
  std::vector<double> coords(3 * input.zmatrix.size());
  if (const int error = zmatrix_to_cartesian(input.zmatrix, coords, report); error != 0) return error;
  for (std::size_t n = 0; n < input.zmatrix.size(); ++n) {
    const ZMATRIX_ROW_T& row = input.zmatrix[n];
    input.atoms.push_back({row.token, row.z, {coords[3 * n], coords[3 * n + 1], coords[3 * n + 2]}, 0});
  }
  return 0;
}

}  // namespace

int parse_input_stream(std::istream& file, INPUT_DATA_T& input, std::ostream& report) {
  input = INPUT_DATA_T{};
  RAW_INPUT_T raw;
  if (const int error = read_lines(file, raw, input, report); error != 0) return error;
  if (const int error = build_geometry(raw, input, report); error != 0) return error;
  if (const int error = parse_scan_block(raw.scan, input.scan, report); error != 0) return error;
  if (const int error = parse_constraint_block(raw.constrain, input.constraints, report); error != 0) return error;
  return check_input(input, raw.has_constrain, report);
}

int parse_input(const std::string& file_name, INPUT_DATA_T& input, std::ostream& report) {
  std::ifstream file(file_name, std::ios::binary);
  // A folder opens as a file but cannot be read from.
  if (!file || (file.peek() == std::char_traits<char>::eof() && !file.eof())) {
    fmt::print(report, " *** ERROR: Cannot open input file: {}\n", file_name);
    return 1;
  }
  file.clear();
  return parse_input_stream(file, input, report);
}

}  // namespace zentrix::INPUT_PARSER

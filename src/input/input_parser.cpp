#include "input/input_parser.hpp"

#include <fmt/ostream.h>

#include <fstream>
#include <sstream>

#include "input/blocks.hpp"
#include "input/input_checks.hpp"
#include "input/keyword_line.hpp"
#include "input/keyword_table.hpp"
#include "input/line_reader.hpp"
#include "input/text.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

enum class BLOCK { none, cartesian, zmatrix, scan, constrain };

/// Where the reading stands: the open block with its lines so far, and which blocks there were.
struct READER_T {
  BLOCK block = BLOCK::none;
  std::vector<std::string> lines;
  bool has_geometry = false;
  bool has_constraints = false;
  std::vector<std::string> unassigned_atoms;  ///< a Cartesian block read before the job asked for fragments
};

bool begins(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

/// Block that a line (upper case) opens. A keyword of the table, or a longer word with an underscore, merely begins alike.
BLOCK opened_block(std::string_view line) {
  if (begins(line, "*GEOM")) return BLOCK::cartesian;
  if (!begins(line, "%")) return BLOCK::none;
  if (find_keyword(words(line).front().substr(1)) != nullptr) return BLOCK::none;
  if (begins(line, "%GZ")) return BLOCK::zmatrix;
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
  switch (block) {
    case BLOCK::scan:
      fmt::print(report, " *** ERROR: %-keyword inside an open %scan block (missing *end?): {}\n", line);
      break;
    case BLOCK::constrain:
      fmt::print(report, " *** ERROR: %-keyword inside an open %constrain block (missing *end?): {}\n", line);
      break;
    default:
      fmt::print(report, " *** ERROR: %-keyword inside an open {} block (missing *end?): {}\n", block_word(block), line);
  }
  return 1;
}

/// The unit on the line that opens a Cartesian block; any other word there is nearly always a slip ("bhor").
void read_opener_options(BLOCK block, const std::string& line, INPUT_DATA_T& input, std::ostream& report) {
  const bool cartesian = block == BLOCK::cartesian;
  if (cartesian) input.bohr_units = upper(line).find("BOHR") != std::string::npos;
  const std::vector<std::string_view> fields = words(line);
  for (std::size_t i = 1; i < fields.size(); ++i) {
    const std::string word = upper(fields[i]);
    const bool unit = cartesian && (word.find("BOHR") != std::string::npos || word.find("ANG") != std::string::npos);
    if (!unit) warn_trailing_text(fields[i], report);
  }
}

/// A second geometry is refused: nobody could tell which one was meant.
int open_block(BLOCK block, const std::string& line, READER_T& reader, INPUT_DATA_T& input, std::ostream& report) {
  if (block == BLOCK::cartesian || block == BLOCK::zmatrix) {
    if (reader.has_geometry) {
      fmt::print(report, " *** ERROR: more than one geometry block (%geo or %gz) in the input file.\n");
      return 1;
    }
    reader.has_geometry = true;
  }
  reader.block = block;
  reader.lines.clear();
  read_opener_options(block, line, input, report);
  return 0;
}

int build_zmatrix_geometry(const std::vector<std::string>& lines, INPUT_DATA_T& input, std::ostream& report) {
  if (const int error = parse_zmatrix_block(lines, input.zmatrix, report); error != 0) return error;
  std::vector<double> coords(3 * input.zmatrix.size());
  if (const int error = zmatrix_to_cartesian(input.zmatrix, coords, report); error != 0) return error;
  for (std::size_t n = 0; n < input.zmatrix.size(); ++n) {
    const ZMATRIX_ROW_T& row = input.zmatrix[n];
    input.atoms.push_back({row.token, row.z, {coords[3 * n], coords[3 * n + 1], coords[3 * n + 2]}, 0});
  }
  return 0;
}

/// Reads the contents of a block that has ended; a later scan or constraint block replaces an earlier one.
int close_block(READER_T& reader, INPUT_DATA_T& input, std::ostream& report) {
  const BLOCK block = reader.block;
  reader.block = BLOCK::none;
  switch (block) {
    case BLOCK::cartesian:
      if (input.job != JOB::bsse) reader.unassigned_atoms = reader.lines;
      return parse_cartesian_block(reader.lines, input.bohr_units, input.job == JOB::bsse, input.atoms, report);
    case BLOCK::zmatrix:
      return build_zmatrix_geometry(reader.lines, input, report);
    case BLOCK::scan:
      input.scan.clear();
      return parse_scan_block(reader.lines, input.scan, report);
    default:
      reader.has_constraints = true;
      input.constraints.clear();
      return parse_constraint_block(reader.lines, input.constraints, report);
  }
}

int take_line(const INPUT_LINE_T& line, READER_T& reader, INPUT_DATA_T& input, std::ostream& report) {
  if (line.text.empty()) return 0;
  const std::string upper_line = upper(line.text);
  if (reader.block != BLOCK::none) {
    if (begins(upper_line, "*END")) return close_block(reader, input, report);
    if (line.text[0] == '%') return print_keyword_inside_block(reader.block, line.written, report);
    reader.lines.push_back(line.text);
    return 0;
  }
  const BLOCK opened = opened_block(upper_line);
  if (opened != BLOCK::none) return open_block(opened, line.text, reader, input, report);
  if (line.text[0] == '%') return parse_keyword_line(line, input, report);
  fmt::print(report, "   *** WARNING: line outside any block is ignored: {}\n", line.written);
  return 0;
}

int read_file(std::istream& file, INPUT_DATA_T& input, std::ostream& report) {
  READER_T reader;
  INPUT_LINE_T line;
  READ_STATUS status = READ_STATUS::line;
  while ((status = read_line(file, line, report)) == READ_STATUS::line) {
    if (const int error = take_line(line, reader, input, report); error != 0) return error;
  }
  if (status == READ_STATUS::error) return 1;
  if (reader.block != BLOCK::none) {
    fmt::print(report, " *** ERROR: {} block is not closed (missing *end).\n", block_word(reader.block));
    return 1;
  }
  // The job line may stand below the geometry: only now is the fragment column known to be needed.
  if (input.job == JOB::bsse && !reader.unassigned_atoms.empty()) {
    input.atoms.clear();
    std::ostringstream again;  // warnings stand in the report already
    const int error = parse_cartesian_block(reader.unassigned_atoms, input.bohr_units, true, input.atoms, again);
    if (error != 0) {
      report << again.str();
      return error;
    }
  }
  return check_input(input, reader.has_constraints, report);
}

/// The line that ends the message of every input error.
int print_run_aborted(std::ostream& report) {
  fmt::print(report, "            Run aborted.\n");
  return 1;
}

}  // namespace

int parse_input_stream(std::istream& file, INPUT_DATA_T& input, std::ostream& report) {
  input = INPUT_DATA_T{};
  if (read_file(file, input, report) == 0) return 0;
  input = INPUT_DATA_T{};  // nothing half-read is kept
  return print_run_aborted(report);
}

int parse_input(const std::string& file_name, INPUT_DATA_T& input, std::ostream& report) {
  std::ifstream file(file_name, std::ios::binary);
  // A folder opens as a file but cannot be read from.
  if (!file || (file.peek() == std::char_traits<char>::eof() && !file.eof())) {
    fmt::print(report, " *** ERROR: Cannot open input file: {}\n", file_name);
    return print_run_aborted(report);
  }
  file.clear();
  return parse_input_stream(file, input, report);
}

}  // namespace zentrix::INPUT_PARSER

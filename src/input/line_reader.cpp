#include "input/line_reader.hpp"

#include <fmt/ostream.h>

#include <istream>

#include "input/text.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

}  // namespace

READ_STATUS read_line(std::istream& file, INPUT_LINE_T& line, std::ostream& report) {
  std::string raw;
  bool any = false;
  for (int c = file.get(); c != std::char_traits<char>::eof(); c = file.get()) {
    any = true;
    if (c == '\n') break;
    raw += static_cast<char>(c);
    if (raw.size() > line_length_limit + 1 || (raw.size() > line_length_limit && c != '\r')) {
      fmt::print(report, " *** ERROR: input line is longer than {} characters; it begins:\n              {}\n",
                 line_length_limit, raw.substr(0, 60));
      return READ_STATUS::error;
    }
  }
  if (!any) return READ_STATUS::end;
  if (raw.find('\0') != std::string::npos) {  // UTF-16, or no text at all
    fmt::print(report, " *** ERROR: the input file contains NUL characters; it must be plain text (ASCII or UTF-8).\n");
    return READ_STATUS::error;
  }
  std::string_view text = raw;
  if (text.substr(0, byte_order_mark.size()) == byte_order_mark) text.remove_prefix(byte_order_mark.size());
  line.written = trimmed(text);
  line.text = trimmed(without_comment(line.written));
  return READ_STATUS::line;
}

}  // namespace zentrix::INPUT_PARSER

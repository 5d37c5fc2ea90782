#include "input/text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace zentrix::INPUT_PARSER {
namespace {

bool is_blank(char c) { return static_cast<unsigned char>(c) <= ' ' || c == '\x7f'; }

/// from_chars accepts no leading '+'; one sign is allowed here.
std::string_view without_plus(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
  return text;
}

}  // namespace

std::string upper(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return result;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view without_comment(std::string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    if ((line[i] == '#' || line[i] == '!') && (i == 0 || is_blank(line[i - 1]))) return line.substr(0, i);
  }
  return line;
}

std::vector<std::string_view> words(std::string_view text) {
  std::vector<std::string_view> found;
  std::size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && is_blank(text[i])) ++i;
    const std::size_t start = i;
    while (i < text.size() && !is_blank(text[i])) ++i;
    if (i > start) found.push_back(text.substr(start, i - start));
  }
  return found;
}

std::optional<int> read_integer(std::string_view text) {
  text = without_plus(text);
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> read_real(std::string_view text) {
  std::string number(without_plus(text));
  std::replace(number.begin(), number.end(), 'D', 'e');
  std::replace(number.begin(), number.end(), 'd', 'e');
  double value = 0.0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc{} || end != number.data() + number.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<bool> read_yes_no(std::string_view text) {
  const std::string word = upper(text);
  for (const char* yes : {"YES", "ON", "TRUE", "1", "T"}) {
    if (word == yes) return true;
  }
  for (const char* no : {"NO", "OFF", "FALSE", "0", "F"}) {
    if (word == no) return false;
  }
  return std::nullopt;
}

BLOCK_LINE_T split_block_line(std::string_view line) {
  const std::string_view text = trimmed(line);
  if (text.empty()) return {1, "", ""};
  if (text.front() == '%') return {2, "", ""};
  const auto end = std::find_if(text.begin(), text.end(), is_blank);
  const auto length = static_cast<std::size_t>(end - text.begin());
  return {0, std::string(text.substr(0, length)), std::string(trimmed(text.substr(length)))};
}

}  // namespace zentrix::INPUT_PARSER

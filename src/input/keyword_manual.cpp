#include <fmt/format.h>

#include "input/keyword_table.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

std::string lower(const std::string& text) {
  std::string result = text;
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

std::string code(const std::string& text) { return fmt::format("`{}`", text); }

/// In a Markdown table a bar inside a cell is written "\|".
std::string cell(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '|') result += '\\';
    result += c;
  }
  return result;
}

/// "first (second, third)", each as code.
std::string with_equivalents(const std::string& name, const std::vector<std::string>& others) {
  std::string text = code(name);
  for (std::size_t i = 0; i < others.size(); ++i) text += fmt::format("{}{}", i == 0 ? " (" : ", ", code(others[i]));
  return others.empty() ? text : text + ")";
}

std::string keyword_row(const KEYWORD_T& row) {
  std::vector<std::string> aliases;
  for (const char* alias : row.aliases) aliases.push_back(fmt::format("%{}", lower(alias)));
  return fmt::format("| {} | {} | {} | {} | {} |\n", with_equivalents(fmt::format("%{}", lower(row.name)), aliases),
                     row.value.kind, row.standard, row.meaning, code(cell(row.valid)));
}

std::string words_row(const KEYWORD_T& row) {
  std::string words;
  for (const WORD_GROUP_T& group : row.value.words) {
    std::vector<std::string> others;
    for (std::size_t k = 1; k < group.size(); ++k) others.push_back(lower(group[k]));
    if (!words.empty()) words += "; ";
    words += with_equivalents(lower(group[0]), others);
  }
  return fmt::format("| `%{}` | {} |\n", lower(row.name), words);
}

}  // namespace

std::string keyword_manual() {
  std::string text =
      "# Keywords\n\n"
      "This chapter is written from the program's own keyword table; `docs/input.md` tells how, and what an input file "
      "looks\n"
      "like. A keyword line is `%keyword value`, in upper or lower case. Names in parentheses are full equivalents. A "
      "yes/no\n"
      "keyword written alone means yes. The last column is what the program prints when it refuses a value.\n\n"
      "| keyword | value | default | meaning | accepted |\n|---|---|---|---|---|\n";
  for (const KEYWORD_T& row : keyword_table()) text += keyword_row(row);
  text +=
      "\n## Value words\n\n"
      "Words in parentheses mean the same as the word before them. Yes is `yes`, `on`, `true`, `1` or `t`; no is `no`, "
      "`off`,\n"
      "`false`, `0` or `f`.\n\n"
      "| keyword | words |\n|---|---|\n";
  for (const KEYWORD_T& row : keyword_table()) {
    if (!row.value.words.empty()) text += words_row(row);
  }
  return text;
}

}  // namespace zentrix::INPUT_PARSER

#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "input/input_parser.hpp"

namespace zentrix::TESTS {

/// What the parser made of a text.
struct PARSED_T {
  int error = 0;
  INPUT_PARSER::INPUT_DATA_T input;
  std::string report;
};

inline PARSED_T parse(const std::string& text) {
  PARSED_T result;
  std::istringstream file(text);
  std::ostringstream report;
  result.error = INPUT_PARSER::parse_input_stream(file, result.input, report);
  result.report = report.str();
  return result;
}

/// Every text between `before` and `after` is refused, with its message and the line that closes every refusal.
inline void expect_refusals(const std::vector<std::pair<std::string, std::string>>& cases, const std::string& before = "",
                            const std::string& after = "") {
  for (const auto& [text, message] : cases) {
    const PARSED_T result = parse(before + text + after);
    EXPECT_EQ(result.error, 1) << text.substr(0, 100);
    EXPECT_EQ(result.report, message + "            Run aborted.\n") << text.substr(0, 100);
    EXPECT_TRUE(result.input.atoms.empty() && result.input.zmatrix.empty());
  }
}

/// A complete geometry, for inputs whose interest lies elsewhere.
inline const std::string helium = "%geo\nHe 0 0 0\n*end\n";
inline const std::string peroxide = "%gz\nH\nO 1 0.95\nO 2 1.45 1 102\nH 3 0.95 2 102 1 116\n*end\n";

}  // namespace zentrix::TESTS

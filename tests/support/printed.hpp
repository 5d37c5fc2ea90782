#pragma once

#include <sstream>
#include <string>
#include <utility>

namespace zentrix::TESTS {

/// What a routine writes to the stream that is its last argument.
template <typename PRINT, typename... ARGS>
std::string printed(PRINT&& print, ARGS&&... args) {
  std::ostringstream report;
  std::forward<PRINT>(print)(std::forward<ARGS>(args)..., report);
  return report.str();
}

}  // namespace zentrix::TESTS

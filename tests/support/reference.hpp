#pragma once

#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

namespace zentrix::TESTS {

/// What tests/reference/<name>.json holds.
inline nlohmann::json reference(const std::string& name) {
  std::ifstream file(ZENTRIX_SOURCE_DIR "/tests/reference/" + name + ".json");
  return nlohmann::json::parse(file);
}

}  // namespace zentrix::TESTS

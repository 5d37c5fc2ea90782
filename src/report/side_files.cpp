#include "report/side_files.hpp"

#include <fmt/ostream.h>

#include <filesystem>
#include <fstream>

namespace zentrix {

std::string output_base_name(const std::string& input_path) {
  std::string name = input_path.substr(input_path.find_last_of("/\\") + 1);
  const std::size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot > 0) name.resize(dot);
  return name.empty() ? "zentrix" : name;
}

std::string unique_output_name(const std::string& base, const std::string& extension, std::ostream& report) {
  constexpr int last_variant = 999;
  const auto taken = [](const std::string& name) {
    std::error_code fault;  // a name that cannot be examined counts as free; opening it will tell
    return std::filesystem::exists(name, fault);
  };
  std::string name = base + "." + extension;
  for (int k = 2; taken(name) && k <= last_variant; ++k) name = fmt::format("{}_{}.{}", base, k, extension);
  if (taken(name)) {
    fmt::print(report, "   WARNING: output_files: more than 999 collisions; overwriting last variant.\n");
  }
  return name;
}

bool write_side_file(const std::string& name, const std::string& text) {
  const std::string unfinished = name + ".part";
  std::ofstream file(unfinished, std::ios::binary | std::ios::trunc);
  if (!file) return false;
  file << text;
  file.close();
  std::error_code fault;
  if (file.good()) {
    std::filesystem::rename(unfinished, name, fault);
    if (!fault) return true;
  }
  std::filesystem::remove(unfinished, fault);
  return false;
}

}  // namespace zentrix

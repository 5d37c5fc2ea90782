#include <cctype>
#include <cstdlib>
#include <filesystem>

#include "molecule/molecule.hpp"

namespace zentrix {
namespace {

/// The file in the data folder that belongs to the executable: <prefix>/share/zentrix/basis_data of <prefix>/bin/zentrix
/// when installed, basis_data beside the build folder otherwise. Empty when neither has it.
std::string file_beside_program(const std::string& file_name) {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return {};
  const auto prefix = program.parent_path().parent_path();
  for (const auto& folder : {prefix / "share" / "zentrix" / "basis_data", prefix / "basis_data"})
    if (std::filesystem::exists(folder / file_name, error)) return (folder / file_name).string();
  return {};
}

std::string base_file_name(const std::string& basis_name) {
  std::string name;
  for (std::size_t i = 0; i < basis_name.size(); ++i) {
    const char c = basis_name[i];
    if (c == '*') {
      const bool twice = i + 1 < basis_name.size() && basis_name[i + 1] == '*';
      name += twice ? "dp" : "d";
      if (twice) ++i;
    } else if (c == '+') {
      name += 'p';
    } else if (c != '(' && c != ')' && c != ',' && c != ' ') {
      name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return name;
}

std::string path_of(const std::string& basis_name, const char* ending) {
  if (basis_name.find('(') != std::string::npos) {
    std::string literal = basis_name;
    for (char& c : literal) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::error_code error;
    std::string path = data_file_path(literal + ending);
    if (std::filesystem::exists(path, error)) return path;
  }
  return data_file_path(base_file_name(basis_name) + ending);
}

}  // namespace

std::string data_file_path(const std::string& file_name) {
  const char* root = std::getenv("ZENTRIX");
  if (root != nullptr && *root != '\0') {
    std::string path = root;
    if (path.back() != '/' && path.back() != '\\') path += '/';
    return path + "basis_data/" + file_name;
  }
  std::string local = "basis_data/" + file_name;
  std::error_code error;
  if (!std::filesystem::exists(local, error))
    if (std::string found = file_beside_program(file_name); !found.empty()) return found;
  return local;
}

std::string basis_file_name(const std::string& basis_name) { return base_file_name(basis_name) + ".dat"; }

std::string ecp_file_name(const std::string& basis_name) { return base_file_name(basis_name) + "_ecp.dat"; }

std::string basis_path(const std::string& basis_name) { return path_of(basis_name, ".dat"); }

std::string ecp_path(const std::string& basis_name) { return path_of(basis_name, "_ecp.dat"); }

}  // namespace zentrix

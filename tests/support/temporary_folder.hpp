#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace zentrix {

/// A fresh folder that disappears with its owner.
class TEMPORARY_FOLDER {
 public:
  TEMPORARY_FOLDER() {
    std::string name = (std::filesystem::temp_directory_path() / "zentrix_test_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a temporary folder");
    path_ = name;
  }
  ~TEMPORARY_FOLDER() {
    std::error_code fault;
    std::filesystem::remove_all(path_, fault);
  }
  TEMPORARY_FOLDER(const TEMPORARY_FOLDER&) = delete;
  TEMPORARY_FOLDER& operator=(const TEMPORARY_FOLDER&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace zentrix

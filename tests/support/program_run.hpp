#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/temporary_folder.hpp"

namespace zentrix {

/// The report of one run of the program, and how the run ended.
struct PROGRAM_RUN_T {
  int status = 0;
  std::string report;
  std::vector<std::string> files;  ///< what lies in the working folder afterwards, sorted

  bool says(const std::string& text) const { return report.find(text) != std::string::npos; }
  bool ends_with(const std::string& text) const {
    return report.size() >= text.size() && report.compare(report.size() - text.size(), text.size(), text) == 0;
  }

  /// Number behind the last occurrence of a label.
  double number(const std::string& label) const {
    const std::size_t at = report.rfind(label);
    if (at == std::string::npos) throw std::runtime_error("no \"" + label + "\" in\n" + report);
    return std::stod(report.substr(at + label.size()));
  }
};

inline std::string file_text(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Runs `command` (PROGRAM stands for the executable) by the shell in a fresh folder that holds `input` under `file_name`.
inline PROGRAM_RUN_T run_program_in_folder(const std::string& input, const std::string& command = "PROGRAM run.inp",
                                           const std::string& file_name = "run.inp") {
  const TEMPORARY_FOLDER folder;
  if (!file_name.empty()) std::ofstream(folder.path() / file_name) << input;
  std::string line = command;
  const std::string word = "PROGRAM";
  for (std::size_t at = line.find(word); at != std::string::npos; at = line.find(word)) {
    line.replace(at, word.size(), ZENTRIX_PROGRAM);
  }
  const TEMPORARY_FOLDER output;
  const std::string report_file = (output.path() / "report").string();
  const std::string shell_line = "cd '" + folder.path().string() + "' && export ZENTRIX='" ZENTRIX_SOURCE_DIR "' && { " +
                                 line + "; } > '" + report_file + "' 2>&1";
  PROGRAM_RUN_T run;
  const int code = std::system(shell_line.c_str());
  run.status = WIFEXITED(code) ? WEXITSTATUS(code) : -1;
  run.report = file_text(report_file);
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) run.files.push_back(entry.path().filename());
  std::sort(run.files.begin(), run.files.end());
  return run;
}

/// Every text stands in the report, each behind the one before.
inline void expect_in_order(const PROGRAM_RUN_T& run, const std::vector<std::string>& texts) {
  std::size_t at = 0;
  for (const std::string& text : texts) {
    const std::size_t found = run.report.find(text, at);
    ASSERT_NE(found, std::string::npos) << "missing or out of order: \"" << text << "\" in\n" << run.report;
    at = found + text.size();
  }
}

}  // namespace zentrix

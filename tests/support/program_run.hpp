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

/// Geometry blocks of inputs whose interest lies elsewhere.
inline const std::string water_block = "%geo\nO 0 0 0.1173\nH 0 0.7572 -0.4692\nH 0 -0.7572 -0.4692\n*end\n";
inline const std::string helium_block = "%geo\nHe 0 0 0\n*end\n";

/// Runs `command` (PROGRAM stands for the executable) by the shell in a fresh folder that holds `input` as run.inp.
inline PROGRAM_RUN_T run_program_in_folder(const std::string& input, const std::string& command = "PROGRAM run.inp") {
  const TEMPORARY_FOLDER folder;
  std::ofstream(folder.path() / "run.inp") << input;
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
  std::ifstream report(report_file);
  run.report.assign(std::istreambuf_iterator<char>(report), {});
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) run.files.push_back(entry.path().filename());
  std::sort(run.files.begin(), run.files.end());
  return run;
}

/// Every text stands in the report, each behind the one before.
inline void expect_in_order(const std::string& report, const std::vector<std::string>& texts) {
  std::size_t at = 0;
  for (const std::string& text : texts) {
    const std::size_t found = report.find(text, at);
    ASSERT_NE(found, std::string::npos) << "missing or out of order: \"" << text << "\" in\n" << report;
    at = found + text.size();
  }
}

/// A run that ends with `status` and has the texts in its report.
inline PROGRAM_RUN_T expect_report(const std::string& input, const std::vector<std::string>& texts, int status = 0,
                                   const std::string& command = "PROGRAM run.inp") {
  SCOPED_TRACE(command + "\n" + input.substr(0, 500));
  const PROGRAM_RUN_T run = run_program_in_folder(input, command);
  EXPECT_EQ(run.status, status) << run.report;
  expect_in_order(run.report, texts);
  return run;
}

/// A run that ends with these very lines and status 1, after which neither end lines nor files follow.
inline void expect_stop(const std::string& input, const std::string& last_lines) {
  SCOPED_TRACE(input);
  const PROGRAM_RUN_T run = run_program_in_folder(input);
  EXPECT_EQ(run.status, 1) << run.report;
  EXPECT_TRUE(run.ends_with(last_lines)) << "expected at the end:\n" << last_lines << "\nin\n" << run.report;
  EXPECT_EQ(run.files, std::vector<std::string>{"run.inp"});
}

}  // namespace zentrix

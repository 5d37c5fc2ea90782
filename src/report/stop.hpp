#pragma once

#include <stdexcept>
#include <string>

namespace zentrix {

/// A fatal stop from deep inside a computation (LAPACK failure, shell validation).
///
/// Carries the report lines that explain it, complete with their leading blanks and without a final newline; `main` prints
/// them and ends the run with exit status 1. Numerical code throws it instead of printing, so that no kernel knows the
/// report. Never thrown across an OpenMP region: validate before the region, or reduce a status and throw after it.
class run_stopped : public std::runtime_error {
 public:
  explicit run_stopped(const std::string& report_lines) : std::runtime_error(report_lines) {}
};

}  // namespace zentrix

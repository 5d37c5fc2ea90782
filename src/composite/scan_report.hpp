#pragma once

#include <iosfwd>
#include <string>

#include "composite/scan.hpp"

namespace zentrix::COMPOSITE {

void print_scan_header(const SCAN_VARIABLES_T& variables, bool relaxed, std::ostream& report);

/// Headings and results of the points.
class SCAN_PRINTER_T : public SCAN_OBSERVER_T {
 public:
  SCAN_PRINTER_T(const SCAN_VARIABLES_T& variables, bool relaxed, std::ostream& report)
      : variables_(variables), relaxed_(relaxed), report_(report) {}
  void point_begins(long p) override;
  void point_ends(long p, const SCAN_POINT_T& point) override;

 private:
  const SCAN_VARIABLES_T& variables_;
  bool relaxed_;
  std::ostream& report_;
};

/// Why a scan ended early.
void print_scan_failure(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result, bool relaxed, std::ostream& report);
/// Tables of all points, relative to the lowest converged one.
void print_scan_summary(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result, bool relaxed, std::ostream& report);
/// The points as plain columns: values, energy, energy above the minimum, 1 for converged.
std::string scan_file_text(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result);

}  // namespace zentrix::COMPOSITE

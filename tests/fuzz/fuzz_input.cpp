#include <cmath>
#include <cstdint>
#include <sstream>
#include <string_view>

#include "constants/elements.hpp"
#include "input/input_parser.hpp"
#include "require.hpp"

// The input parser: any text gives either a usable record or a message and an empty one.

using namespace zentrix;
using namespace zentrix::INPUT_PARSER;

namespace {

void check_accepted(const INPUT_DATA_T& input, std::ostream& report) {
  ZENTRIX_REQUIRE(!input.atoms.empty());
  for (const INPUT_ATOM_T& atom : input.atoms) {
    ZENTRIX_REQUIRE(atom.z >= 1 && atom.z <= MAX_Z);
    for (const double x : atom.position) ZENTRIX_REQUIRE(std::isfinite(x));
    ZENTRIX_REQUIRE(input.job != JOB::bsse || (atom.fragment >= 1 && atom.fragment <= input.n_fragments));
  }
  for (const CONSTRAINT_T& entry : input.constraints) {
    for (const int atom : entry.atoms) ZENTRIX_REQUIRE(atom >= 1 && atom <= static_cast<int>(input.atoms.size()));
  }
  for (const SCAN_VARIABLE_T& variable : input.scan) ZENTRIX_REQUIRE(variable.points >= 1 && std::isfinite(variable.step));
  ZENTRIX_REQUIRE(input.scf_etol > 0.0 && input.scf_maxiter > 0 && input.multiplicity > 0);
  print_job_summary(input, report);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream file(std::string(reinterpret_cast<const char*>(data), size));
  std::ostringstream report;
  INPUT_DATA_T input;
  if (parse_input_stream(file, input, report) == 0) {
    check_accepted(input, report);
  } else {
    constexpr std::string_view end = "            Run aborted.\n";
    const std::string text = report.str();
    ZENTRIX_REQUIRE(text.find(" *** ERROR") != std::string::npos);
    ZENTRIX_REQUIRE(text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0);
    ZENTRIX_REQUIRE(input.atoms.empty() && input.zmatrix.empty());
  }
  return 0;
}

#include "dft/d4_parameters.hpp"

#include <algorithm>
#include <vector>

#include "input/text.hpp"

namespace zentrix::DFT {
namespace {

struct D4_ROW_T {
  std::vector<std::string_view> names;
  double s8, a1, a2;
};

const std::vector<D4_ROW_T>& d4_table() {
  static const std::vector<D4_ROW_T> table = {
      {{"BP86", "BP", "B-P", "B-P86"}, 3.35497927, 0.43645861, 4.92406854},
      {{"B3LYP", "B3-LYP"}, 2.02929367, 0.40868035, 4.53807137},
      {{"BLYP", "B-LYP"}, 2.34076671, 0.44488865, 4.0933009},
      {{"PBE"}, 0.95948085, 0.38574991, 4.80688534},
      {{"PBE0"}, 1.20065498, 0.40085597, 5.02928789},
      {{"TPSS"}, 1.76596355, 0.42822303, 4.54257102},
      {{"HF"}, 1.61679827, 0.44959224, 3.35743605},
  };
  return table;
}

}  // namespace

bool find_d4_parameters(std::string_view functional, D4_PARAMETERS_T& parameters) {
  parameters = {};
  parameters.functional = functional.substr(0, functional.find_last_not_of(' ') + 1);
  const std::string name = INPUT_PARSER::upper(parameters.functional);
  for (const D4_ROW_T& row : d4_table()) {
    if (std::find(row.names.begin(), row.names.end(), name) == row.names.end()) continue;
    parameters.s8 = row.s8;
    parameters.a1 = row.a1;
    parameters.a2 = row.a2;
    parameters.valid = true;
  }
  return parameters.valid;
}

}  // namespace zentrix::DFT

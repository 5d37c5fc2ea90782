#include "dispersion/d3_parameters.hpp"

#include <fmt/ostream.h>

#include <algorithm>
#include <vector>

#include "input/text.hpp"

namespace zentrix::DISPERSION {
namespace {

bool is_one_of(std::string_view word, const std::vector<std::string_view>& words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

struct ROW_T {
  std::vector<std::string_view> functionals;
  double s8, a1, a2;
};

/// s6 is 1 throughout. BPW91 has no published set of its own and takes that of BP86.
const std::vector<ROW_T>& rows() {
  static const std::vector<ROW_T> table = {
      {{"B3LYP", "B3LYP5", "B3LYP3"}, 1.9889, 0.3981, 4.4211},
      {{"BP86", "BP"}, 3.2822, 0.3946, 4.8516},
      {{"BLYP"}, 2.6996, 0.4298, 4.2359},
      {{"PBE"}, 0.7875, 0.4289, 4.4407},
      {{"PBE0"}, 1.2177, 0.4145, 4.8593},
      {{"BPW91"}, 3.2822, 0.3946, 4.8516},
      {{"TPSS"}, 1.9435, 0.4535, 4.4752},
      {{"HF"}, 0.9171, 0.3385, 2.883},
  };
  return table;
}

}  // namespace

int select_d3(std::string_view word, std::string_view functional, D3_PARAMETERS_T& parameters, std::ostream& report) {
  parameters = {};
  const std::string model = INPUT_PARSER::upper(INPUT_PARSER::trimmed(word));
  if (model.empty() || model == "NONE") return 0;
  if (is_one_of(model, {"D3ZERO", "D3-ZERO", "D3(0)", "D3(ZERO)"})) {
    fmt::print(report, " *** ERROR: D3(zero) damping is not yet implemented.\n");
    fmt::print(report, "     Use D3BJ (default, recommended) instead.\n");
    return 1;
  }
  if (!is_one_of(model, {"D3", "D3BJ", "D3-BJ", "D3(BJ)"})) {
    fmt::print(report, " *** ERROR: unknown dispersion model: {}\n     Supported: D3BJ, NONE\n", word);
    return 1;
  }
  const std::string name = INPUT_PARSER::upper(INPUT_PARSER::trimmed(functional));
  for (const ROW_T& row : rows()) {
    if (!is_one_of(name, row.functionals)) continue;
    parameters = {"D3(BJ)", name, 1.0, row.s8, row.a1, row.a2};
    return 0;
  }
  fmt::print(report, " *** ERROR: no D3(BJ) parameters for {}\n", functional);
  fmt::print(report, "     Built-in: HF, BLYP, BP86, BPW91, B3LYP, PBE, PBE0, TPSS\n");
  return 1;
}

}  // namespace zentrix::DISPERSION

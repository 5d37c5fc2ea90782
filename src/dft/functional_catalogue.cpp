#include "dft/functional_catalogue.hpp"

#include <algorithm>

#include "dft/functional_report.hpp"
#include "input/text.hpp"

namespace zentrix::DFT {
namespace {

using enum XC_COMPONENT;
using enum FUNCTIONAL_CLASS;

/// One method with all its names. What it needs of the density follows from its row: the gradient for everything beyond the
/// local density, the kinetic-energy density for meta-GGAs.
struct METHOD_ROW_T {
  std::vector<std::string_view> names;
  FUNCTIONAL_CLASS functional_class;
  std::vector<WEIGHTED_COMPONENT_T> components;
  double hf_exchange;
};

// MP2 and UMP2 run Hartree-Fock; the correlation step follows it. B3LYP is the VWN5 form here and B3LYP3 the one with the
// random-phase fit that other programs call B3LYP. Its exchange is 0.2 exact + 0.08 Slater + 0.72 Becke 88, whole component
// energies (after Stephens et al., J. Phys. Chem. 98 (1994) 11623).
const std::vector<METHOD_ROW_T>& method_table() {
  static const std::vector<METHOD_ROW_T> table = {
      {{"HF", "MP2", "UMP2"}, hartree_fock, {}, 1.0},
      {{"SVWN", "SVWN5", "LDA", "LSDA"}, lda, {{slater_x, 1.0}, {vwn5_c, 1.0}}, 0.0},
      {{"SVWN3"}, lda, {{slater_x, 1.0}, {vwn3_c, 1.0}}, 0.0},
      {{"BLYP"}, gga, {{b88_x, 1.0}, {lyp_c, 1.0}}, 0.0},
      {{"PBE"}, gga, {{pbe_x, 1.0}, {pbe_c, 1.0}}, 0.0},
      {{"B3LYP", "B3LYP5"}, hybrid, {{slater_x, 0.08}, {b88_x, 0.72}, {vwn5_c, 0.19}, {lyp_c, 0.81}}, 0.20},
      {{"B3LYP3"}, hybrid, {{slater_x, 0.08}, {b88_x, 0.72}, {vwn3_c, 0.19}, {lyp_c, 0.81}}, 0.20},
      {{"PBE0"}, hybrid, {{pbe_x, 0.75}, {pbe_c, 1.0}}, 0.25},
      {{"BP86", "BP"}, gga, {{b88_x, 1.0}, {p86_c, 1.0}}, 0.0},
      {{"BPW91"}, gga, {{b88_x, 1.0}, {pw91_c, 1.0}}, 0.0},
      {{"R2SCAN"}, meta_gga, {{r2scan_x, 1.0}, {r2scan_c, 1.0}}, 0.0},
  };
  return table;
}

const METHOD_ROW_T* find_method(std::string_view name) {
  for (const METHOD_ROW_T& row : method_table()) {
    if (std::find(row.names.begin(), row.names.end(), name) != row.names.end()) return &row;
  }
  return nullptr;
}

}  // namespace

int set_up_functional(std::string_view method_name, FUNCTIONAL_T& functional, std::ostream& report) {
  const std::string name = INPUT_PARSER::upper(method_name.substr(0, method_name.find_last_not_of(' ') + 1));
  const METHOD_ROW_T* row = find_method(name);
  if (row == nullptr) {
    print_unknown_method(method_name, report);
    return 1;
  }
  functional.name = name;
  functional.functional_class = row->functional_class;
  functional.components = row->components;
  functional.hf_exchange = row->hf_exchange;
  functional.needs_gradient = row->functional_class != hartree_fock && row->functional_class != lda;
  functional.needs_tau = row->functional_class == meta_gga;
  return 0;
}

std::vector<std::string_view> method_words() {
  std::vector<std::string_view> words;
  for (const METHOD_ROW_T& row : method_table()) words.insert(words.end(), row.names.begin(), row.names.end());
  return words;
}

}  // namespace zentrix::DFT

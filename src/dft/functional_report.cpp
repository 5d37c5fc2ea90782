#include "dft/functional_report.hpp"

#include <fmt/ostream.h>

#include "dft/functional_catalogue.hpp"
#include "input/text.hpp"

namespace zentrix::DFT {
namespace {

const char* class_name(FUNCTIONAL_CLASS functional_class) {
  switch (functional_class) {
    case FUNCTIONAL_CLASS::hartree_fock:
      return "Hartree-Fock";
    case FUNCTIONAL_CLASS::lda:
      return "LDA";
    case FUNCTIONAL_CLASS::gga:
      return "GGA";
    case FUNCTIONAL_CLASS::meta_gga:
      return "meta-GGA";
    case FUNCTIONAL_CLASS::hybrid:
      return "Hybrid";
  }
  return "Unknown";
}

}  // namespace

void print_unknown_method(std::string_view method_name, std::ostream& report) {
  fmt::print(report, " *** ERROR: Unknown method/functional: \"{}\"\n", INPUT_PARSER::trimmed(method_name));
  fmt::print(report,
             "     Available: HF, SVWN, SVWN3, SVWN5, BLYP, BP86, BPW91, PBE, B3LYP, B3LYP3, B3LYP5, PBE0, R2SCAN\n");
}

void print_functional(const FUNCTIONAL_T& functional, std::ostream& report) {
  fmt::print(report, "   Functional:       {}\n", functional.name);
  fmt::print(report, "   Class:            {}\n", class_name(functional.functional_class));
  fmt::print(report, "   HF exchange:      {:6.2f} %\n", 100.0 * functional.hf_exchange);
  if (functional.components.empty()) return;
  fmt::print(report, "   XC components:\n");
  for (const WEIGHTED_COMPONENT_T& component : functional.components) {
    fmt::print(report, "     id={:4d}  weight={:8.4f}\n", static_cast<int>(component.id), component.weight);
  }
}

}  // namespace zentrix::DFT

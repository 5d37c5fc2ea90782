#include "driver/dispersion_setup.hpp"

#include <fmt/ostream.h>

#include <string>
#include <vector>

#include "dft/d4_parameters.hpp"
#include "dispersion/d3_report.hpp"
#include "gradients/dispersion_term.hpp"
#include "molecule/molecule.hpp"

namespace zentrix {
namespace {

int tell_fatal(const std::string& what, std::ostream& report) {
  fmt::print(report, " *** FATAL: {}\n", what);
  return 1;
}

int set_up_d4(const RUN_T& run, std::ostream& report) {
  DFT::D4_PARAMETERS_T parameters;
  if (DFT::find_d4_parameters(run.functional.name, parameters)) return 0;
  return tell_fatal("no D4 parameters for " + run.functional.name, report);
}

int set_up_d3(RUN_T& run, std::ostream& report) {
  DISPERSION::D3_DATA_T data;
  if (DISPERSION::load_d3_atomic(data_file_path("d3_atomic.dat"), data, report) != 0) {
    return tell_fatal("cannot load D3 atomic data", report);
  }
  if (DISPERSION::load_d3_reference(data_file_path("d3_c6ref.dat"), data, report) != 0) {
    return tell_fatal("cannot load D3 reference database", report);
  }
  DISPERSION::D3_PARAMETERS_T parameters;
  if (DISPERSION::select_d3(run.input.dispersion, run.functional.name, parameters, report) != 0) {
    return tell_fatal("dispersion setup failed", report);
  }
  std::vector<int> elements;
  for (const auto& atom : run.input.atoms) elements.push_back(atom.ghost ? 0 : atom.z);
  run.nuclear_terms.push_back(std::make_unique<GRADIENTS::D3_TERM_T>(DISPERSION::D3_T(parameters, data, elements)));
  DISPERSION::print_dispersion(parameters, report);
  return 0;
}

}  // namespace

int set_up_dispersion(RUN_T& run, std::ostream& report) {
  if (run.input.dispersion.empty() || run.input.dispersion == "NONE") return 0;
  return run.input.dispersion == "D4" ? set_up_d4(run, report) : set_up_d3(run, report);
}

}  // namespace zentrix

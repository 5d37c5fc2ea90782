#include "composite/counterpoise.hpp"

#include <numeric>

#include "composite/counterpoise_report.hpp"

namespace zentrix::COMPOSITE {
namespace {

using INPUT_PARSER::INPUT_ATOM_T;
using INPUT_PARSER::INPUT_DATA_T;

/// One energy with its heading; non-zero after the line of its failure.
int run_step(const INPUT_DATA_T& input, SUBSYSTEM mode, int fragment, const ENERGY_OF_T& energy_of, double& energy,
             std::ostream& report) {
  print_step(mode, fragment, report);
  const SUBSYSTEM_ENERGY_T found = energy_of(select_fragment_system(input, fragment, mode));
  energy = found.energy;
  if (!found.failed) return 0;
  print_failed_step(mode, fragment, report);
  return 1;
}

}  // namespace

INPUT_DATA_T select_fragment_system(const INPUT_DATA_T& input, int fragment, SUBSYSTEM mode) {
  INPUT_DATA_T system = input;
  system.job = INPUT_PARSER::JOB::energy;
  system.dispersion = "NONE";
  if (mode == SUBSYSTEM::complex) return system;
  system.charge = input.fragment_charge.at(fragment);
  system.multiplicity = input.fragment_multiplicity.at(fragment);
  system.atoms.clear();
  for (INPUT_ATOM_T atom : input.atoms) {
    atom.ghost = atom.fragment != fragment;
    if (!atom.ghost || mode == SUBSYSTEM::in_complex_basis) system.atoms.push_back(atom);
  }
  return system;
}

double COUNTERPOISE_T::sum_isolated() const { return std::accumulate(isolated.begin(), isolated.end(), 0.0); }

double COUNTERPOISE_T::sum_in_complex_basis() const {
  return std::accumulate(in_complex_basis.begin(), in_complex_basis.end(), 0.0);
}

int run_counterpoise(const INPUT_DATA_T& input, const ENERGY_OF_T& energy_of, COUNTERPOISE_T& result, std::ostream& report) {
  const auto n = static_cast<std::size_t>(input.n_fragments);
  result = {0.0, std::vector<double>(n), std::vector<double>(n)};
  print_counterpoise_title(input.n_fragments, input.dispersion, report);
  if (run_step(input, SUBSYSTEM::complex, 0, energy_of, result.complex, report) != 0) return 1;
  for (std::size_t f = 0; f < n; ++f) {
    const int number = static_cast<int>(f) + 1;
    if (run_step(input, SUBSYSTEM::isolated, number, energy_of, result.isolated[f], report) != 0) return 1;
    if (run_step(input, SUBSYSTEM::in_complex_basis, number, energy_of, result.in_complex_basis[f], report) != 0) return 1;
  }
  print_counterpoise_summary(result, report);
  return 0;
}

}  // namespace zentrix::COMPOSITE

#include <fmt/ostream.h>

#include <cstdlib>
#include <map>
#include <vector>

#include "input/input_checks.hpp"

// Charge and multiplicity of the fragments of a counterpoise job. %charge and %mult are those of the complex; "%charge 2=+1"
// and "%mult 2=3" are those of fragment 2. Where nothing is said a fragment is neutral (or, when it is the only one without
// a charge, has what is left of the complex's) and has its lowest multiplicity.

namespace zentrix::INPUT_PARSER {
namespace {

int check_numbers(const std::map<int, int>& values, const char* keyword, int n_fragments, std::ostream& report) {
  for (const auto& [fragment, value] : values) {
    if (fragment <= n_fragments) continue;
    fmt::print(report, " *** ERROR: %{} {}={} names a fragment that is not there ({} fragments).\n", keyword, fragment,
               value, n_fragments);
    return 1;
  }
  return 0;
}

/// Fills in the charges that were not given and checks the sum.
int settle_charges(INPUT_DATA_T& input, std::ostream& report) {
  std::map<int, int>& charges = input.fragment_charge;
  const bool one_left = static_cast<int>(charges.size()) == input.n_fragments - 1;
  int rest = input.charge;
  for (const auto& [fragment, charge] : charges) rest -= charge;
  for (int f = 1; f <= input.n_fragments; ++f) charges.emplace(f, one_left ? rest : 0);
  if (one_left || rest == 0) return 0;
  fmt::print(report, " *** ERROR: the charges of the fragments add up to {:+d}, the complex has {:+d}.\n",
             input.charge - rest, input.charge);
  fmt::print(report, "            Give the charge of a fragment k with \"%charge k=value\".\n");
  return 1;
}

int check_electrons(int fragment, int electrons, int multiplicity, std::ostream& report) {
  if (electrons < 1) {
    fmt::print(report, " *** ERROR: fragment {} has {} electrons.\n", fragment, electrons);
    fmt::print(report, "            Check \"%charge {}=value\" and the fragment numbers.\n", fragment);
    return 1;
  }
  if (multiplicity > electrons + 1 || (electrons + multiplicity) % 2 == 0) {
    fmt::print(report, " *** ERROR: fragment {} has {} electrons and cannot have multiplicity {}.\n", fragment, electrons,
               multiplicity);
    fmt::print(report, "            Give another one with \"%mult {}=value\".\n", fragment);
    return 1;
  }
  return 0;
}

/// Unpaired electrons of the complex can come from the fragments only; spins of fragments may couple to less than their sum.
int check_spins(const INPUT_DATA_T& input, std::ostream& report) {
  int unpaired = 0;
  for (const auto& [fragment, multiplicity] : input.fragment_multiplicity) unpaired += multiplicity - 1;
  if (input.multiplicity - 1 <= unpaired) return 0;
  fmt::print(report, " *** ERROR: the complex has {} unpaired electrons, its fragments {} in all.\n", input.multiplicity - 1,
             unpaired);
  fmt::print(report, "            Give the multiplicity of a fragment k with \"%mult k=value\".\n");
  return 1;
}

}  // namespace

int settle_fragment_states(INPUT_DATA_T& input, std::ostream& report) {
  if (const int error = check_numbers(input.fragment_charge, "charge", input.n_fragments, report); error != 0) return error;
  if (const int error = check_numbers(input.fragment_multiplicity, "mult", input.n_fragments, report); error != 0)
    return error;
  if (const int error = settle_charges(input, report); error != 0) return error;
  std::map<int, int> electrons;
  for (const INPUT_ATOM_T& atom : input.atoms) electrons[atom.fragment] += atom.z;
  for (auto& [fragment, count] : electrons) {
    count -= input.fragment_charge[fragment];
    const bool odd = count % 2 != 0;
    const auto [multiplicity, is_default] = input.fragment_multiplicity.emplace(fragment, odd ? 2 : 1);
    if (const int error = check_electrons(fragment, count, multiplicity->second, report); error != 0) return error;
    if (odd && is_default) {
      fmt::print(report, "   NOTE: fragment {} has an odd number of electrons and is computed as a doublet.\n", fragment);
    }
  }
  return check_spins(input, report);
}

}  // namespace zentrix::INPUT_PARSER

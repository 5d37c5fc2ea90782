#include "input/input_checks.hpp"

#include <fmt/ostream.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

#include "input/blocks.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

/// Closer nuclei (bohr) are one atom written twice.
constexpr double coincidence = 1e-3;

double distance(const INPUT_ATOM_T& a, const INPUT_ATOM_T& b) {
  return std::hypot(a.position[0] - b.position[0], a.position[1] - b.position[1], a.position[2] - b.position[2]);
}

/// Sweeps the atoms in the order of their projections on a direction that no plane or chain of a molecule is normal to: two
/// atoms are never closer than their projections, so only near neighbours in that order need a look, whatever the number of
/// atoms.
int check_coincident_atoms(const INPUT_DATA_T& input, std::ostream& report) {
  constexpr std::array<double, 3> direction = {0.6180339887, 0.684, 0.3872983346};  // shorter than 1
  std::vector<std::pair<double, int>> order;
  for (std::size_t a = 0; a < input.atoms.size(); ++a) {
    const auto& p = input.atoms[a].position;
    order.emplace_back(direction[0] * p[0] + direction[1] * p[1] + direction[2] * p[2], static_cast<int>(a));
  }
  std::sort(order.begin(), order.end());
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (std::size_t j = i + 1; j < order.size() && order[j].first - order[i].first < coincidence; ++j) {
      const auto [first, second] = std::minmax(order[i].second, order[j].second);
      if (distance(input.atoms[first], input.atoms[second]) >= coincidence) continue;
      fmt::print(report, " *** ERROR: atoms {} and {} are at the same position.\n", first + 1, second + 1);
      return 1;
    }
  }
  return 0;
}

int check_scan_use(const INPUT_DATA_T& input, std::ostream& report) {
  if (input.job != JOB::scan && input.job != JOB::scanopt) {
    if (!input.scan.empty()) fmt::print(report, "   *** WARNING: the %scan block is not used by this job.\n");
    return 0;
  }
  if (input.zmatrix.empty()) {
    fmt::print(report, " *** ERROR: %job scan / scanopt requires a %gz (Z-matrix) geometry block.\n");
    fmt::print(report, "            The scan sweeps z-matrix coordinates, so\n            a connectivity is required.\n");
    return 1;
  }
  if (input.scan.empty()) {
    fmt::print(report, " *** ERROR: %job scan / scanopt requires a \"%scan ... *end\" block\n");
    fmt::print(report, "            with at least one sweep variable.\n");
    return 1;
  }
  return check_scan(input, report);
}

/// "%solvent none" and "%pcm none" switch solvation off as a whole.
void settle_solvation(INPUT_DATA_T& input, std::ostream& report) {
  if (!input.solvation_off && !input.pcm_off) return;
  if (input.solvation_off && (input.pcm_given || input.eps_given)) {
    fmt::print(report, "   *** WARNING: %solvent none switches solvation off; %pcm and %eps are not used.\n");
  } else if (input.pcm_off && (input.solvent_given || input.eps_given)) {
    fmt::print(report, "   *** WARNING: %pcm none switches solvation off; %solvent and %eps are not used.\n");
  }
  input.solvent_given = input.eps_given = input.pcm_given = false;
}

int check_fragments(INPUT_DATA_T& input, std::ostream& report) {
  std::map<int, int> counts;
  for (const INPUT_ATOM_T& atom : input.atoms) {
    if (atom.fragment > 0) ++counts[atom.fragment];
  }
  const int found = static_cast<int>(counts.size());
  if (found < 2) {
    fmt::print(report, " *** ERROR: %job bsse requires at least 2 fragments; found {}\n", found);
    return 1;
  }
  const int highest = counts.rbegin()->first;
  for (int k = 1; k <= found; ++k) {
    if (counts.count(k) == 0) {
      fmt::print(report, " *** ERROR: fragment {} is missing (max ifrag = {}).\n", k, highest);
      return 1;
    }
  }
  input.n_fragments = found;
  fmt::print(report, "   BSSE: {} fragments detected:\n", found);
  for (const auto& [fragment, count] : counts) fmt::print(report, "         fragment {}: {} atoms\n", fragment, count);
  return settle_fragment_states(input, report);
}

}  // namespace

int check_input(INPUT_DATA_T& input, bool has_constraint_block, std::ostream& report) {
  if (input.atoms.empty()) {
    fmt::print(report, " *** ERROR: No atoms found in input file.\n");
    return 1;
  }
  // A relaxed scan is a row of optimisations and holds the same coordinates in all of them.
  if (has_constraint_block && input.job != JOB::opt && input.job != JOB::opt_freq && input.job != JOB::scanopt) {
    fmt::print(report, " *** ERROR: %constrain block requires %job opt or %job opt+freq.\n");
    return 1;
  }
  if (const int error = check_scan_use(input, report); error != 0) return error;
  if (const int error = check_constraints(input, report); error != 0) return error;
  if (const int error = check_coincident_atoms(input, report); error != 0) return error;
  settle_solvation(input, report);
  warn_unused_settings(input, report);
  if (input.method == "UMP2") input.unrestricted = true;
  if (input.job == JOB::bsse) return check_fragments(input, report);
  if (!input.fragment_charge.empty() || !input.fragment_multiplicity.empty()) {
    fmt::print(report, "   *** WARNING: charges and multiplicities of fragments are not used by this job.\n");
  }
  return 0;
}

}  // namespace zentrix::INPUT_PARSER

#include "input/input_checks.hpp"

#include <fmt/ostream.h>

#include <cmath>
#include <map>

#include "input/blocks.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

/// Closer nuclei (bohr) are one atom written twice.
constexpr double coincidence = 1e-3;

int check_coincident_atoms(const INPUT_DATA_T& input, std::ostream& report) {
  for (std::size_t a = 0; a < input.atoms.size(); ++a) {
    for (std::size_t b = 0; b < a; ++b) {
      const auto& p = input.atoms[a].position;
      const auto& q = input.atoms[b].position;
      if (std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]) < coincidence) {
        fmt::print(report, " *** ERROR: atoms {} and {} are at the same position.\n", b + 1, a + 1);
        return 1;
      }
    }
  }
  return 0;
}

int check_scan_job(const INPUT_DATA_T& input, std::ostream& report) {
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
  return 0;
}

}  // namespace

int check_input(INPUT_DATA_T& input, bool has_constraint_block, std::ostream& report) {
  if (input.atoms.empty()) {
    fmt::print(report, " *** ERROR: No atoms found in input file.\n");
    return 1;
  }
  if (has_constraint_block && input.job != JOB::opt && input.job != JOB::opt_freq) {
    fmt::print(report, " *** ERROR: %constrain block requires %job opt or %job opt+freq.\n");
    return 1;
  }
  if (const int error = check_coincident_atoms(input, report); error != 0) return error;
  const bool scanning = input.job == JOB::scan || input.job == JOB::scanopt;
  if (scanning) {
    if (const int error = check_scan_job(input, report); error != 0) return error;
  } else if (!input.scan.empty()) {
    fmt::print(report, "   *** WARNING: the %scan block is not used by this job.\n");
  }
  if (const int error = check_constraints(input, report); error != 0) return error;
  return input.job == JOB::bsse ? check_fragments(input, report) : 0;
}

}  // namespace zentrix::INPUT_PARSER

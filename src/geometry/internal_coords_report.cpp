#include "geometry/internal_coords_report.hpp"

#include <fmt/ostream.h>

#include "constants/units.hpp"
#include "report/layout.hpp"

namespace zentrix::INTERNAL_COORDS {
namespace {

bool listed_as(const INTCOORD_T& coordinate, KIND kind) {
  return coordinate.kind == kind || (kind == KIND::angle && coordinate.kind == KIND::linear_bend);
}

void print_kind(const COORDINATE_SET_T& set, KIND kind, std::string_view title, std::string_view label, double unit,
                std::ostream& report) {
  fmt::print(report, "\n   {}\n", title);
  const std::size_t n_atoms = kind == KIND::bond ? 2 : kind == KIND::angle ? 3 : 4;
  int number = 0;
  for (const INTCOORD_T& c : set.coordinates) {
    if (!listed_as(c, kind)) continue;
    fmt::print(report, "     {:4d}  ", ++number);
    for (std::size_t n = 0; n < n_atoms; ++n) fmt::print(report, "{}{:4d}", n > 0 ? " -" : "", c.atoms[n]);
    fmt::print(report, "  {} = {:12.6f}{}{}\n", label, without_minus_zero(c.value / unit, 6),
               c.kind == KIND::linear_bend ? "  (linear bend)" : "", c.frozen ? "  frozen" : "");
  }
}

void print_match(const CONSTRAINT_MATCH_T& match, std::size_t n, std::ostream& report) {
  const char* name = match.kind == 'B' ? "bond" : match.kind == 'A' ? "angle" : "torsion";
  const char* limit = match.kind == 'B' ? "MAX_BONDS" : match.kind == 'A' ? "MAX_ANGLES" : "MAX_TORSIONS";
  switch (match.outcome) {
    case CONSTRAINT_OUTCOME::matched:
      fmt::print(report, "   matched auto-generated {} #{}\n", name, match.number);
      break;
    case CONSTRAINT_OUTCOME::added:
      if (match.kind == 'B') {
        fmt::print(report, "   ADDED (R = {:.6f} bohr)\n", match.value);
      } else {
        fmt::print(report, "   ADDED ({} = {:.6f} deg)\n", match.kind == 'A' ? "theta" : "tau",
                   without_minus_zero(match.value / RADIAN_PER_DEGREE, 6));
      }
      break;
    case CONSTRAINT_OUTCOME::set_full:
      fmt::print(report, " *** ERROR: cannot extend internal-coordinate set: {} reached.\n", limit);
      break;
    case CONSTRAINT_OUTCOME::unknown_kind:
      fmt::print(report, " *** ERROR: constraint {}: unknown kind '{}' (expected B / A / D).\n", n, match.kind);
      break;
    case CONSTRAINT_OUTCOME::atom_range:
      fmt::print(report, " *** ERROR: constraint {}: atom index out of range.\n", n);
      break;
    case CONSTRAINT_OUTCOME::angle_wing_range:
      fmt::print(report, " *** ERROR: constraint {}: angle wing atom out of range.\n", n);
      break;
    case CONSTRAINT_OUTCOME::dihedral_range:
      fmt::print(report, " *** ERROR: constraint {}: dihedral atom out of range.\n", n);
      break;
    case CONSTRAINT_OUTCOME::dihedral_in_line:
      fmt::print(report, " *** ERROR: constraint {}: the dihedral has no value, three of its atoms lie on a line.\n", n);
      break;
  }
}

bool good(const CONSTRAINT_MATCH_T& match) {
  return match.outcome == CONSTRAINT_OUTCOME::matched || match.outcome == CONSTRAINT_OUTCOME::added;
}

}  // namespace

void print_summary(const COORDINATE_SET_T& set, std::ostream& report) {
  fmt::print(report, "\n   Internal Coordinates Summary\n   ================================================\n");
  fmt::print(report, "   Total internal coordinates: {}\n", set.coordinates.size());
  fmt::print(report, "   Bonds:                      {}\n", set.n_bonds);
  fmt::print(report, "   Angles:                     {}\n", set.n_angles);
  fmt::print(report, "   Dihedrals:                  {}\n", set.n_dihedrals);
  fmt::print(report, "   Frozen (constrained):       {}\n", set.n_frozen);
  print_kind(set, KIND::bond, "Bonds (bohr):", "R", 1.0, report);
  print_kind(set, KIND::angle, "Angles (degrees):", "theta", RADIAN_PER_DEGREE, report);
  print_kind(set, KIND::dihedral, "Dihedrals (degrees):", "tau", RADIAN_PER_DEGREE, report);
}

void print_constraint_matching(const std::vector<CONSTRAINT_MATCH_T>& matches, const COORDINATE_SET_T& set,
                               std::ostream& report) {
  fmt::print(report, "\n   Constraint matching:\n   --------------------\n");
  std::size_t added = 0;
  for (std::size_t n = 0; n < matches.size(); ++n) {
    print_match(matches[n], n + 1, report);
    if (matches[n].outcome == CONSTRAINT_OUTCOME::added) ++added;
  }
  if (!matches.empty() && !good(matches.back())) return;
  fmt::print(report, "   {} coordinate(s) frozen out of {} total.\n", set.n_frozen, set.coordinates.size());
  if (added > 0) fmt::print(report, "     ({} new coordinate(s) added by extension)\n", added);
}

void print_bonds_truncated(std::ostream& report) { fmt::print(report, "   *** WARNING: Too many bonds, truncating\n"); }

void print_remade(std::ostream& report) {
  fmt::print(report, "   An angle became linear or ceased to be, or a centre planar: internal coordinates made anew.\n");
}

}  // namespace zentrix::INTERNAL_COORDS

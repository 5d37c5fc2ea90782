#include <fmt/ostream.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "constants/limits.hpp"
#include "input/blocks.hpp"
#include "input/input_parser.hpp"
#include "input/text.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

/// A grid of more points is a typing slip, not a scan.
constexpr int largest_point_count = 1000000;

int print_malformed_scan(const std::string& line, std::ostream& report) {
  fmt::print(report, " *** ERROR: malformed %scan line:\n              {}\n", line);
  fmt::print(report, "            Expected: <kind> <row> [from] <val_from> [to] <val_to> [step] <val_step>\n");
  fmt::print(report, "              <kind>  = R | A | D\n");
  fmt::print(report, "              <row>   = z-matrix row index (1-based)\n");
  return 1;
}

int print_malformed_constraint(const std::string& line, std::ostream& report) {
  fmt::print(report, " *** ERROR: malformed %constrain line:\n              {}\n", line);
  fmt::print(report, "            Expected: <kind> <i> <j> [<k> [<l>]]\n");
  fmt::print(report, "              <kind> = B (bond, 2 atoms)\n");
  fmt::print(report, "                     | A (angle, 3 atoms)\n");
  fmt::print(report, "                     | D (dihedral, 4 atoms)\n");
  return 1;
}

/// Both ends are kept; the number of steps is the nearest whole one and the step follows from it.
bool set_points(SCAN_VARIABLE_T& variable, double step) {
  const double range = variable.to - variable.from;
  if (range == 0.0) return true;
  if (step == 0.0 || !std::isfinite(range)) return false;
  // More steps than a grid may have are refused once all variables are known.
  const double steps = std::clamp(std::round(std::abs(range / step)), 1.0, static_cast<double>(largest_point_count));
  variable.points = static_cast<int>(steps) + 1;
  variable.step = range / steps;
  return true;
}

bool parse_scan_line(const std::string& line, SCAN_VARIABLE_T& variable, std::ostream& report) {
  const std::vector<std::string_view> fields = words(line);
  if (fields.size() < 5 || fields[0].size() != 1) return false;
  variable.kind = upper(fields[0])[0];
  if (variable.kind != 'R' && variable.kind != 'A' && variable.kind != 'D') return false;
  const auto row = read_integer(fields[1]);
  if (!row) return false;
  variable.row = *row;
  std::array<double, 3> values = {};
  std::size_t next = 2;
  constexpr std::array<const char*, 3> labels = {"FROM", "TO", "STEP"};
  for (std::size_t k = 0; k < 3; ++k) {
    if (next < fields.size() && upper(fields[next]) == labels[k]) ++next;
    const auto value = next < fields.size() ? read_real(fields[next]) : std::nullopt;
    if (!value) return false;
    values[k] = *value;
    ++next;
  }
  variable.from = values[0];
  variable.to = values[1];
  if (!set_points(variable, values[2])) return false;
  warn_unused_fields(fields, next, report);
  return true;
}

bool parse_constraint_line(const std::string& line, CONSTRAINT_T& constraint, std::ostream& report) {
  const std::vector<std::string_view> fields = words(line);
  if (fields.empty() || fields[0].size() != 1) return false;
  constraint.kind = upper(fields[0])[0];
  std::size_t wanted = fields.size() - 1;  // of an unknown kind, which is refused after reading
  if (constraint.kind == 'B') wanted = 2;
  if (constraint.kind == 'A') wanted = 3;
  if (constraint.kind == 'D') wanted = 4;
  if (wanted < 2 || fields.size() < wanted + 1) return false;
  for (std::size_t k = 1; k <= wanted; ++k) {
    const auto atom = read_integer(fields[k]);
    if (!atom) return false;
    constraint.atoms.push_back(*atom);
  }
  if (fields.size() > wanted + 1) {
    if (read_integer(fields[wanted + 1])) return false;  // one atom too many for the kind
    warn_unused_fields(fields, wanted + 1, report);
  }
  return true;
}

/// A bond, angle or dihedral with its atoms in reverse order is the same coordinate.
bool same_coordinate(const CONSTRAINT_T& a, const CONSTRAINT_T& b) {
  if (a.kind != b.kind) return false;
  return a.atoms == b.atoms || std::equal(a.atoms.begin(), a.atoms.end(), b.atoms.rbegin(), b.atoms.rend());
}

int check_scan_row(const SCAN_VARIABLE_T& variable, int n_rows, std::ostream& report) {
  if (variable.row < 1 || variable.row > n_rows) {
    fmt::print(report, " *** ERROR: %scan: row {} is out of range (z-matrix has {} atoms).\n", variable.row, n_rows);
    return 1;
  }
  if (variable.kind == 'R' && variable.row < 2) {
    fmt::print(report, " *** ERROR: %scan: bond R can only be swept on row >= 2 (got row {}).\n", variable.row);
    return 1;
  }
  if (variable.kind == 'A' && variable.row < 3) {
    fmt::print(report, " *** ERROR: %scan: angle A can only be swept on row >= 3 (got row {}).\n", variable.row);
    return 1;
  }
  if (variable.kind == 'D' && variable.row < 4) {
    fmt::print(report, " *** ERROR: %scan: dihedral D can only be swept on row >= 4 (got row {}).\n", variable.row);
    return 1;
  }
  if (variable.kind == 'R' && std::min(variable.from, variable.to) <= 0.0) {
    fmt::print(report, " *** ERROR: %scan: bond lengths of R {} must be positive.\n", variable.row);
    return 1;
  }
  return 0;
}

}  // namespace

int parse_scan_block(const std::vector<std::string>& lines, std::vector<SCAN_VARIABLE_T>& scan, std::ostream& report) {
  for (const std::string& line : lines) {
    SCAN_VARIABLE_T variable;
    if (!parse_scan_line(line, variable, report)) return print_malformed_scan(line, report);
    if (scan.size() == MAX_SCAN_VARIABLES) {
      fmt::print(report, " *** ERROR: %scan block has more than {} sweep variables.\n", MAX_SCAN_VARIABLES);
      return 1;
    }
    scan.push_back(variable);
  }
  return 0;
}

int check_scan(const INPUT_DATA_T& input, std::ostream& report) {
  long long total = 1;
  for (std::size_t n = 0; n < input.scan.size(); ++n) {
    const SCAN_VARIABLE_T& variable = input.scan[n];
    if (const int error = check_scan_row(variable, static_cast<int>(input.zmatrix.size()), report); error != 0) return error;
    for (std::size_t m = 0; m < n; ++m) {
      if (input.scan[m].kind == variable.kind && input.scan[m].row == variable.row) {
        fmt::print(report, " *** ERROR: %scan: duplicate sweep variable {} {}\n", variable.kind, variable.row);
        return 1;
      }
    }
    total *= variable.points;  // every factor is at most the limit, so nothing overflows before the next line
    if (total > largest_point_count) {
      fmt::print(report, " *** ERROR: %scan: the grid has more than {} points.\n", largest_point_count);
      return 1;
    }
  }
  return 0;
}

int parse_constraint_block(const std::vector<std::string>& lines, std::vector<CONSTRAINT_T>& constraints,
                           std::ostream& report) {
  for (const std::string& line : lines) {
    CONSTRAINT_T constraint;
    if (!parse_constraint_line(line, constraint, report)) return print_malformed_constraint(line, report);
    if (constraints.size() == MAX_CONSTRAINTS) {
      fmt::print(report, " *** ERROR: %constrain block has more than {} entries.\n", MAX_CONSTRAINTS);
      return 1;
    }
    constraints.push_back(constraint);
  }
  return 0;
}

CONSTRAINT_T swept_coordinate(const INPUT_DATA_T& input, const SCAN_VARIABLE_T& variable) {
  const ZMATRIX_ROW_T& row = input.zmatrix[static_cast<std::size_t>(variable.row) - 1];
  CONSTRAINT_T coordinate{variable.kind == 'R' ? 'B' : variable.kind, {variable.row, row.bond_atom}};
  if (variable.kind != 'R') coordinate.atoms.push_back(row.angle_atom);
  if (variable.kind == 'D') coordinate.atoms.push_back(row.dihedral_atom);
  return coordinate;
}

int check_constraints(const INPUT_DATA_T& input, std::ostream& report) {
  const int n_atoms = static_cast<int>(input.atoms.size());
  for (std::size_t n = 0; n < input.constraints.size(); ++n) {
    const CONSTRAINT_T& entry = input.constraints[n];
    if (entry.kind != 'B' && entry.kind != 'A' && entry.kind != 'D') {
      fmt::print(report, " *** ERROR: %constrain: unknown kind '{}'.\n", entry.kind);
      return 1;
    }
    for (std::size_t k = 0; k < entry.atoms.size(); ++k) {
      if (entry.atoms[k] < 1 || entry.atoms[k] > n_atoms) {
        fmt::print(report, " *** ERROR: %constrain: atom index {} is out of range (natom = {}).\n", entry.atoms[k], n_atoms);
        return 1;
      }
      if (std::count(entry.atoms.begin(), entry.atoms.end(), entry.atoms[k]) > 1) {
        fmt::print(report, " *** ERROR: %constrain: entry {} names atom {} twice.\n", n + 1, entry.atoms[k]);
        return 1;
      }
    }
    for (std::size_t m = 0; m < n; ++m) {
      if (same_coordinate(input.constraints[m], entry)) {
        fmt::print(report, " *** ERROR: %constrain: entries {} and {} refer to the same coordinate.\n", m + 1, n + 1);
        return 1;
      }
    }
    for (std::size_t v = 0; input.job == JOB::scanopt && v < input.scan.size(); ++v) {
      if (same_coordinate(swept_coordinate(input, input.scan[v]), entry)) {
        fmt::print(report, " *** ERROR: %constrain: entry {} is the coordinate that sweep variable {} moves.\n", n + 1,
                   v + 1);
        return 1;
      }
    }
  }
  return 0;
}

}  // namespace zentrix::INPUT_PARSER

#include "composite/scan_report.hpp"

#include <fmt/ostream.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "constants/limits.hpp"
#include "constants/units.hpp"
#include "report/layout.hpp"

namespace zentrix::COMPOSITE {
namespace {

using INPUT_PARSER::SCAN_VARIABLE_T;

const char* kind_name(char kind) { return kind == 'R' ? "bond R" : kind == 'A' ? "angle A" : "dihedral D"; }
const char* unit(char kind) { return kind == 'R' ? "Ang" : "deg"; }
const char* column_name(char kind) { return kind == 'R' ? "R(Ang)" : kind == 'A' ? "A(deg)" : "D(deg)"; }

/// The lowest of the converged points; null when there is none.
const SCAN_POINT_T* lowest(const std::vector<SCAN_POINT_T>& points) {
  const SCAN_POINT_T* found = nullptr;
  for (const SCAN_POINT_T& point : points)
    if (point.converged && (found == nullptr || point.energy < found->energy)) found = &point;
  return found;
}

/// kcal/mol above the minimum, 0 where no point makes one; not a number for a point without an energy.
double above(const SCAN_POINT_T& point, const SCAN_POINT_T* minimum) {
  const double reference = minimum == nullptr ? point.energy : minimum->energy;
  return (point.energy - reference) * KCAL_MOL_PER_HARTREE;
}

/// A point that a fault left without an energy says so.
std::string energy_text(double energy, int decimals) {
  return std::isnan(energy) ? "none" : fmt::format("{:.{}f}", energy, decimals);
}

void print_minimum(const SCAN_VARIABLES_T& variables, const SCAN_POINT_T* minimum, std::ostream& report) {
  if (minimum == nullptr) {
    fmt::print(report, "   Minimum energy:  none (no point converged)\n");
    return;
  }
  fmt::print(report, "   Minimum energy:  {:.10f}\n", minimum->energy);
  for (std::size_t v = 0; v < variables.size(); ++v)
    fmt::print(report, "     at var {} ({}) = {:.4f} {}\n", v + 1, variables[v].kind, minimum->values[v],
               unit(variables[v].kind));
}

void print_one_variable(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result, const SCAN_POINT_T* minimum,
                        std::ostream& report) {
  fmt::print(report, "   Point      {}         E(Ha)       dE(kcal/mol)\n", column_name(variables[0].kind));
  fmt::print(report, "   -----   ----------   ----------------   ------------\n");
  for (std::size_t p = 0; p < result.points.size(); ++p) {
    const SCAN_POINT_T& point = result.points[p];
    fmt::print(report, "   {:5d}   {:10.4f}   {:>16s}   {:>12s}{}\n", p + 1, point.values[0], energy_text(point.energy, 8),
               energy_text(above(point, minimum), 4), point.converged ? "" : "  **");
  }
}

/// A table over two variables, several columns a block; `cell` makes the text of one point.
template <class CELL>
void print_grid(const SCAN_VARIABLES_T& variables, const std::vector<SCAN_POINT_T>& points, int width, std::ostream& report,
                CELL&& cell) {
  constexpr int columns_per_block = 6;
  const int rows = variables[0].points, columns = variables[1].points;
  for (int first = 0; first < columns; first += columns_per_block) {
    const int last = std::min(columns, first + columns_per_block);
    fmt::print(report, "   {:>10s}", "");
    for (int c = first; c < last; ++c) fmt::print(report, "{:{}.4f}", scan_value(variables[1], c + 1), width);
    fmt::print(report, "\n");
    for (int r = 0; r < rows; ++r) {
      fmt::print(report, "   {:10.4f}", scan_value(variables[0], r + 1));
      for (int c = first; c < last; ++c)
        fmt::print(report, "{:>{}s}", cell(points[static_cast<std::size_t>(r * columns + c)]), width);
      fmt::print(report, "\n");
    }
  }
}

void print_two_variables(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result, const SCAN_POINT_T* minimum,
                         std::ostream& report) {
  const auto failed = [] { return std::string("       **"); };
  fmt::print(report, "   E (Ha) -- rows: var 1, columns: var 2\n");
  print_grid(variables, result.points, 18, report,
             [&](const SCAN_POINT_T& p) { return p.converged ? fmt::format("{:.8f}", p.energy) : failed(); });
  fmt::print(report, "   dE (kcal/mol relative to minimum)\n");
  print_grid(variables, result.points, 12, report, [&](const SCAN_POINT_T& p) {
    if (!p.converged) return failed();
    return &p == minimum ? std::string("      0.0*") : fmt::format("{:.2f}", above(p, minimum));
  });
}

void print_points(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result, const SCAN_POINT_T* minimum,
                  std::ostream& report) {
  fmt::print(report, "   {}-D scan: per-point table\n   Point", variables.size());
  for (const SCAN_VARIABLE_T& variable : variables) fmt::print(report, " {:>10s}", column_name(variable.kind));
  fmt::print(report, "            E(Ha)   dE(kcal/mol)\n");
  for (std::size_t p = 0; p < result.points.size(); ++p) {
    const SCAN_POINT_T& point = result.points[p];
    fmt::print(report, "   {:5d}", p + 1);
    for (const double value : point.values) fmt::print(report, " {:10.4f}", value);
    fmt::print(report, " {:>16s}   {:>12s}{}\n", energy_text(point.energy, 8), energy_text(above(point, minimum), 4),
               point.converged ? "" : "  **");
  }
}

}  // namespace

void print_scan_header(const SCAN_VARIABLES_T& variables, bool relaxed, std::ostream& report) {
  const std::string rule = section_rule();
  fmt::print(report, "\n{}\n  {} PES scan\n{}\n", rule, relaxed ? "Relaxed" : "Rigid", rule);
  fmt::print(report, "   Sweep variables: {},   total grid points: {}\n", variables.size(), grid_point_count(variables));
  for (std::size_t v = 0; v < variables.size(); ++v) {
    const SCAN_VARIABLE_T& variable = variables[v];
    fmt::print(report, "     var {}: {}, row {}, from {:.4f} to {:.4f} {}  ({} points)\n", v + 1, kind_name(variable.kind),
               variable.row, variable.from, variable.to, unit(variable.kind), variable.points);
  }
  fmt::print(report, "{}\n", rule);
}

void SCAN_PRINTER_T::point_begins(long p) {
  const std::string rule(61, '-');
  fmt::print(report_, "\n {}\n {} point {}\n {}\n", rule, relaxed_ ? "Scanopt" : "Scan", p, rule);
  if (relaxed_) fmt::print(report_, "   (constrained optimization)\n");
}

void SCAN_PRINTER_T::point_ends(long p, const SCAN_POINT_T& point) {
  fmt::print(report_, "\n   --- {} point {}: E = {}", relaxed_ ? "scanopt" : "scan", p, energy_text(point.energy, 10));
  if (!std::isnan(point.energy)) fmt::print(report_, " Ha");
  if (relaxed_) fmt::print(report_, " ({} opt steps)", point.steps);
  fmt::print(report_, "\n");
  for (std::size_t v = 0; v < variables_.size(); ++v)
    fmt::print(report_, "         var {} ({}): {:.4f} {}\n", v + 1, variables_[v].kind, point.values[v],
               unit(variables_[v].kind));
  report_.flush();
}

void print_scan_failure(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result, bool relaxed, std::ostream& report) {
  const auto unknown = [](const SCAN_VARIABLE_T& v) { return v.kind != 'R' && v.kind != 'A' && v.kind != 'D'; };
  switch (result.status) {
    case SCAN_STATUS::no_geometry:
      if (relaxed) {
        fmt::print(report, " *** ERROR: scanopt: cannot build geometry / constraints at point {}\n", result.failed_at);
      } else {
        fmt::print(report, " *** ERROR: scan: cannot build geometry at point {}\n", result.failed_at);
      }
      break;
    case SCAN_STATUS::too_many_held:
      fmt::print(report, "   Sweep variables and constraints together are more than {} coordinates to hold.\n",
                 MAX_CONSTRAINTS);
      [[fallthrough]];
    case SCAN_STATUS::refused:
      fmt::print(report, " *** ERROR: scanopt: cannot build geometry / constraints at point {}\n", result.failed_at);
      break;
    case SCAN_STATUS::unknown_kind:
      fmt::print(report, " *** ERROR ({}): unknown sweep kind: {}\n", relaxed ? "scanopt" : "scan",
                 std::find_if(variables.begin(), variables.end(), unknown)->kind);
      break;
    case SCAN_STATUS::done:
      break;
  }
}

void print_scan_summary(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result, bool relaxed, std::ostream& report) {
  const std::string rule = section_rule();
  const SCAN_POINT_T* minimum = lowest(result.points);
  fmt::print(report, "\n{}\n  {} PES scan -- summary\n{}\n", rule, relaxed ? "Relaxed" : "Rigid", rule);
  if (variables.size() == 1) {
    print_one_variable(variables, result, minimum, report);
  } else if (variables.size() == 2) {
    print_two_variables(variables, result, minimum, report);
  } else {
    print_points(variables, result, minimum, report);
  }
  print_minimum(variables, minimum, report);
  bool all = true;
  for (const SCAN_POINT_T& point : result.points) all = all && point.converged;
  if (!all) fmt::print(report, "   ** = {} did not converge at this point.\n", relaxed ? "optimization" : "SCF");
  fmt::print(report, "{}\n", rule);
}

std::string scan_file_text(const SCAN_VARIABLES_T& variables, const SCAN_RESULT_T& result) {
  std::ostringstream file;
  const SCAN_POINT_T* minimum = lowest(result.points);
  fmt::print(file, "#");
  for (const SCAN_VARIABLE_T& variable : variables)
    fmt::print(file, " {}{}({})", variable.kind, variable.row, unit(variable.kind));
  fmt::print(file, " E(Ha) dE(kcal/mol) converged\n");
  for (const SCAN_POINT_T& point : result.points) {
    for (const double value : point.values) fmt::print(file, "{:14.8f} ", value);
    fmt::print(file, "{:20.10f} {:16.8f} {}\n", point.energy, above(point, minimum), point.converged ? 1 : 0);
  }
  return file.str();
}

}  // namespace zentrix::COMPOSITE

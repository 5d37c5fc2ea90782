#include "composite/scan.hpp"

#include <fmt/ostream.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "constants/limits.hpp"
#include "constants/units.hpp"
#include "geometry/internal_coords.hpp"
#include "geometry/zmatrix_values.hpp"
#include "input/input_parser.hpp"
#include "report/stop.hpp"

namespace zentrix::COMPOSITE {
namespace {

using GRADIENTS::CARTESIAN_T;
using ROWS_T = std::vector<INPUT_PARSER::ZMATRIX_ROW_T>;

/// Closer nuclei (bohr) are no molecule.
constexpr double coincidence = 1e-3;

/// False for a kind that is none.
bool set_value(INPUT_PARSER::ZMATRIX_ROW_T& row, char kind, double value) {
  if (kind == 'R') {
    row.bond = value;
  } else if (kind == 'A') {
    row.angle = value;
  } else if (kind == 'D') {
    row.dihedral = value;
  } else {
    return false;
  }
  return true;
}

/// The swept values in their rows.
SCAN_STATUS set_values(const SCAN_VARIABLES_T& variables, const std::vector<double>& values, ROWS_T& rows) {
  for (std::size_t v = 0; v < variables.size(); ++v)
    if (!set_value(rows[static_cast<std::size_t>(variables[v].row) - 1], variables[v].kind, values[v]))
      return SCAN_STATUS::unknown_kind;
  return SCAN_STATUS::done;
}

bool coincident_atoms(const CARTESIAN_T& x) {
  for (Eigen::Index a = 0; a + 3 <= x.size(); a += 3)
    for (Eigen::Index b = 0; b < a; b += 3)
      if ((x.segment<3>(a) - x.segment<3>(b)).norm() < coincidence) return true;
  return false;
}

/// Cartesian positions of the rows, bohr; none when they make no molecule.
std::optional<CARTESIAN_T> positions_of(const ROWS_T& rows, std::ostream& report) {
  std::vector<double> coords(3 * rows.size());
  if (INPUT_PARSER::zmatrix_to_cartesian(rows, coords, report) != 0) return std::nullopt;
  CARTESIAN_T positions = Eigen::Map<const VECTOR>(coords.data(), static_cast<Eigen::Index>(coords.size()));
  if (!positions.allFinite() || coincident_atoms(positions)) return std::nullopt;
  return positions;
}

std::vector<double> values_at(const SCAN_VARIABLES_T& variables, const std::vector<int>& indices) {
  std::vector<double> values;
  for (std::size_t v = 0; v < variables.size(); ++v) values.push_back(scan_value(variables[v], indices[v]));
  return values;
}

/// What a point leaves to its neighbours.
struct TRACE_T {
  SCF::SPIN_MATRICES_T densities;
  ROWS_T rows;
};

/// Equal spin densities (elements closer than this) stay equal for ever. Where a run may break their symmetry, a point
/// behind such a neighbour starts from a guess, which is mixed.
constexpr double equal_densities = 1e-4;

SCF::SPIN_MATRICES_T start_of(const INPUT_PARSER::INPUT_DATA_T& input, const SCF::SPIN_MATRICES_T& neighbour) {
  const bool equal = neighbour.size() == 2 && (neighbour[0] - neighbour[1]).cwiseAbs().maxCoeff() < equal_densities;
  return input.occupation == INPUT_PARSER::OCCUPATION::mix && equal ? SCF::SPIN_MATRICES_T{} : neighbour;
}

/// The neighbour that a point starts from. Kept for every variable: the last point at which all faster variables stood at
/// their first value, which is one step back in this variable.
class NEIGHBOURS_T {
 public:
  explicit NEIGHBOURS_T(std::size_t n_variables) : last_(n_variables) {}
  const std::optional<TRACE_T>& of(const std::vector<int>& indices) const { return last_[moved(indices)]; }
  void keep(const std::vector<int>& indices, const TRACE_T& trace) {
    for (std::size_t v = moved(indices); v < last_.size(); ++v) last_[v] = trace;
  }

 private:
  /// The variable that has just moved on: behind it all stand at their first value.
  static std::size_t moved(const std::vector<int>& indices) {
    std::size_t v = indices.size() - 1;
    while (v > 0 && indices[v] == 1) --v;
    return v;
  }
  std::vector<std::optional<TRACE_T>> last_;
};

/// The value of a coordinate at the positions of the input, bohr or radian.
double value_in_input(const INPUT_PARSER::INPUT_DATA_T& input, const INPUT_PARSER::CONSTRAINT_T& entry) {
  using namespace INTERNAL_COORDS;
  CARTESIAN_T positions(3 * static_cast<Eigen::Index>(input.atoms.size()));
  for (std::size_t a = 0; a < input.atoms.size(); ++a)
    positions.segment<3>(3 * static_cast<Eigen::Index>(a)) =
        Eigen::Map<const Eigen::Vector3d>(input.atoms[a].position.data());
  INTCOORD_T coordinate;
  coordinate.kind = entry.kind == 'B' ? KIND::bond : entry.kind == 'A' ? KIND::angle : KIND::dihedral;
  std::copy(entry.atoms.begin(), entry.atoms.end(), coordinate.atoms.begin());
  return coordinate_value(coordinate, positions);
}

/// What all points of a relaxed scan hold: the swept coordinates, whose targets each point sets, and the coordinates of the
/// input at their values there. A value taken from the starting structure of a point would drift along the scan, because
/// the swept values move coordinates that are not in the Z-matrix.
std::vector<INTERNAL_COORDS::CONSTRAINT_T> held_coordinates(const INPUT_PARSER::INPUT_DATA_T& input) {
  std::vector<INTERNAL_COORDS::CONSTRAINT_T> held;
  for (const INPUT_PARSER::SCAN_VARIABLE_T& variable : input.scan) {
    const INPUT_PARSER::CONSTRAINT_T swept = INPUT_PARSER::swept_coordinate(input, variable);
    held.push_back({swept.kind, swept.atoms, std::nullopt});
  }
  for (const INPUT_PARSER::CONSTRAINT_T& entry : input.constraints)
    held.push_back({entry.kind, entry.atoms, value_in_input(input, entry)});
  return held;
}

/// The value of the swept coordinate at the atoms, bohr or radian, where its row, with the swept values in it, places them.
double target_of(const INPUT_PARSER::SCAN_VARIABLE_T& variable, double value, const ROWS_T& rows) {
  if (variable.kind == 'R') return value * BOHR_PER_ANGSTROM;
  if (variable.kind == 'A') return std::abs(std::remainder(value, 360.0)) * RADIAN_PER_DEGREE;
  const bool turned = OPTIMIZER::past_straight(rows[static_cast<std::size_t>(variable.row) - 1].angle);
  return (turned ? value + 180.0 : value) * RADIAN_PER_DEGREE;
}

/// Walks the grid. `evaluate` gets the rows with the swept values in them, their positions and the neighbour's trace; it
/// fills in energy, convergence and steps, and puts its own trace in the place of the neighbour's. A fault inside a point is
/// a failure of that point.
template <class EVALUATE>
SCAN_RESULT_T walk(const INPUT_PARSER::INPUT_DATA_T& input, SCAN_OBSERVER_T& observer, std::ostream& report,
                   EVALUATE&& evaluate) {
  SCAN_RESULT_T result;
  NEIGHBOURS_T neighbours(input.scan.size());
  const long n_points = grid_point_count(input.scan);
  for (long p = 1; p <= n_points; ++p) {
    observer.point_begins(p);
    const std::vector<int> indices = grid_point_indices(input.scan, p);
    const std::optional<TRACE_T>& start = neighbours.of(indices);
    TRACE_T trace = start ? *start : TRACE_T{{}, input.zmatrix};
    SCAN_POINT_T point;
    point.values = values_at(input.scan, indices);
    result.status = set_values(input.scan, point.values, trace.rows);
    const auto positions = result.status == SCAN_STATUS::done ? positions_of(trace.rows, report) : std::nullopt;
    if (result.status == SCAN_STATUS::done && !positions) result.status = SCAN_STATUS::no_geometry;
    if (result.status == SCAN_STATUS::done) {
      try {
        result.status = evaluate(*positions, point, trace);
      } catch (const run_stopped& stop) {
        fmt::print(report, "{}\n", stop.what());
        point.energy = std::numeric_limits<double>::quiet_NaN();
        point.converged = false;
      }
    }
    if (result.status != SCAN_STATUS::done) {
      result.failed_at = p;
      return result;
    }
    neighbours.keep(indices, trace);
    observer.point_ends(p, point);
    result.points.push_back(point);
  }
  return result;
}

}  // namespace

long grid_point_count(const SCAN_VARIABLES_T& variables) {
  long count = 1;
  for (const INPUT_PARSER::SCAN_VARIABLE_T& variable : variables) count *= variable.points;
  return count;
}

std::vector<int> grid_point_indices(const SCAN_VARIABLES_T& variables, long p) {
  std::vector<int> indices(variables.size());
  long q = p - 1;
  for (std::size_t v = variables.size(); v-- > 0;) {
    indices[v] = static_cast<int>(q % variables[v].points) + 1;
    q /= variables[v].points;
  }
  return indices;
}

double scan_value(const INPUT_PARSER::SCAN_VARIABLE_T& variable, int index) {
  if (variable.points < 2) return variable.from;
  if (index == variable.points) return variable.to;
  return variable.from + (index - 1) * (variable.to - variable.from) / (variable.points - 1);
}

SCAN_RESULT_T rigid_scan(const INPUT_PARSER::INPUT_DATA_T& input, const SURFACE_MAKER_T& make_surface,
                         SCAN_OBSERVER_T& observer, std::ostream& report) {
  return walk(input, observer, report, [&](const CARTESIAN_T& positions, SCAN_POINT_T& point, TRACE_T& trace) {
    const auto surface = make_surface(positions);
    surface->start_from(start_of(input, trace.densities));
    const GRADIENTS::SURFACE_POINT_T evaluated = surface->energy(positions);
    point.energy = evaluated.energy;
    point.converged = evaluated.converged;
    trace.densities = surface->converged_densities();
    return SCAN_STATUS::done;
  });
}

SCAN_RESULT_T relaxed_scan(const INPUT_PARSER::INPUT_DATA_T& input, const SURFACE_MAKER_T& make_surface,
                           OPTIMIZER::OPTIMIZER_OBSERVER_T& optimizer_observer, SCAN_OBSERVER_T& observer,
                           std::ostream& report) {
  OPTIMIZER::OPTIMIZER_SETTINGS_T settings = OPTIMIZER::settings_from(input);
  settings.constraints = held_coordinates(input);
  return walk(input, observer, report, [&](const CARTESIAN_T& positions, SCAN_POINT_T& point, TRACE_T& trace) {
    if (settings.constraints.size() > MAX_CONSTRAINTS) return SCAN_STATUS::too_many_held;
    for (std::size_t v = 0; v < input.scan.size(); ++v)
      settings.constraints[v].target = target_of(input.scan[v], point.values[v], trace.rows);
    const auto surface = make_surface(positions);
    surface->start_from(start_of(input, trace.densities));
    const OPTIMIZER::OPTIMIZATION_T optimum = OPTIMIZER::optimize(*surface, settings, optimizer_observer);
    if (optimum.outcome == OPTIMIZER::OUTCOME::refused) return SCAN_STATUS::refused;
    point.energy = optimum.point.energy;
    point.converged = optimum.outcome == OPTIMIZER::OUTCOME::converged;
    point.steps = optimum.steps;
    if (point.converged) {
      trace.densities = surface->converged_densities();
      trace.rows = OPTIMIZER::zmatrix_at(trace.rows, optimum.positions);
    }
    return SCAN_STATUS::done;
  });
}

}  // namespace zentrix::COMPOSITE

#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <vector>

#include "geometry/optimizer.hpp"
#include "gradients/scf_surface.hpp"
#include "input/input_data.hpp"

// Potential-energy-surface scans over one to four Z-matrix coordinates: rigid (single energies with everything else at its
// input value) and relaxed (everything else optimised at each point).

namespace zentrix::COMPOSITE {

using SCAN_VARIABLES_T = std::vector<INPUT_PARSER::SCAN_VARIABLE_T>;

/// Number of grid points: the product over the variables.
long grid_point_count(const SCAN_VARIABLES_T& variables);
/// Indices (from 1) of point p (from 1), one per variable; the last variable varies fastest.
std::vector<int> grid_point_indices(const SCAN_VARIABLES_T& variables, long p);
/// Value of a variable at an index from 1, angstrom or degree; both ends are exact.
double scan_value(const INPUT_PARSER::SCAN_VARIABLE_T& variable, int index);

struct SCAN_POINT_T {
  std::vector<double> values;  ///< of the variables, angstrom or degree
  double energy = 0.0;         ///< hartree; not a number where a fault left none
  bool converged = true;
  int steps = 0;  ///< of the optimisation
};

enum class SCAN_STATUS { done, no_geometry, unknown_kind, too_many_held, refused };

struct SCAN_RESULT_T {
  SCAN_STATUS status = SCAN_STATUS::done;
  long failed_at = 0;                ///< point that ended the job
  std::vector<SCAN_POINT_T> points;  ///< the completed ones
};

/// What a scan tells while it goes on; this base says nothing.
class SCAN_OBSERVER_T {
 public:
  virtual ~SCAN_OBSERVER_T() = default;
  virtual void point_begins(long /*p*/) {}
  virtual void point_ends(long /*p*/, const SCAN_POINT_T&) {}
};

/// A surface whose molecule stands at the given positions, bohr.
using SURFACE_MAKER_T = std::function<std::unique_ptr<GRADIENTS::SCF_SURFACE_T>(const GRADIENTS::CARTESIAN_T&)>;

/// Energies at all points, in order. Every point starts from the density of a neighbour on the grid: the one before it or,
/// where a slower variable has just moved on, the one a step back in that variable. `report` receives the reader's own
/// message when a geometry cannot be built, and the lines of a fault inside a point.
SCAN_RESULT_T rigid_scan(const INPUT_PARSER::INPUT_DATA_T& input, const SURFACE_MAKER_T& make_surface,
                         SCAN_OBSERVER_T& observer, std::ostream& report);

/// Optimised energies at all points, the swept coordinates held at the values of the point and the constraints of the input
/// at those of its geometry. Every point starts from the optimum (structure and density) of a neighbour as above, with the
/// swept values replaced; a neighbour that did not converge hands on what it started from.
SCAN_RESULT_T relaxed_scan(const INPUT_PARSER::INPUT_DATA_T& input, const SURFACE_MAKER_T& make_surface,
                           OPTIMIZER::OPTIMIZER_OBSERVER_T& optimizer_observer, SCAN_OBSERVER_T& observer,
                           std::ostream& report);

}  // namespace zentrix::COMPOSITE

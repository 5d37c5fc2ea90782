#pragma once

#include "linalg/matrix.hpp"

// What minimisations and saddle searches tell of a step, and when they are done.

namespace zentrix::OPTIMIZER {

/// All four below their limits: converged. Hartree and bohr (radian) in the coordinates of the optimiser.
struct THRESHOLDS_T {
  double max_gradient = 4.5e-4;
  double rms_gradient = 3e-4;
  double max_step = 1.8e-3;
  double rms_step = 1.2e-3;
};

/// One row of the table.
struct STEP_ROW_T {
  int step = 0;
  double energy = 0.0;
  double energy_change = 0.0;  ///< from the previous row
  double max_gradient = 0.0;
  double rms_gradient = 0.0;
  double max_step = 0.0;  ///< of the step that led here; step 1 has none
  double rms_step = 0.0;
};

/// The row of a point with this gradient, reached by the step `dq`, both in the coordinates of the optimiser.
STEP_ROW_T step_row(int step, double energy, double energy_change, const VECTOR& gradient, const VECTOR& dq);

/// All four strictly below.
bool below(const STEP_ROW_T& row, const THRESHOLDS_T& thresholds);

}  // namespace zentrix::OPTIMIZER

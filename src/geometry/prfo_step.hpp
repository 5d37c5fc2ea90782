#pragma once

#include "linalg/matrix.hpp"

namespace zentrix::OPTIMIZER {

struct PRFO_STEP_T {
  VECTOR step;           ///< components along the eigenvectors
  bool limited = false;  ///< shortened to the trust radius
};

/// Partitioned rational-function step in the basis of the Hessian's eigenvectors: up along the eigenvector `followed`, down
/// along all others, each partition with its own shift (A. Banerjee, N. Adams, J. Simons, R. Shepard, J. Phys. Chem. 89
/// (1985) 52). When it is longer than `trust`, both partitions are scaled by one metric factor until the length is right
/// (E. Besalu, J. M. Bofill, Theor. Chem. Acc. 100 (1998) 265), which keeps the shape of the step sensible.
/// `gradient`: components along the eigenvectors.
PRFO_STEP_T prfo_step(const VECTOR& eigenvalues, const VECTOR& gradient, Eigen::Index followed, double trust);

}  // namespace zentrix::OPTIMIZER

#pragma once

#include "scf/scf_observer.hpp"

namespace zentrix::SCF {

/// The convergence test of the loop: energy change, density change and orbital gradient below their tolerances in a number
/// of consecutive iterations, counted only after the first few.
class CONVERGENCE_T {
 public:
  /// Judges one iteration; tells the observer about suspicious ones. True: the run has converged.
  bool test(const SCF_ROW_T& row, const SCF_SETTINGS_T& settings, SCF_OBSERVER_T& observer);

 private:
  int consecutive_ = 0;
  double previous_change_ = 0.0;
};

}  // namespace zentrix::SCF

#pragma once

#include "scf/scf_observer.hpp"

namespace zentrix::SCF {

/// The convergence test of the loop: energy change, density change and orbital gradient below their tolerances in a number
/// of consecutive iterations, counted only after the first few. With two channels a run also ends ("softly") when the
/// orbital gradient has long been at its tolerance and only the density residual is not: that is the noise floor.
class CONVERGENCE_T {
 public:
  explicit CONVERGENCE_T(bool soft_end) : soft_end_(soft_end) {}
  /// Judges one iteration; tells the observer about suspicious ones. True: the run has converged.
  bool test(const SCF_ROW_T& row, const SCF_SETTINGS_T& settings, SCF_OBSERVER_T& observer);

 private:
  bool hard(const SCF_ROW_T& row, const SCF_SETTINGS_T& settings);
  bool soft(const SCF_ROW_T& row, const SCF_SETTINGS_T& settings);

  bool soft_end_;
  int consecutive_ = 0;
  int soft_consecutive_ = 0;
  double previous_change_ = 0.0;
};

}  // namespace zentrix::SCF

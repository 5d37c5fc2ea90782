#pragma once

#include <deque>

#include "scf/scf.hpp"

namespace zentrix::SCF {

/// Direct inversion in the iterative subspace (P. Pulay, Chem. Phys. Lett. 73 (1980) 393; J. Comput. Chem. 3 (1982) 556)
/// with the commutator FPS - SPF as error. All spin channels share one set of coefficients.
class DIIS_T {
 public:
  static constexpr int max_entries = 8;
  static constexpr int max_pruned = 6;  ///< entries dropped in one extrapolation

  explicit DIIS_T(double condition_max) : condition_max_(condition_max) {}

  /// Stores the Fock matrices of an iteration with their errors; the oldest entry leaves when there are eight.
  void push(const SPIN_MATRICES_T& fock, const SPIN_MATRICES_T& error);
  void reset() { entries_.clear(); }
  int size() const { return static_cast<int>(entries_.size()); }

  /// Outcome of one extrapolation.
  struct OUTCOME_T {
    bool extrapolated = false;  ///< at least two entries took part and the equations had a solution
    int pruned = 0;             ///< oldest entries dropped for good
    double ratio = 0.0;         ///< last condition ratio seen before the subspace was accepted or given up
  };
  /// Replaces `fock` by sum c_i F_i. Entries are dropped, oldest first, while the condition ratio of the bordered matrix
  /// exceeds the limit. A singular system leaves the newest Fock matrices.
  OUTCOME_T extrapolate(SPIN_MATRICES_T& fock);

  /// The bordered matrix of the current entries: inner products of the errors, a row and column of -1, 0 in the corner.
  MATRIX bordered_matrix() const;

 private:
  struct ENTRY_T {
    SPIN_MATRICES_T fock;
    SPIN_MATRICES_T error;
  };
  double condition_max_;
  std::deque<ENTRY_T> entries_;
};

}  // namespace zentrix::SCF

#pragma once

#include <deque>
#include <vector>

#include "scf/scf.hpp"

namespace zentrix::SCF {

/// Direct inversion in the iterative subspace (P. Pulay, Chem. Phys. Lett. 73 (1980) 393; J. Comput. Chem. 3 (1982) 556)
/// with the commutator FPS - SPF as error. All spin channels share one set of coefficients. A run that makes no progress
/// may ask for coefficients that lower the energy instead (`interpolate`).
class DIIS_T {
 public:
  static constexpr int max_entries = 8;
  static constexpr int max_pruned = 6;  ///< entries dropped in one extrapolation

  explicit DIIS_T(double condition_max) : condition_max_(condition_max) {}

  /// Stores the Fock matrices of an iteration with their densities and errors (F and D symmetric, errors antisymmetric); the
  /// oldest entry leaves when there are eight.
  void push(const SPIN_MATRICES_T& fock, const SPIN_MATRICES_T& density, const SPIN_MATRICES_T& error);
  void reset() { entries_.clear(); }
  int size() const { return static_cast<int>(entries_.size()); }

  /// Outcome of one extrapolation.
  struct OUTCOME_T {
    bool extrapolated = false;  ///< at least two entries took part and the equations had a solution
    int pruned = 0;             ///< oldest entries dropped for good
    double ratio = 0.0;         ///< last condition ratio seen before the subspace was accepted or given up
  };
  /// Replaces `fock` by sum c_i F_i. Entries are dropped, oldest first, while the condition ratio of the errors' inner
  /// products exceeds the limit. A singular system leaves the newest Fock matrices, and so does a last pair whose errors are
  /// multiples of one matrix, unless they are opposed.
  OUTCOME_T extrapolate(SPIN_MATRICES_T& fock);

  /// Replaces `fock` by sum c_i F_i with c_i >= 0, sum c_i = 1 that minimise the energy to second order about the newest
  /// entry (ADIIS; X. Hu, W. Yang, J. Chem. Phys. 132 (2010) 054109). Needs two entries; false: nothing was changed.
  bool interpolate(SPIN_MATRICES_T& fock) const;

  /// The bordered matrix of the current entries: inner products of the errors, a row and column of -1, 0 in the corner.
  MATRIX bordered_matrix() const;

 private:
  /// Lower triangles, column after column, one vector a channel: the history is most of what a direct run keeps in memory.
  /// Below the diagonal the densities are doubled and the errors times sqrt 2, so that scalar products of vectors are those
  /// of the matrices, symmetric or antisymmetric.
  struct ENTRY_T {
    std::vector<VECTOR> fock;
    std::vector<VECTOR> density;
    std::vector<VECTOR> error;
  };
  /// Errors that are multiples of one matrix (two functions alone, as in H2) are one vector to the guard. Between two
  /// opposed ones lies the stationary point; an iteration without extrapolation passes over it, in a long bond by more each
  /// time.
  void go_between_opposed(const MATRIX& b, SPIN_MATRICES_T& fock) const;
  void combine(const VECTOR& coefficients, SPIN_MATRICES_T& fock) const;

  double condition_max_;
  std::deque<ENTRY_T> entries_;
};

}  // namespace zentrix::SCF

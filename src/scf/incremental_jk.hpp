#pragma once

#include "integrals/integrals_2e.hpp"
#include "scf/scf.hpp"

namespace zentrix::SCF {

/// Coulomb and exchange matrices of a sequence of densities. J and K are linear in the density, so that without a store the
/// matrices of the change since the last build are added to the last ones: as an SCF converges the change, and with it what
/// screening leaves to be computed, becomes small (J. Almloef, K. Faegri, K. Korsell, J. Comput. Chem. 3 (1982) 385). What
/// each build neglects adds up, so every so often the matrices are built in full.
class INCREMENTAL_JK_T {
 public:
  explicit INCREMENTAL_JK_T(const INTEGRALS_2E::JK_BUILDER& jk) : jk_(jk) {}
  /// J of the sum of the densities, one matrix, and K of each (none without `exchange`).
  const INTEGRALS_2E::JK_RESULT_T& build(const SPIN_MATRICES_T& densities, bool exchange);

 private:
  [[nodiscard]] bool change_is_small(const SPIN_MATRICES_T& densities) const;
  INTEGRALS_2E::JK_RESULT_T build_for(const SPIN_MATRICES_T& densities, bool exchange) const;

  const INTEGRALS_2E::JK_BUILDER& jk_;
  SPIN_MATRICES_T last_densities_;
  INTEGRALS_2E::JK_RESULT_T last_;
  int increments_ = 0;  ///< since the last full build
};

}  // namespace zentrix::SCF

#pragma once

#include <memory>
#include <vector>

#include "scf/scf_observer.hpp"

namespace zentrix::SCF {

/// Decides after every diagonalisation which orbitals of a channel are occupied.
class OCCUPATION_RULE_T {
 public:
  virtual ~OCCUPATION_RULE_T() = default;
  /// On entry the columns of `channel` stand in ascending energy; on return the occupied ones lead, each group in ascending
  /// energy, and `occupations` holds their fractions. True: the orbitals were changed by hand and the extrapolation has to
  /// start anew. Iteration 0 is the diagonalised guess.
  [[nodiscard]] virtual bool occupy(int iteration, std::size_t spin, SPIN_CHANNEL_T& channel) = 0;
};

/// Whether the beta HOMO and LUMO of the start are to be mixed: a singlet that may break its spin symmetry needs a start
/// that has broken it.
bool starts_mixed(const MOLECULE_T& molecule, const SCF_SETTINGS_T& settings, const SCF_START_T& start);

/// The rule of a run: fractional shells of an atom when the settings name them; lowest orbitals for one channel; one of the
/// four controls of unrestricted runs for two. `overlap` and `observer` must outlive the rule.
std::unique_ptr<OCCUPATION_RULE_T> make_occupation_rule(const MOLECULE_T& molecule, const SCF_SETTINGS_T& settings,
                                                        const SCF_START_T& start, const MATRIX& overlap,
                                                        SCF_OBSERVER_T& observer);

}  // namespace zentrix::SCF

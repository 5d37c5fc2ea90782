#pragma once

#include <string>
#include <vector>

#include "input/input_data.hpp"
#include "scf/scf.hpp"

namespace zentrix::SCF {

/// What the construction of a guess tells while it goes on; silent by itself (scf_report.hpp has the printing one).
class GUESS_OBSERVER_T {
 public:
  virtual ~GUESS_OBSERVER_T() = default;
  virtual void building_sad() {}
  virtual void sad_unavailable() {}
  struct ATOM_RUN_T {
    int z = 0;
    int n_electrons = 0;
    int n_alpha = 0;
    int n_beta = 0;
    int multiplicity = 1;
    int n_core = 0;  ///< electrons inside an effective core potential, 0 without one
  };
  virtual void atom_starts(const ATOM_RUN_T&) {}
  virtual void atom_not_converged(int /*z*/) {}
  virtual void atom_failed(int /*z*/) {}
  virtual void shell_mismatch(int /*z*/) {}
  virtual void assembled(double /*alpha_factor*/, double /*beta_factor*/) {}
  virtual void guess_made(const SCF_START_T&) {}
  virtual void pre_convergence_begins() {}
  virtual void pre_convergence_ends(const SCF_RESULT_T&) {}
};

/// The start of a run without a previous density. Restricted runs take the core Hamiltonian unless `sad` is asked for,
/// unrestricted ones the superposition of atomic densities unless `core` is. A superposition that cannot be built falls back
/// to the core Hamiltonian. The atoms' runs keep their integrals in memory within the limit.
SCF_START_T initial_guess(const MOLECULE_T& molecule, const MATRIX& overlap, INPUT_PARSER::GUESS wish, int memory_limit_mb,
                          GUESS_OBSERVER_T& observer);

/// Superposition of atomic densities (J. H. Van Lenthe et al., J. Comput. Chem. 27 (2006) 926): one spin-unrestricted run
/// per element in its ground state with spherically averaged open shells, its two densities on every atom of the element,
/// each spin scaled to the molecule's electron count. True on success; `alpha` and `beta` are n_basis x n_basis.
[[nodiscard]] bool superposition_of_atoms(const MOLECULE_T& molecule, const MATRIX& overlap, int memory_limit_mb,
                                          MATRIX& alpha, MATRIX& beta, GUESS_OBSERVER_T& observer);

}  // namespace zentrix::SCF

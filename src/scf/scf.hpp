#pragma once

#include <memory>
#include <string>
#include <vector>

#include "input/input_data.hpp"
#include "integrals/integrals_2e.hpp"
#include "integrals/one_electron.hpp"
#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// Front door of the self-consistent field: one loop for one spin channel with occupation 2 (restricted) and two channels
// with occupation 1 (unrestricted). With D_s = g C_occ C_occ^T, D = sum_s D_s and exact-exchange fraction a,
//   F_s = H + J(D) - (a/g) K(D_s) + V_s.

namespace zentrix::SCF {

/// One matrix per spin channel (1 or 2).
using SPIN_MATRICES_T = std::vector<MATRIX>;

/// Everything of one spin channel, over the run's basis functions.
struct SPIN_CHANNEL_T {
  int n_occupied = 0;
  MATRIX density;   ///< g C_occ C_occ^T
  MATRIX orbitals;  ///< columns, ascending energy
  VECTOR energies;  ///< hartree
};

/// Parts of the energy, hartree.
struct ENERGY_PARTS_T {
  double electronic = 0.0;  ///< 1/2 sum_s tr D_s (H + F_s), corrected for terms not linear in D
  double xc = 0.0;          ///< part of `electronic` that is exchange-correlation
  double nuclear = 0.0;
  double total() const { return electronic + nuclear; }
};

struct SCF_RESULT_T {
  bool converged = false;
  int iterations = 0;
  double occupation = 2.0;  ///< g: 2 for the one channel of a closed shell, 1 for each of two
  std::vector<SPIN_CHANNEL_T> channels;
  ENERGY_PARTS_T energy;
  MATRIX total_density() const;
  bool unrestricted() const { return channels.size() == 2; }
};

/// The automatic level shift: this many hartree once so many iterations have passed without convergence.
inline constexpr double AUTOMATIC_SHIFT = 0.2;
inline constexpr int AUTOMATIC_SHIFT_AFTER = 100;

/// Settings of one run of the loop; the defaults are those of the input record.
struct SCF_SETTINGS_T {
  int max_iterations = 150;
  double energy_tolerance = 1e-8;    ///< hartree
  double density_tolerance = 1e-6;   ///< largest element of the density change
  double gradient_tolerance = 1e-5;  ///< ||FPS - SPF||, Frobenius
  bool diis = true;
  double diis_condition_max = 1e10;
  INPUT_PARSER::LEVEL_SHIFT level_shift_mode = INPUT_PARSER::LEVEL_SHIFT::automatic;
  double level_shift = 0.0;  ///< hartree
  double damping = 0.0;      ///< weight of the previous density
  int min_iterations = 5;
  int n_converged = 2;
  INPUT_PARSER::OCCUPATION occupation = INPUT_PARSER::OCCUPATION::automatic;
  int eri_memory_limit_mb = 4096;
};
SCF_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input);

/// What belongs to one geometry and is dropped with it, so that nothing can be stale at another one.
struct GEOMETRY_DATA_T {
  GEOMETRY_DATA_T(const MOLECULE_T& molecule, INTEGRALS_1E::ONE_ELECTRON_T one_electron);
  MOLECULE_T molecule;
  INTEGRALS_1E::ONE_ELECTRON_T one_electron;
  INTEGRALS_2E::JK_BUILDER jk;
  double nuclear_repulsion = 0.0;  ///< hartree
};

/// A contribution to the energy as the loop sees it: adds its part to every channel's Fock matrix and to the energy parts.
class FOCK_TERM_T {
 public:
  virtual ~FOCK_TERM_T() = default;
  /// `densities` hold one matrix per channel (factor g included); `fock` has the same number, to be added to.
  virtual void add(const SPIN_MATRICES_T& densities, SPIN_MATRICES_T& fock, ENERGY_PARTS_T& energy) = 0;
};

/// Where a run starts from.
struct SCF_START_T {
  SPIN_MATRICES_T densities;  ///< empty: core Hamiltonian
  std::string guess_name = "core Hamiltonian";
};

class SCF_OBSERVER_T;  // scf/scf_observer.hpp: printing (scf_report.hpp) or silent

/// Runs the loop to convergence or to its iteration limit; non-convergence is told by the result, LAPACK failures stop the
/// run.
SCF_RESULT_T run_scf(GEOMETRY_DATA_T& geometry, const std::vector<std::unique_ptr<FOCK_TERM_T>>& terms,
                     const SCF_SETTINGS_T& settings, const SCF_START_T& start, SCF_OBSERVER_T& observer);

/// The terms of Hartree-Fock at a geometry: one-electron part, Coulomb and exchange.
std::vector<std::unique_ptr<FOCK_TERM_T>> hartree_fock_terms(GEOMETRY_DATA_T& geometry);

}  // namespace zentrix::SCF

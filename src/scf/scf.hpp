#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dft/functional_catalogue.hpp"
#include "dft/grid.hpp"
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
  VECTOR occupations;  ///< n_occupied fractions f_i, all 1 except in evenly filled shells
  MATRIX density;      ///< g sum_i f_i c_i c_i^T over the occupied orbitals
  MATRIX orbitals;     ///< columns: the occupied ones, then the others, each group in ascending energy
  VECTOR energies;     ///< hartree
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
  double s_squared = 0.0;             ///< <S^2> of the determinant; 0 for one channel
  SPIN_MATRICES_T densities() const;  ///< one per channel
  MATRIX total_density() const;       ///< their sum
  bool unrestricted() const { return channels.size() == 2; }
};

/// The automatic level shift: this many hartree once so many iterations have passed without convergence.
inline constexpr double AUTOMATIC_SHIFT = 0.2;
inline constexpr int AUTOMATIC_SHIFT_AFTER = 100;

/// An unrestricted run also ends when its orbital gradient has stayed below its tolerance this long.
inline constexpr int SOFT_ITERATIONS = 12;
/// Iterations of the automatic occupation control that follow the largest overlap.
inline constexpr int MOM_ITERATIONS = 5;

/// Shells of one spin of an atom: filling[l][k] is the fraction (0 to 1) in each of the 2l + 1 orbitals of the k-th shell of
/// angular momentum l.
using SHELL_FILLING_T = std::vector<std::vector<double>>;

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
  std::vector<SHELL_FILLING_T> atomic_filling;  ///< one per channel for an atom with fractional shells, otherwise empty
  int eri_memory_limit_mb = 4096;
};
SCF_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input);

/// What belongs to one geometry and is dropped with it, so that nothing can be stale at another one.
struct GEOMETRY_DATA_T {
  GEOMETRY_DATA_T(const MOLECULE_T& molecule, INTEGRALS_1E::ONE_ELECTRON_T one_electron);
  MOLECULE_T molecule;
  INTEGRALS_1E::ONE_ELECTRON_T one_electron;  ///< S and H_core; T and V, which no SCF asks for, are dropped
  INTEGRALS_2E::JK_BUILDER jk;
  DFT_GRID::MOLECULAR_GRID_T grid;  ///< empty unless a density functional needs it
  double nuclear_repulsion = 0.0;   ///< hartree
};

/// A contribution to the energy as the loop sees it: adds its part to every channel's Fock matrix and to the energy parts.
class FOCK_TERM_T {
 public:
  virtual ~FOCK_TERM_T() = default;
  /// `densities` hold one matrix per channel (factor g included); `fock` has the same number, to be added to.
  virtual void add(const SPIN_MATRICES_T& densities, SPIN_MATRICES_T& fock, ENERGY_PARTS_T& energy) = 0;
  /// Whether the term is cheaper with the integrals kept in memory.
  virtual bool wants_stored_integrals() const { return false; }
};

/// Where a run starts from.
struct SCF_START_T {
  SPIN_MATRICES_T densities;  ///< one per channel; empty: core Hamiltonian
  std::string guess_name = "core Hamiltonian";
  bool from_converged_run = false;  ///< the densities are those of a finished run nearby, not a guess
};

class SCF_OBSERVER_T;  // scf/scf_observer.hpp: printing (scf_report.hpp) or silent

/// Runs the loop to convergence or to its iteration limit; non-convergence is told by the result, LAPACK failures stop the
/// run.
SCF_RESULT_T run_scf(GEOMETRY_DATA_T& geometry, const std::vector<std::unique_ptr<FOCK_TERM_T>>& terms,
                     const SCF_SETTINGS_T& settings, const SCF_START_T& start, SCF_OBSERVER_T& observer);

/// <S^2> = S_z (S_z + 1) + n_beta - sum_ij |<i alpha|j beta>|^2 of two channels of whole orbitals; 0 for one channel.
double spin_squared(const std::vector<SPIN_CHANNEL_T>& channels, const MATRIX& overlap);
/// S (S + 1) with S = (n_alpha - n_beta)/2.
double exact_spin_squared(const std::vector<SPIN_CHANNEL_T>& channels);

/// The terms of a method at a geometry: one-electron part, Coulomb and exchange with the functional's fraction of exact
/// exchange, and the exchange-correlation part on the geometry's grid for a density functional. Basis-function values on the
/// grid are kept in what the integral store leaves of `memory_limit_mb`, or of half the machine's memory when that is less.
std::vector<std::unique_ptr<FOCK_TERM_T>> energy_terms(GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                                                       int memory_limit_mb);
/// Those of Hartree-Fock.
std::vector<std::unique_ptr<FOCK_TERM_T>> hartree_fock_terms(GEOMETRY_DATA_T& geometry);

}  // namespace zentrix::SCF

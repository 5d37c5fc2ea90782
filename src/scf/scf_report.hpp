#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "scf/guess.hpp"
#include "scf/scf_observer.hpp"

namespace zentrix::SCF {

/// The observer that writes the report of a run: set-up, iteration table, warnings, diagnostics, final energies, orbitals.
class SCF_PRINTER_T : public SCF_OBSERVER_T {
 public:
  /// `functional`: name of the density functional, empty for Hartree-Fock.
  explicit SCF_PRINTER_T(std::ostream& report, std::string functional = "")
      : report_(report), functional_(std::move(functional)) {}
  void started(const GEOMETRY_DATA_T& geometry, const SCF_START_T& start) override;
  void small_overlap_eigenvalue(int index, double value) override;
  void integral_mode(const INTEGRALS_2E::JK_MODE_T& mode, int channels, bool wanted) override;
  void table_begins(const SCF_SETTINGS_T& settings, const std::vector<SPIN_CHANNEL_T>& channels) override;
  void level_shift_activated() override;
  void starting_orbitals_mixed() override;
  void overlap_reordered(int orbitals, std::size_t spin) override;
  void swap_followed(std::size_t spin, double smallest_overlap) override;
  void swap_mixed() override;
  void oscillation_reset(const SCF_ROW_T& row, double previous_density_change) override;
  void soft_convergence(const SCF_ROW_T& row) override;
  void pruned(int count, double ratio, int channels) override;
  void row(const SCF_ROW_T& row) override;
  void energy_only_convergence(const SCF_ROW_T& row) override;
  void energy_jump(const SCF_ROW_T& row, double previous_change) override;
  void finished(const SCF_RESULT_T& result, const SCF_SETTINGS_T& settings, const SCF_ROW_T& last) override;

 private:
  void print_final_block(const SCF_RESULT_T& result);

  std::ostream& report_;
  std::string functional_;
  bool core_guess_ = false;
};

/// The observer that writes what the construction of the initial guess has to say.
class GUESS_PRINTER_T : public GUESS_OBSERVER_T {
 public:
  explicit GUESS_PRINTER_T(std::ostream& report) : report_(report) {}
  void building_sad() override;
  void sad_unavailable() override;
  void atom_starts(const ATOM_RUN_T& atom) override;
  void atom_not_converged(int z) override;
  void atom_failed(int z) override;
  void shell_mismatch(int z) override;
  void assembled(double alpha_factor, double beta_factor) override;
  void guess_made(const SCF_START_T& start) override;
  void pre_convergence_begins() override;
  void pre_convergence_ends(const SCF_RESULT_T& result) override;

 private:
  std::ostream& report_;
};

void print_grid_heading(std::ostream& report);
/// The line of <S^2>.
void print_spin(const SCF_RESULT_T& result, std::ostream& report);
/// Orbital energies of one channel, several a line, occupied ones first and marked.
void print_orbital_energies(const SPIN_CHANNEL_T& channel, std::ostream& report);

}  // namespace zentrix::SCF

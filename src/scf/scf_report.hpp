#pragma once

#include <iosfwd>

#include "scf/scf_observer.hpp"

namespace zentrix::SCF {

/// The observer that writes the report of a run: set-up, iteration table, warnings, diagnostics, final energies, orbitals.
class SCF_PRINTER_T : public SCF_OBSERVER_T {
 public:
  explicit SCF_PRINTER_T(std::ostream& report) : report_(report) {}
  void started(const GEOMETRY_DATA_T& geometry, const SCF_START_T& start) override;
  void small_overlap_eigenvalue(int index, double value) override;
  void integral_mode(const INTEGRALS_2E::JK_MODE_T& mode, int channels) override;
  void table_begins(const SCF_SETTINGS_T& settings) override;
  void level_shift_activated() override;
  void pruned(int count, double ratio, int channels) override;
  void row(const SCF_ROW_T& row) override;
  void energy_only_convergence(const SCF_ROW_T& row) override;
  void energy_jump(const SCF_ROW_T& row, double previous_change) override;
  void finished(const SCF_RESULT_T& result, const SCF_SETTINGS_T& settings, const SCF_ROW_T& last) override;

 private:
  std::ostream& report_;
  bool core_guess_ = false;
};

/// Orbital energies of one channel, several a line, occupied ones first and marked.
void print_orbital_energies(const SPIN_CHANNEL_T& channel, std::ostream& report);

}  // namespace zentrix::SCF

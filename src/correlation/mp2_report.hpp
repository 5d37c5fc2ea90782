#pragma once

#include <iosfwd>
#include <string>

#include "correlation/mp2.hpp"

namespace zentrix::CORRELATION {

/// The observer that writes the report of an MP2 or UMP2 energy: dimensions, steps, channel energies.
class MP2_PRINTER_T : public MP2_OBSERVER_T {
 public:
  explicit MP2_PRINTER_T(std::ostream& report) : report_(report) {}
  void orbitals_counted(const MP2_DIMENSIONS_T& sizes) override;
  void sizes_planned(const MP2_DIMENSIONS_T& sizes) override;
  void batches_planned(const MP2_DIMENSIONS_T& sizes) override;
  void half_transformation(const MP2_DIMENSIONS_T& sizes, int batch) override;
  void pair_energies(const MP2_DIMENSIONS_T& sizes, int batch) override;
  void finished(const MP2_DIMENSIONS_T& sizes, const MP2_RESULT_T& result) override;

 private:
  std::ostream& report_;
};

/// The count of the automatic frozen core.
void print_frozen_core(int orbitals, std::ostream& report);
/// Told when `method` is the restricted name of what runs with unrestricted orbitals.
void note_unrestricted(const std::string& method, bool unrestricted, std::ostream& report);
void print_heading(bool unrestricted, std::ostream& report);
/// The energy block: parts, correlation, total. `scf_energy` in hartree.
void print_energies(const MP2_RESULT_T& result, double scf_energy, std::ostream& report);
/// Correlation and total energy alone, for energies inside other jobs.
void print_brief(const MP2_RESULT_T& result, double scf_energy, std::ostream& report);

}  // namespace zentrix::CORRELATION

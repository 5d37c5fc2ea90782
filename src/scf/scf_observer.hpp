#pragma once

#include <string>
#include <vector>

#include "integrals/integrals_2e.hpp"
#include "linalg/matrix.hpp"
#include "scf/scf.hpp"

namespace zentrix::SCF {

/// One row of the iteration table.
struct SCF_ROW_T {
  int iteration = 0;
  double energy = 0.0;  ///< hartree
  double energy_change = 0.0;
  double density_change = 0.0;  ///< largest element
  double gradient = 0.0;        ///< ||FPS - SPF||
  bool extrapolated = false;
};

/// What a run tells while it goes on. The loop knows nothing of texts: the printing observer (scf_report.hpp) has them, and
/// this base, which says nothing, serves runs inside other computations.
class SCF_OBSERVER_T {
 public:
  virtual ~SCF_OBSERVER_T() = default;
  virtual void started(const GEOMETRY_DATA_T&, const SCF_START_T&) {}
  virtual void small_overlap_eigenvalue(int /*index*/, double /*value*/) {}
  virtual void integral_mode(const INTEGRALS_2E::JK_MODE_T&, int /*channels*/,
                             bool /*wanted: a term reads stored integrals*/) {}
  virtual void table_begins(const SCF_SETTINGS_T&, const std::vector<SPIN_CHANNEL_T>&) {}
  virtual void level_shift_activated() {}
  virtual void starting_orbitals_mixed() {}
  virtual void overlap_reordered(int /*orbitals*/, std::size_t /*spin*/) {}
  virtual void swap_followed(std::size_t /*spin*/, double /*smallest_overlap*/) {}
  virtual void swap_mixed() {}
  virtual void oscillation_reset(const SCF_ROW_T&, double /*previous_density_change*/) {}
  virtual void soft_convergence(const SCF_ROW_T&) {}
  virtual void pruned(int /*count*/, double /*ratio*/, int /*channels*/) {}
  virtual void row(const SCF_ROW_T&) {}
  virtual void energy_only_convergence(const SCF_ROW_T&) {}
  virtual void energy_jump(const SCF_ROW_T&, double /*previous_change*/) {}
  virtual void finished(const SCF_RESULT_T&, const SCF_SETTINGS_T&, const SCF_ROW_T& /*last*/) {}
};

}  // namespace zentrix::SCF

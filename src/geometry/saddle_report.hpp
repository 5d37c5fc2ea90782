#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "geometry/saddle_search.hpp"

namespace zentrix::TRANSITION_STATE {

/// The observer that writes the report of a search: coordinates, thresholds, lowest eigenvalues of the starting Hessian,
/// every geometry before it is computed, one table row a step, the final geometry.
class SADDLE_PRINTER_T : public SADDLE_OBSERVER_T {
 public:
  SADDLE_PRINTER_T(const MOLECULE_T& molecule, std::ostream& report);
  void bonds_truncated() override;
  void coordinates_made(const INTERNAL_COORDS::COORDINATE_SET_T& set) override;
  void started(bool internal, const THRESHOLDS_T& thresholds) override;
  void modes_known(const VECTOR& eigenvalues, int followed) override;
  void mode_refused(int mode, int n_modes) override;
  void evaluating(int step, const VECTOR& positions) override;
  void evaluated(const STEP_ROW_T& row, const FOLLOWED_MODE_T& followed) override;
  void coordinates_remade() override;
  void turned() override;
  void scf_failed(int step) override;
  void finished(const SADDLE_POINT_T& result) override;

 private:
  std::vector<std::string> symbols_;
  std::ostream& report_;
};

}  // namespace zentrix::TRANSITION_STATE

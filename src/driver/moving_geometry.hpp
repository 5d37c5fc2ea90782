#pragma once

#include <string>
#include <vector>

#include "driver/run_state.hpp"
#include "geometry/optimizer_report.hpp"
#include "gradients/scf_surface.hpp"

// What every section that moves the atoms of the run does with their geometry.

namespace zentrix {

/// Keeps a geometry in hand, so that an interruption prints it. `positions`: bohr.
void keep_for_interruption(const std::vector<std::string>& symbols, const VECTOR& positions);

/// The printer of an optimisation that keeps the geometry in hand as well.
class OPTIMIZATION_PRINTER_T : public OPTIMIZER::OPTIMIZER_PRINTER_T {
 public:
  OPTIMIZATION_PRINTER_T(const RUN_T& run, std::ostream& report);
  void evaluating(int step, const VECTOR& positions) override;

 private:
  std::vector<std::string> symbols_;
};

/// Leaves the run at the last geometry of the surface, with its SCF. `positions`: bohr.
void settle(RUN_T& run, GRADIENTS::SCF_SURFACE_T& surface, const VECTOR& positions);

}  // namespace zentrix

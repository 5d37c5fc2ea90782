#include "gradients/mp2_surface.hpp"

#include "correlation/mp2_report.hpp"
#include "correlation/mp2_run.hpp"
#include "report/stop.hpp"

namespace zentrix::GRADIENTS {

SURFACE_POINT_T MP2_SURFACE_T::energy(const CARTESIAN_T& positions) {
  SURFACE_POINT_T point = SCF_SURFACE_T::energy(positions);
  const CORRELATION::MP2_RESULT_T mp2 = CORRELATION::run_mp2(last_geometry(), last_scf(), input(), report());
  if (report() != nullptr) CORRELATION::print_brief(mp2, point.energy, *report());
  point.energy += mp2.energy();
  return point;
}

SURFACE_POINT_T MP2_SURFACE_T::energy_and_gradient(const CARTESIAN_T&) {
  throw run_stopped(" *** ERROR: Gradients of MP2 and UMP2 energies are not available in this version.");
}

}  // namespace zentrix::GRADIENTS

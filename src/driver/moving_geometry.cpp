#include "driver/moving_geometry.hpp"

#include <sstream>

#include "driver/interrupts.hpp"
#include "geometry/positions_report.hpp"

namespace zentrix {

void keep_for_interruption(const std::vector<std::string>& symbols, const VECTOR& positions) {
  std::ostringstream note;
  note << "     Last geometry (Angstrom):\n";
  INTERNAL_COORDS::print_positions(symbols, positions, note);
  set_interrupt_note(note.str());
}

OPTIMIZATION_PRINTER_T::OPTIMIZATION_PRINTER_T(const RUN_T& run, std::ostream& report)
    : OPTIMIZER_PRINTER_T(run.molecule, run.input.zmatrix, report), symbols_(INTERNAL_COORDS::symbols_of(run.molecule)) {}

void OPTIMIZATION_PRINTER_T::evaluating(int step, const VECTOR& positions) {
  keep_for_interruption(symbols_, positions);
  OPTIMIZER_PRINTER_T::evaluating(step, positions);
}

void settle(RUN_T& run, GRADIENTS::SCF_SURFACE_T& surface, const VECTOR& positions) {
  run.optimized = true;
  run.scf = surface.last_scf();
  run.geometry = surface.take_geometry();
  run.molecule = GRADIENTS::moved(run.molecule, positions);
  set_interrupt_note("");
}

}  // namespace zentrix

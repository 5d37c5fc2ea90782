#include "driver/moving_geometry.hpp"

#include <sstream>

#include "driver/interrupts.hpp"

namespace zentrix {

void keep_for_interruption(const std::vector<std::string>& symbols, const VECTOR& positions) {
  std::ostringstream note;
  note << "     Last geometry (Angstrom):\n";
  INTERNAL_COORDS::print_positions(symbols, positions, note);
  set_interrupt_note(note.str());
}

void settle(RUN_T& run, GRADIENTS::SCF_SURFACE_T& surface, const VECTOR& positions) {
  run.optimized = true;
  run.scf = surface.last_scf();
  run.geometry = surface.take_geometry();
  run.molecule = GRADIENTS::moved(run.molecule, positions);
  set_interrupt_note("");
}

}  // namespace zentrix

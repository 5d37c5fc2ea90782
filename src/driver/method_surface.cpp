#include "driver/method_surface.hpp"

namespace zentrix {

std::unique_ptr<GRADIENTS::SCF_SURFACE_T> method_surface(const RUN_T& run, std::ostream* report) {
  return std::make_unique<GRADIENTS::SCF_SURFACE_T>(run.input, run.functional, run.molecule, report);
}

}  // namespace zentrix

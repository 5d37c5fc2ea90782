#include "driver/method_surface.hpp"

#include "gradients/mp2_surface.hpp"

namespace zentrix {

std::unique_ptr<GRADIENTS::SCF_SURFACE_T> method_surface(const RUN_T& run, std::ostream* report) {
  if (run.functional.is_mp2())
    return std::make_unique<GRADIENTS::MP2_SURFACE_T>(run.input, run.functional, run.molecule, report);
  return std::make_unique<GRADIENTS::SCF_SURFACE_T>(run.input, run.functional, run.molecule, report);
}

}  // namespace zentrix

#include "driver/method_surface.hpp"

#include "gradients/mp2_surface.hpp"

namespace zentrix {

std::unique_ptr<GRADIENTS::SCF_SURFACE_T> method_surface(const RUN_T& run, std::ostream* report) {
  return method_surface(run, run.input, report);
}

std::unique_ptr<GRADIENTS::SCF_SURFACE_T> method_surface(const RUN_T& run, const INPUT_PARSER::INPUT_DATA_T& settings,
                                                         std::ostream* report) {
  std::unique_ptr<GRADIENTS::SCF_SURFACE_T> surface;
  if (run.functional.is_mp2()) {
    surface = std::make_unique<GRADIENTS::MP2_SURFACE_T>(settings, run.functional, run.molecule, report);
  } else {
    surface = std::make_unique<GRADIENTS::SCF_SURFACE_T>(settings, run.functional, run.molecule, report);
  }
  surface->start_from(run.scf.converged ? run.scf.densities() : run.start);
  for (const auto& term : run.nuclear_terms) surface->add_term(*term);
  return surface;
}

}  // namespace zentrix

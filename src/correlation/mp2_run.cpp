#include "correlation/mp2_run.hpp"

#include "correlation/mp2_report.hpp"
#include "report/timing.hpp"

namespace zentrix::CORRELATION {

MP2_RESULT_T run_mp2(const SCF::GEOMETRY_DATA_T& geometry, const SCF::SCF_RESULT_T& scf,
                     const INPUT_PARSER::INPUT_DATA_T& input, std::ostream* report) {
  const STAGE_TIMER timer(STAGE::mp2);
  const MP2_SETTINGS_T settings = settings_from(input, geometry.molecule);
  if (report == nullptr) {
    MP2_OBSERVER_T silent;
    return mp2_energy(geometry, scf, settings, silent);
  }
  MP2_PRINTER_T printer(*report);
  return mp2_energy(geometry, scf, settings, printer);
}

}  // namespace zentrix::CORRELATION

#include <fmt/ostream.h>

#include "integrals/integrals_2e.hpp"

namespace zentrix::INTEGRALS_2E {

void print_mode(const JK_MODE_T& mode, std::ostream& report) {
  if (mode.conventional) {
    fmt::print(report, "   Conventional SCF: {} shell quartets, {:.1f} MB\n", mode.quartets, mode.megabytes());
    fmt::print(report, "     ERI precompute: {} OpenMP threads\n", mode.threads);
    return;
  }
  fmt::print(report, "   Conventional SCF would need {} shell quartets / {:.1f} MB\n", mode.quartets, mode.megabytes());
  fmt::print(report, "   (above the current ERI memory limit of {} MB).\n", mode.limit_mb);
  fmt::print(report, "   Falling back to DIRECT SCF (ERIs recomputed each iter).\n");
  fmt::print(report, "   Raise %eri_memory_limit_mb to force conventional storage.\n");
}

}  // namespace zentrix::INTEGRALS_2E

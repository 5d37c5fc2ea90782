#include <fmt/ostream.h>

#include <algorithm>

#include "constants/limits.hpp"
#include "integrals/boys.hpp"
#include "integrals/integrals_2e.hpp"
#include "integrals/one_electron.hpp"
#include "report/layout.hpp"

// Everything the integral subsystem says in the report.

namespace zentrix {

void BOYS::print_table_summary(std::ostream& report) {
  fmt::print(report, "   Precomputed tables initialized.\n");
  fmt::print(report, "     LMAX_WORK     = {}\n", LMAX_WORK);
  fmt::print(report, "     BOYS_NMAX     = {}\n", BOYS_NMAX);
  fmt::print(report, "     BOYS_NGRID    = {}\n", BOYS_NGRID);
  fmt::print(report, "     TABLE_SIZE    = {}\n", TABLE_SIZE);
}

namespace INTEGRALS_1E {

ONE_ELECTRON_T compute_one_electron(const MOLECULE_T& molecule, std::ostream& report) {
  ONE_ELECTRON_T result;
  fmt::print(report, "   Computing overlap integrals (S)...\n");
  result.s = overlap(molecule);
  print_matrix_diagnostics("S", result.s, report);
  fmt::print(report, "   Computing kinetic energy integrals (T)...\n");
  result.t = kinetic(molecule);
  print_matrix_diagnostics("T", result.t, report);
  fmt::print(report, "   Computing nuclear attraction integrals (V)...\n");
  result.v = nuclear_attraction(molecule);
  print_matrix_diagnostics("V", result.v, report);
  fmt::print(report, "   Assembling H_core = T + V_nuc...\n");
  result.h_core = result.t + result.v;
  print_matrix_diagnostics("H", result.h_core, report);
  return result;
}

void print_matrix_diagnostics(const std::string& label, const MATRIX& matrix, std::ostream& report) {
  fmt::print(report, "     {} trace     = {:18.10f}\n", label, matrix.trace());
  fmt::print(report, "     {} max |el|  = {:18.10f}\n", label, matrix.cwiseAbs().maxCoeff());
  fmt::print(report, "     {} min diag  = {:18.10f}\n", label, matrix.diagonal().minCoeff());
  fmt::print(report, "     {} max diag  = {:18.10f}\n", label, matrix.diagonal().maxCoeff());
}

void print_matrix(const std::string& title, const MATRIX& matrix, std::ostream& report) {
  constexpr Eigen::Index columns_per_block = 6;
  fmt::print(report, "   --- Matrix: {} ---\n", title);
  for (Eigen::Index first = 0; first < matrix.cols(); first += columns_per_block) {
    const Eigen::Index last = std::min(first + columns_per_block, matrix.cols());
    fmt::print(report, "       ");
    for (Eigen::Index c = first; c < last; ++c) fmt::print(report, "{:14d}", c + 1);
    fmt::print(report, "\n");
    for (Eigen::Index r = 0; r < matrix.rows(); ++r) {
      fmt::print(report, "   {:4d}", r + 1);
      for (Eigen::Index c = first; c < last; ++c) fmt::print(report, "{:14.8f}", without_minus_zero(matrix(r, c), 8));
      fmt::print(report, "\n");
    }
  }
}

}  // namespace INTEGRALS_1E

void INTEGRALS_2E::print_mode(const JK_MODE_T& mode, std::ostream& report) {
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

}  // namespace zentrix

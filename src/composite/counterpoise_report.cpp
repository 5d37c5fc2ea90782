#include "composite/counterpoise_report.hpp"

#include <fmt/ostream.h>

#include "constants/units.hpp"
#include "report/layout.hpp"

namespace zentrix::COMPOSITE {
namespace {

void print_rows(const COUNTERPOISE_T& result, std::ostream& report) {
  const char* rule = " --------    ----------------   -----------------   --------------\n";
  fmt::print(report, " Fragment    E_f (isolated)     E_f (in complex)     BSSE_f (Ha)\n{}", rule);
  for (std::size_t f = 0; f < result.isolated.size(); ++f) {
    fmt::print(report, " {:8d}    {:16.10f}   {:17.10f}   {:14.10f}\n", f + 1, result.isolated[f],
               result.in_complex_basis[f], result.in_complex_basis[f] - result.isolated[f]);
  }
  fmt::print(report, "{} SUM         {:16.10f}   {:17.10f}   {:14.10f}\n", rule, result.sum_isolated(),
             result.sum_in_complex_basis(), result.bsse());
}

std::string in_three_units(double energy) {
  return fmt::format("{:16.10f} Ha   = {:12.6f} kcal/mol = {:12.6f} kJ/mol", energy, KCAL_MOL_PER_HARTREE * energy,
                     KJ_MOL_PER_HARTREE * energy);
}

}  // namespace

void print_counterpoise_title(int n_fragments, const std::string& dispersion, std::ostream& report) {
  const std::string rule = section_rule();
  fmt::print(report, "\n{}\n  Boys-Bernardi counterpoise BSSE analysis  ({} fragments)\n{}\n", rule, n_fragments, rule);
  if (dispersion == "NONE" || dispersion == "none") return;
  fmt::print(report, "  Note: dispersion ({}) is currently NOT applied to BSSE sub-energies.\n", dispersion);
  fmt::print(report, "        D3/D4 contributions cancel almost exactly in the counterpoise difference.\n");
}

void print_step(SUBSYSTEM mode, int fragment, std::ostream& report) {
  switch (mode) {
    case SUBSYSTEM::complex:
      fmt::print(report, "\n --- BSSE step 1: full complex (full basis) ---\n");
      break;
    case SUBSYSTEM::isolated:
      fmt::print(report, "\n --- BSSE step 2a: fragment {} (isolated, fragment basis) ---\n", fragment);
      break;
    case SUBSYSTEM::in_complex_basis:
      fmt::print(report, "\n --- BSSE step 2b: fragment {} (with ghost basis on other fragments) ---\n", fragment);
      break;
  }
}

void print_failed_step(SUBSYSTEM mode, int fragment, std::ostream& report) {
  switch (mode) {
    case SUBSYSTEM::complex:
      fmt::print(report, " *** ERROR: BSSE: full-complex SCF failed.\n");
      break;
    case SUBSYSTEM::isolated:
      fmt::print(report, " *** ERROR: BSSE: SCF failed for isolated fragment {}\n", fragment);
      break;
    case SUBSYSTEM::in_complex_basis:
      fmt::print(report, " *** ERROR: BSSE: SCF failed for CP fragment {}\n", fragment);
      break;
  }
}

void print_counterpoise_summary(const COUNTERPOISE_T& result, std::ostream& report) {
  const std::string rule = section_rule();
  fmt::print(report, "\n{}\n  BSSE / Counterpoise Summary\n{}\n", rule, rule);
  print_rows(result, report);
  fmt::print(report, "\n   E(complex)               = {:16.10f} Hartree\n", result.complex);
  fmt::print(report, "   SUM E_f(isolated)        = {:16.10f} Hartree\n", result.sum_isolated());
  fmt::print(report, "   SUM E_f(in complex bas.) = {:16.10f} Hartree\n", result.sum_in_complex_basis());
  fmt::print(report, "\n   --- Interaction energies ---\n");
  fmt::print(report, "   Uncorrected:   Delta_E    = {}\n", in_three_units(result.uncorrected()));
  fmt::print(report, "   Counterpoise:  Delta_E_CP = {}\n", in_three_units(result.corrected()));
  fmt::print(report, "   BSSE total                = {}\n", in_three_units(result.bsse()));
  fmt::print(report, "   (BSSE = Delta_E - Delta_E_CP)\n{}\n", rule);
}

}  // namespace zentrix::COMPOSITE

#include "scf/scf_report.hpp"

#include <fmt/ostream.h>

#include <cmath>
#include <string>

namespace zentrix::SCF {
namespace {

using INPUT_PARSER::LEVEL_SHIFT;

/// Both measures above this at the end: the state itself is in doubt, not the speed of convergence.
constexpr double large_residual = 0.05;

const std::string table_rule = "   " + std::string(72, '-');

void print_multireference_advice(std::ostream& report) {
  fmt::print(report, "   *** Diagnostic: large |g| and large dP throughout iteration\n");
  fmt::print(report, "   ***   strongly suggests a qualitatively multi-reference state.\n");
  fmt::print(report, "   ***   For RKS this often means the requested closed-shell singlet\n");
  fmt::print(report, "   ***   is NOT the true ground state.  Examples: O2 (true GS is\n");
  fmt::print(report, "   ***   triplet, mult=3), C2 (multiref), Cr2 (highly multiref).\n");
  fmt::print(report, "   ***   Try:\n");
  fmt::print(report, "   ***     - %mult <correct ground-state multiplicity>\n");
  fmt::print(report, "   ***     - %mult 1 + broken-symmetry: convert input to UHF\n");
  fmt::print(report, "   ***       by adding e.g. an explicit nelec_a /= nelec_b setting,\n");
  fmt::print(report, "   ***       or compute the open-shell triplet first.\n");
}

void print_slow_advice(const SCF_SETTINGS_T& settings, std::ostream& report) {
  fmt::print(report, "   *** Diagnostic: slow convergence.  Try:\n");
  fmt::print(report, "   ***     - %scf_maxiter 300\n");
  if (settings.level_shift_mode == LEVEL_SHIFT::automatic) {
    fmt::print(report, "   ***     - %level_shift 0.4  (AUTO already tried 0.2 Ha)\n");
  } else {
    fmt::print(report, "   ***     - %level_shift 0.2\n");
  }
  fmt::print(report, "   ***     - %damping 0.3\n");
}

void print_final_block(const SCF_RESULT_T& result, std::ostream& report) {
  fmt::print(report, "\n   {}\n   Final energies:\n", std::string(58, '-'));
  fmt::print(report, "     Electronic energy: {:20.10f}\n", result.energy.electronic);
  if (result.energy.xc != 0.0) fmt::print(report, "     XC energy:         {:20.10f}\n", result.energy.xc);
  fmt::print(report, "     Nuclear repulsion: {:20.10f}\n", result.energy.nuclear);
  fmt::print(report, "     Total energy:      {:20.10f}\n", result.energy.total());
  if (result.unrestricted()) {
    fmt::print(report, "   Alpha orbital energies:\n");
    print_orbital_energies(result.channels[0], report);
    fmt::print(report, "   Beta orbital energies:\n");
    print_orbital_energies(result.channels[1], report);
  } else {
    fmt::print(report, "   Orbital energies:\n");
    print_orbital_energies(result.channels[0], report);
  }
}

}  // namespace

void SCF_PRINTER_T::started(const GEOMETRY_DATA_T& geometry, const SCF_START_T& start) {
  const MOLECULE_T& molecule = geometry.molecule;
  fmt::print(report_, "   Nuclear repulsion energy:  {:18.10f}\n", geometry.nuclear_repulsion);
  if (molecule.spherical) {
    fmt::print(report_, "   Spherical basis: {} functions (Cartesian: {})\n", molecule.n_spherical, molecule.n_cartesian);
  }
  core_guess_ = start.densities.empty();
  if (core_guess_) {
    fmt::print(report_, "   Initial Fock matrix:       core Hamiltonian\n");
  } else {
    fmt::print(report_, "   Initial Fock matrix:       previous density\n");
  }
}

void SCF_PRINTER_T::small_overlap_eigenvalue(int index, double value) {
  fmt::print(report_, "   WARNING: small S eigenvalue {} {:12.4e}\n", index, value);
}

void SCF_PRINTER_T::integral_mode(const INTEGRALS_2E::JK_MODE_T& mode, int channels) {
  INTEGRALS_2E::print_mode(mode, report_);
  if (mode.conventional) return;
  if (channels == 1) {
    fmt::print(report_, "     JK direct: {} OpenMP threads\n", mode.threads);
  } else {
    fmt::print(report_, "     JK UHF direct: {} OpenMP threads\n", mode.threads);
  }
}

void SCF_PRINTER_T::table_begins(const SCF_SETTINGS_T& settings) {
  if (settings.level_shift_mode == LEVEL_SHIFT::fixed) {
    fmt::print(report_, "   Level shift enabled: {} Hartree (fixed)\n", settings.level_shift);
  } else if (settings.level_shift_mode == LEVEL_SHIFT::automatic) {
    fmt::print(report_, "   Level shift mode: AUTO  (will activate {} Ha if not converged in {} iters)\n", AUTOMATIC_SHIFT,
               AUTOMATIC_SHIFT_AFTER);
  }
  fmt::print(report_, "\n   Starting SCF iterations...\n{}\n", table_rule);
  fmt::print(report_, "    Iter       E(total)         dE          max(dP)     ||FPS-SPF||  DIIS\n{}\n", table_rule);
}

void SCF_PRINTER_T::level_shift_activated() {
  fmt::print(report_,
             "   *** AUTO level shift activated after {} non-converged iterations: applying {} Ha for remaining iters\n",
             AUTOMATIC_SHIFT_AFTER, AUTOMATIC_SHIFT);
}

void SCF_PRINTER_T::pruned(int count, double ratio, int channels) {
  if (channels == 1) {
    fmt::print(report_, "   DIIS: pruned {} oldest vector(s) (B cond ratio {:.3e})\n", count, ratio);
  } else {
    fmt::print(report_, "   DIIS-UHF: pruned {} oldest vector(s) (B cond ratio {:.3e})\n", count, ratio);
  }
}

void SCF_PRINTER_T::row(const SCF_ROW_T& row) {
  fmt::print(report_, "   {:5d} {:19.10f} {:12.4e} {:12.4e} {:12.4e}    {}\n", row.iteration, row.energy, row.energy_change,
             row.density_change, row.gradient, row.extrapolated ? "yes" : "no");
  report_.flush();
}

void SCF_PRINTER_T::energy_only_convergence(const SCF_ROW_T& row) {
  fmt::print(report_, "   *** Suspicious dE-only convergence at iter={}   (|dE|,dP,|g|)={:.3e} {:.3e} {:.3e}\n",
             row.iteration, std::abs(row.energy_change), row.density_change, row.gradient);
}

void SCF_PRINTER_T::energy_jump(const SCF_ROW_T& row, double previous_change) {
  fmt::print(report_, "   *** Suspicious dE jump before convergence at iter={}   |dE_prev|, |dE|={:.3e} {:.3e}\n",
             row.iteration, std::abs(previous_change), std::abs(row.energy_change));
}

void SCF_PRINTER_T::finished(const SCF_RESULT_T& result, const SCF_SETTINGS_T& settings, const SCF_ROW_T& last) {
  fmt::print(report_, "{}\n", table_rule);
  const std::string measures = fmt::format("{} iter  (dE={:.3e}, dP={:.3e}, |g|={:.3e})", result.iterations,
                                           last.energy_change, last.density_change, last.gradient);
  if (result.converged) {
    fmt::print(report_, "   SCF converged in {}\n", measures);
  } else {
    fmt::print(report_, "   *** SCF NOT converged after {}\n", measures);
    if (last.gradient > large_residual && last.density_change > large_residual) {
      print_multireference_advice(report_);
    } else {
      print_slow_advice(settings, report_);
    }
    if (core_guess_) fmt::print(report_, "   ***     - %initial_guess sad  (the core-Hamiltonian guess was used)\n");
  }
  print_final_block(result, report_);
}

void print_orbital_energies(const SPIN_CHANNEL_T& channel, std::ostream& report) {
  constexpr Eigen::Index per_line = 5;
  const Eigen::Index n = channel.energies.size();
  const auto print_range = [&](const char* label, Eigen::Index first, Eigen::Index last) {
    for (Eigen::Index start = first; start < last; start += per_line) {
      fmt::print(report, "     {}", start == first ? label : "     ");
      for (Eigen::Index i = start; i < std::min(start + per_line, last); ++i)
        fmt::print(report, " {:14.8f}", channel.energies(i));
      fmt::print(report, "\n");
    }
  };
  print_range("occ. ", 0, channel.n_occupied);
  print_range("virt.", channel.n_occupied, n);
}

}  // namespace zentrix::SCF

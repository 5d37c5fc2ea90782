#include "scf/scf_report.hpp"

#include <fmt/ostream.h>

#include <cmath>
#include <string>

#include "constants/elements.hpp"
#include "report/layout.hpp"

namespace zentrix::SCF {
namespace {

using INPUT_PARSER::LEVEL_SHIFT;
using INPUT_PARSER::OCCUPATION;

/// Both measures above this at the end: the state itself is in doubt, not the speed of convergence.
constexpr double large_residual = 0.05;
/// An orbital gradient within this factor of its tolerance is near convergence.
constexpr double spiking_nearness = 10.0;

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

void print_open_shell_multireference_advice(std::ostream& report) {
  fmt::print(report, "   *** Diagnostic: large |g| and large dP throughout iteration\n");
  fmt::print(report, "   ***   indicates a qualitatively multi-reference state\n");
  fmt::print(report, "   ***   (e.g. RKS singlet on a true triplet ground state).\n");
  fmt::print(report, "   ***   Try one of:\n");
  fmt::print(report, "   ***     - %mult <correct ground-state multiplicity>\n");
  fmt::print(report, "   ***     - UKS with %mult that doubles the unpaired count\n");
  fmt::print(report, "   ***       (broken-symmetry singlet, %mult 1 with UHF)\n");
  fmt::print(report, "   ***     - a different functional (current is single-reference DFT)\n");
}

void print_spiking_advice(std::ostream& report) {
  fmt::print(report, "   *** Diagnostic: SCF is near convergence but dP keeps spiking\n");
  fmt::print(report, "   ***   (residual orbital oscillation).  Try:\n");
  fmt::print(report, "   ***     - increase %level_shift (e.g. 0.3 or 0.5)\n");
  fmt::print(report, "   ***     - relax %scf_diis_etol by 10x\n");
  fmt::print(report, "   ***     - %scf_maxiter 256\n");
}

void print_slow_advice(const SCF_SETTINGS_T& settings, bool unrestricted, std::ostream& report) {
  fmt::print(report, "   *** Diagnostic: slow convergence.  Try:\n");
  fmt::print(report, "   ***     - %scf_maxiter 300\n");
  if (settings.level_shift_mode == LEVEL_SHIFT::automatic) {
    fmt::print(report, "   ***     - %level_shift 0.4  (AUTO already tried 0.2 Ha)\n");
  } else if (unrestricted) {
    fmt::print(report, "   ***     - %level_shift 0.2  (if not already set)\n");
  } else {
    fmt::print(report, "   ***     - %level_shift 0.2\n");
  }
  if (unrestricted) {
    fmt::print(report, "   ***     - %initial_guess sad  (already default for UKS)\n");
  } else {
    fmt::print(report, "   ***     - %damping 0.3\n");
  }
}

void print_advice(const SCF_SETTINGS_T& settings, const SCF_ROW_T& last, bool unrestricted, std::ostream& report) {
  const bool near =
      last.gradient < spiking_nearness * settings.gradient_tolerance && last.density_change > settings.density_tolerance;
  if (last.gradient > large_residual && last.density_change > large_residual) {
    unrestricted ? print_open_shell_multireference_advice(report) : print_multireference_advice(report);
  } else if (unrestricted && near) {
    print_spiking_advice(report);
  } else {
    print_slow_advice(settings, unrestricted, report);
  }
}

std::string occupation_text(OCCUPATION occupation) {
  switch (occupation) {
    case OCCUPATION::automatic:
      return fmt::format("AUTO (MOM for first {} iters, then strict Aufbau)", MOM_ITERATIONS);
    case OCCUPATION::strict:
      return "STRICT (Aufbau, warn on swap)";
    case OCCUPATION::mom:
      return "MOM (maximum-overlap, all iters)";
    case OCCUPATION::mix:
      return "MIX (re-mix HOMO-LUMO at swap)";
  }
  return "";
}

/// As wide as the report's words for the two spins.
const char* spin_word(std::size_t spin) { return spin == 0 ? "alpha" : "beta "; }

}  // namespace

void SCF_PRINTER_T::started(const GEOMETRY_DATA_T& geometry, const SCF_START_T& start) {
  const MOLECULE_T& molecule = geometry.molecule;
  fmt::print(report_, "   Nuclear repulsion energy:  {:18.10f}\n", geometry.nuclear_repulsion);
  if (molecule.spherical) {
    fmt::print(report_, "   Spherical basis: {} functions (Cartesian: {})\n", molecule.n_spherical, molecule.n_cartesian);
  }
  if (!functional_.empty()) fmt::print(report_, "   XC functional:             {}\n", functional_);
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

void SCF_PRINTER_T::integral_mode(const INTEGRALS_2E::JK_MODE_T& mode, int channels, bool wanted) {
  INTEGRALS_2E::print_mode(mode, report_);
  if (mode.conventional) {
    if (!wanted) fmt::print(report_, "     (no exact exchange: nothing is stored, Coulomb matrices are made anew)\n");
    return;
  }
  if (channels == 1) {
    fmt::print(report_, "     JK direct: {} OpenMP threads\n", mode.threads);
  } else {
    fmt::print(report_, "     JK UHF direct: {} OpenMP threads\n", mode.threads);
  }
}

void SCF_PRINTER_T::table_begins(const SCF_SETTINGS_T& settings, const std::vector<SPIN_CHANNEL_T>& channels) {
  if (settings.level_shift_mode == LEVEL_SHIFT::fixed) {
    fmt::print(report_, "   Level shift enabled: {} Hartree (fixed)\n", settings.level_shift);
  } else if (settings.level_shift_mode == LEVEL_SHIFT::automatic) {
    fmt::print(report_, "   Level shift mode: AUTO  (will activate {} Ha if not converged in {} iters)\n", AUTOMATIC_SHIFT,
               AUTOMATIC_SHIFT_AFTER);
  }
  if (channels.size() == 2) {
    fmt::print(report_, "   UHF: alpha occ = {},  beta occ = {}\n", channels[0].n_occupied, channels[1].n_occupied);
    fmt::print(report_, "   UKS occupation: {}\n", occupation_text(settings.occupation));
    fmt::print(report_, "\n   Starting UHF SCF iterations...\n{}\n", table_rule);
  } else {
    fmt::print(report_, "\n   Starting SCF iterations...\n{}\n", table_rule);
  }
  fmt::print(report_, "    Iter       E(total)         dE          max(dP)     ||FPS-SPF||  DIIS\n{}\n", table_rule);
}

void SCF_PRINTER_T::level_shift_activated() {
  fmt::print(report_,
             "   *** AUTO level shift activated after {} non-converged iterations: applying {} Ha for remaining iters\n",
             AUTOMATIC_SHIFT_AFTER, AUTOMATIC_SHIFT);
}

void SCF_PRINTER_T::starting_orbitals_mixed() { fmt::print(report_, "   Applied HOMO-LUMO mixing to beta orbitals\n"); }

void SCF_PRINTER_T::overlap_reordered(int orbitals, std::size_t spin) {
  fmt::print(report_, "   *** MOM reorder: {} orbital(s) reassigned in {} channel\n", orbitals, spin_word(spin));
}

void SCF_PRINTER_T::swap_followed(std::size_t spin, double smallest_overlap) {
  fmt::print(report_, "   *** Aufbau swap detected on {} channel  (min max-overlap = {:.4f}; following Aufbau)\n",
             spin_word(spin), smallest_overlap);
}

void SCF_PRINTER_T::swap_mixed() {
  fmt::print(report_, "   *** MIX: re-mixed HOMO-LUMO and reset DIIS after orbital swap\n");
}

void SCF_PRINTER_T::oscillation_reset(const SCF_ROW_T& row, double previous_density_change) {
  fmt::print(report_, "   *** DIIS oscillation near convergence at iter={}: dP_max {:.3e} -> {:.3e}; resetting DIIS.\n",
             row.iteration, previous_density_change, row.density_change);
}

void SCF_PRINTER_T::soft_convergence(const SCF_ROW_T& row) {
  fmt::print(report_, "   *** SOFT convergence at iter={} (|dE|={:.3e}, |g|={:.3e}, dP={:.3e})\n", row.iteration,
             std::abs(row.energy_change), row.gradient, row.density_change);
  fmt::print(report_, "   ***   Orbital gradient at tolerance for {} iterations;\n", SOFT_ITERATIONS);
  fmt::print(report_, "   ***   dP-residual is at the basis/grid numerical noise floor.\n");
  fmt::print(report_, "   ***   For tighter convergence, retry with %scf_ptol 1e-5 or finer grid.\n");
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
    print_advice(settings, last, result.unrestricted(), report_);
    if (core_guess_) fmt::print(report_, "   ***     - %initial_guess sad  (the core-Hamiltonian guess was used)\n");
  }
  print_final_block(result);
}

void SCF_PRINTER_T::print_final_block(const SCF_RESULT_T& result) {
  fmt::print(report_, "\n   {}\n   Final energies:\n", std::string(58, '-'));
  fmt::print(report_, "     Electronic energy: {:20.10f}\n", result.energy.electronic);
  if (!functional_.empty()) fmt::print(report_, "     XC energy:         {:20.10f}\n", result.energy.xc);
  fmt::print(report_, "     Nuclear repulsion: {:20.10f}\n", result.energy.nuclear);
  fmt::print(report_, "     Total energy:      {:20.10f}\n", result.energy.total());
  if (result.unrestricted()) {
    print_spin(result, report_);
    fmt::print(report_, "   Alpha orbital energies:\n");
    print_orbital_energies(result.channels[0], report_);
    fmt::print(report_, "   Beta orbital energies:\n");
    print_orbital_energies(result.channels[1], report_);
  } else {
    fmt::print(report_, "   Orbital energies:\n");
    print_orbital_energies(result.channels[0], report_);
  }
}

void GUESS_PRINTER_T::building_sad() {
  fmt::print(report_, "   Building SAD (Superposition of Atomic Densities) initial guess...\n");
}

void GUESS_PRINTER_T::sad_unavailable() { fmt::print(report_, "   SAD unavailable; using core-Hamiltonian guess.\n"); }

void GUESS_PRINTER_T::atom_starts(const ATOM_RUN_T& atom) {
  fmt::print(report_, "   SAD atomic UHF: Z={}  nelec={}  nalpha={}  nbeta={}  (mult={}", atom.z, atom.n_electrons,
             atom.n_alpha, atom.n_beta, atom.multiplicity);
  if (atom.n_core > 0) fmt::print(report_, ", ECP: z_core={}", atom.n_core);
  fmt::print(report_, ")\n");
}

void GUESS_PRINTER_T::atom_not_converged(int z) {
  fmt::print(report_, "   SAD: atomic SCF did not reach convergence for {}\n", element_symbol(z));
}

void GUESS_PRINTER_T::atom_failed(int z) {
  fmt::print(report_, "   SAD: atomic UHF failed for Z={}; falling back to core-H guess overall\n", z);
}

void GUESS_PRINTER_T::shell_mismatch(int z) {
  fmt::print(report_, "   SAD: shell mismatch between atoms of element Z={} (mixed basis?); falling back to core-H guess\n",
             z);
}

void GUESS_PRINTER_T::assembled(double alpha_factor, double beta_factor) {
  fmt::print(report_, "   SAD guess assembled.  Tr(PaS) rescale={:.6f}  Tr(PbS) rescale={:.6f}\n", alpha_factor,
             beta_factor);
}

void GUESS_PRINTER_T::guess_made(const SCF_START_T& start) {
  fmt::print(report_, "   Initial guess:             {}\n", start.guess_name);
  if (start.from_converged_run) fmt::print(report_, "   Initial Fock matrix:       PBE pre-converged density\n");
}

void GUESS_PRINTER_T::pre_convergence_begins() { fmt::print(report_, "   meta-GGA: PBE pre-converge for initial guess\n"); }

void GUESS_PRINTER_T::pre_convergence_ends(const SCF_RESULT_T& result) {
  if (result.converged) {
    fmt::print(report_, "   PBE pre-converged, E = {:.10f}\n", result.energy.total());
  } else {
    fmt::print(report_, "   PBE pre-converge: not fully converged, using best density\n");
  }
  fmt::print(report_, "   Starting meta-GGA SCF with PBE density...\n");
}

void print_grid_heading(std::ostream& report) { fmt::print(report, "\n --- Building DFT integration grid ---\n"); }

void print_spin(const SCF_RESULT_T& result, std::ostream& report) {
  fmt::print(report, "   <S**2> = {:.8f}   (exact = {:.6f})\n", without_minus_zero(result.s_squared, 8),
             exact_spin_squared(result.channels));
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

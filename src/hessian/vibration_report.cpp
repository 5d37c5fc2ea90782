#include "hessian/vibration_report.hpp"

#include <fmt/ostream.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "constants/units.hpp"
#include "report/layout.hpp"

namespace zentrix::VIBRATIONS {
namespace {

constexpr int frequency_decimals = 4;
const std::string double_rule = "   " + std::string(54, '=');

const char* word_of(MODE_TYPE type) {
  if (type == MODE_TYPE::tr) return "TR";
  return type == MODE_TYPE::imaginary ? "imag" : "vib";
}

void print_table(const VIBRATIONS_T& vibrations, std::ostream& report) {
  const bool infrared = vibrations.intensities.size() > 0;
  if (infrared) {
    fmt::print(report, "   Mode   Freq (cm^-1)   IR int (km/mol)   Type\n");
    fmt::print(report, "   ----   -----------   ---------------   ------\n");
  } else {
    fmt::print(report, "   Mode   Freq (cm^-1)   Type\n   ----   -----------   ------\n");
  }
  for (Eigen::Index m = 0; m < vibrations.frequencies.size(); ++m) {
    const MODE_TYPE type = vibrations.types[static_cast<std::size_t>(m)];
    fmt::print(report, "   {:4d}{:14.4f}", m + 1, without_minus_zero(vibrations.frequencies(m), frequency_decimals));
    if (infrared && type == MODE_TYPE::tr) fmt::print(report, "{:16s}", "");
    if (infrared && type != MODE_TYPE::tr) fmt::print(report, "{:16.4f}", vibrations.intensities(m));
    fmt::print(report, "   {}\n", word_of(type));
  }
  const int n_vibrations = vibrations.count(MODE_TYPE::vibration);
  fmt::print(report, "\n   Vibrational modes: {}\n", n_vibrations);
  // What is left counts here, an imaginary mode included.
  fmt::print(report, "   TR modes:          {}\n", vibrations.frequencies.size() - n_vibrations);
}

void print_zero_point_energy(const VIBRATIONS_T& vibrations, std::ostream& report) {
  const double energy = vibrations.zero_point_energy();
  fmt::print(report, "\n   ZPVE:  {:16.4f} cm^-1\n", vibrations.zero_point_wavenumber());
  fmt::print(report, "          {:16.10f} Eh\n", energy);
  fmt::print(report, "          {:16.6f} kcal/mol\n", energy * KCAL_MOL_PER_HARTREE);
  fmt::print(report, "          {:16.6f} kJ/mol\n", energy * KJ_MOL_PER_HARTREE);
}

void print_modes(const VIBRATIONS_T& vibrations, std::ostream& report) {
  fmt::print(report, "\n   Normal Modes (Cartesian displacements):\n");
  for (Eigen::Index m = 0; m < vibrations.frequencies.size(); ++m) {
    if (vibrations.types[static_cast<std::size_t>(m)] == MODE_TYPE::tr) continue;
    fmt::print(report, "\n   Mode {}:  {:.4f} cm^-1", m + 1, vibrations.frequencies(m));
    if (vibrations.intensities.size() > 0) fmt::print(report, ",  IR: {:.4f} km/mol", vibrations.intensities(m));
    fmt::print(report, "\n     Atom       dx         dy         dz\n");
    const auto mode = vibrations.modes.col(m);
    for (Eigen::Index a = 0; a < mode.size() / 3; ++a) {
      fmt::print(report, "    {:4d} ", a + 1);
      for (Eigen::Index k = 0; k < 3; ++k) fmt::print(report, "{:11.6f}", without_minus_zero(mode(3 * a + k), 6));
      fmt::print(report, "\n");
    }
  }
}

double calories(double hartree) { return hartree * KCAL_MOL_PER_HARTREE * 1000.0; }

void print_motion(const char* name, const MOTION_T& motion, std::ostream& report) {
  fmt::print(report, "   {:<14s}{:16.10f}{:16.4f}{:16.4f}\n", name, motion.energy, calories(motion.heat_capacity),
             calories(motion.entropy));
}

void print_rotor(const THERMOCHEMISTRY_T& t, std::ostream& report) {
  fmt::print(report, "   Molecular mass:              {:14.5f} u\n", t.mass);
  if (t.rotor == ROTOR::atom) {
    fmt::print(report, "   Rotor:                       atom\n");
    return;
  }
  fmt::print(report, "   Rotor:                       {}\n", t.rotor == ROTOR::linear ? "linear" : "nonlinear");
  fmt::print(report, "   Rotational symmetry number:  {:14d}\n", t.symmetry_number);
  fmt::print(report, "   Rotational constants (cm^-1):");
  for (const double constant : t.rotational_constants) fmt::print(report, " {:13.6f}", constant);
  fmt::print(report, "\n");
}

}  // namespace

void print_hessian(const MATRIX& hessian, std::ostream& report) {
  constexpr Eigen::Index per_block = 6;
  fmt::print(report, "\n   Cartesian Hessian (Ha/Bohr^2):\n");
  for (Eigen::Index first = 0; first < hessian.cols(); first += per_block) {
    const Eigen::Index last = std::min(first + per_block, hessian.cols());
    if (first > 0) fmt::print(report, "\n");
    fmt::print(report, "        ");
    for (Eigen::Index c = first; c < last; ++c) fmt::print(report, "{:14d}", c + 1);
    fmt::print(report, "\n");
    for (Eigen::Index r = 0; r < hessian.rows(); ++r) {
      fmt::print(report, "   {:5d}", r + 1);
      for (Eigen::Index c = first; c < last; ++c) fmt::print(report, "{:14.8f}", without_minus_zero(hessian(r, c), 8));
      fmt::print(report, "\n");
    }
  }
  fmt::print(report, "\n");
}

void print_projection(const PROJECTION_T& projection, std::ostream& report) {
  fmt::print(report, "     Projected out {} TR modes{}.\n", projection.n_removed,
             projection.linear ? " (linear molecule)" : "");
}

void print_eigenvalue_failure(int info, std::ostream& report) {
  fmt::print(report, "   *** ERROR dsyev (Hessian): info={}\n", info);
}

void print_vibrations(const VIBRATIONS_T& vibrations, std::ostream& report) {
  fmt::print(report, "\n   Vibrational Frequency Analysis\n{}\n\n", double_rule);
  print_table(vibrations, report);
  print_zero_point_energy(vibrations, report);
  print_modes(vibrations, report);
}

void print_minimum_verdict(const VECTOR& frequencies, std::ostream& report) {
  const auto n_imaginary = (frequencies.array() <= -TR_THRESHOLD).count();
  if (n_imaginary == 0) return;
  fmt::print(report, "   *** WARNING: {} imaginary mode{}; a minimum has none.\n", n_imaginary, n_imaginary == 1 ? "" : "s");
  fmt::print(report, "                Displace the atoms along one and optimize again.\n");
}

void print_saddle_verdict(const VECTOR& frequencies, bool converged, std::ostream& report) {
  const auto n_imaginary = (frequencies.array() <= -TR_THRESHOLD).count();
  if (n_imaginary != 1) {
    fmt::print(report, "   *** WARNING: {} imaginary modes; a transition state has exactly one.\n", n_imaginary);
  } else {
    fmt::print(report, "   Imaginary modes: 1 ({:.2f}i cm^-1).  {}\n", -frequencies.minCoeff(),
               converged ? "Transition state confirmed." : "Not confirmed: an SCF or the search did not converge.");
  }
}

void print_thermochemistry(const THERMOCHEMISTRY_T& t, std::ostream& report) {
  const std::string rule = "   " + std::string(62, '-');
  fmt::print(report, "\n   Thermochemistry ({:.2f} K, 1 atm)\n{}\n", t.temperature, double_rule);
  fmt::print(report, "   Ideal gas, rigid rotor, harmonic oscillator; average atomic weights\n");
  print_rotor(t, report);
  if (t.n_imaginary > 0) {
    fmt::print(report, "   NOTE: {} imaginary mode{} left out.\n", t.n_imaginary, t.n_imaginary == 1 ? " is" : "s are");
  }
  if (t.n_soft > 0) {
    fmt::print(report, "   NOTE: {} vibration{} below {:.0f} cm^-1 {} left out of the harmonic sums.\n", t.n_soft,
               t.n_soft == 1 ? "" : "s", TR_THRESHOLD, t.n_soft == 1 ? "is" : "are");
  }
  fmt::print(report, "\n   {:<14s}{:>16s}{:>16s}{:>16s}\n{}\n", "Motion", "Thermal (Eh)", "Cv cal/(mol K)", "S cal/(mol K)",
             rule);
  print_motion("Translation", t.translation, report);
  print_motion("Rotation", t.rotation, report);
  print_motion("Vibration", t.vibration, report);
  print_motion("Electronic", t.electronic, report);
  fmt::print(report, "{}\n", rule);
  print_motion("Total", t.total(), report);
  fmt::print(report, "\n   Electronic energy E:         {:20.10f} Eh\n", t.energy);
  fmt::print(report, "   Zero-point energy:           {:20.10f} Eh\n", t.zero_point_energy);
  fmt::print(report, "   Thermal energy:              {:20.10f} Eh\n", t.total().energy);
  fmt::print(report, "   E + zero-point energy:       {:20.10f} Eh\n", t.energy + t.zero_point_energy);
  fmt::print(report, "   Internal energy U:           {:20.10f} Eh\n", t.internal_energy());
  fmt::print(report, "   Enthalpy H = U + kT:         {:20.10f} Eh\n", t.enthalpy());
  fmt::print(report, "   T*S:                         {:20.10f} Eh\n", t.temperature * t.total().entropy);
  fmt::print(report, "   Gibbs energy G = H - T*S:    {:20.10f} Eh\n", t.gibbs_energy());
  fmt::print(report, "\n   Quasi-harmonic entropy (vibrations below {:.0f} cm^-1 taken at {:.0f} cm^-1): {} mode{} raised\n",
             QUASI_HARMONIC_LIMIT, QUASI_HARMONIC_LIMIT, t.n_raised, t.n_raised == 1 ? "" : "s");
  fmt::print(report, "   S of vibration:              {:20.4f} cal/(mol K)\n", calories(t.quasi_harmonic_entropy));
  fmt::print(report, "   T*S, quasi-harmonic:         {:20.10f} Eh\n", t.temperature * t.quasi_harmonic_total_entropy());
  fmt::print(report, "   G, quasi-harmonic:           {:20.10f} Eh\n", t.quasi_harmonic_gibbs_energy());
}

}  // namespace zentrix::VIBRATIONS

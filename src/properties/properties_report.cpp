#include <fmt/ostream.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>

#include "constants/units.hpp"
#include "molecule/cartesian.hpp"
#include "properties/properties.hpp"
#include "report/layout.hpp"

namespace zentrix::PROPERTIES {
namespace {

const std::string double_rule = "   " + std::string(48, '=');
const std::string single_rule = "   " + std::string(48, '-');

void print_vector(const char* label, const std::array<double, 3>& v, std::ostream& report) {
  fmt::print(report, "{}", label);
  for (const double x : v) fmt::print(report, " {:15.8f}", without_minus_zero(x, 8));
  fmt::print(report, "\n");
}

void print_energies(const SCF::SPIN_CHANNEL_T& channel, std::ostream& report) {
  for (Eigen::Index i = 0; i < channel.energies.size(); ++i) {
    fmt::print(report, "   {:5d} {:18.8f}{}\n", i + 1, channel.energies(i), i < channel.n_occupied ? " occ" : " vir");
  }
}

/// "1 O  s", "2 H  px", "1 C  dxy" (Cartesian) or "1 C  d-2" (spherical, by m) for every basis function.
std::vector<std::string> function_labels(const MOLECULE_T& molecule) {
  constexpr std::string_view letters = "spdfghi";
  std::vector<std::string> labels;
  for (const SHELL_T& shell : molecule.shells) {
    const char letter = letters[static_cast<std::size_t>(shell.l)];
    const std::string& symbol = molecule.atoms[static_cast<std::size_t>(shell.atom)].symbol;
    for (int n = 0; n < shell.nfunc; ++n) {
      std::string kind(1, letter);
      if (molecule.spherical && shell.l > 0) {
        kind += fmt::format("{:+d}", n - shell.l);
      } else {
        const POWERS_T powers = cartesian_powers(shell.l, n);
        kind += std::string(static_cast<std::size_t>(powers.x), 'x') + std::string(static_cast<std::size_t>(powers.y), 'y') +
                std::string(static_cast<std::size_t>(powers.z), 'z');
      }
      labels.push_back(fmt::format("{:4d} {:<2s} {:<5s}", shell.atom + 1, symbol, kind));
    }
  }
  return labels;
}

void print_coefficients(const MATRIX& orbitals, const std::vector<std::string>& labels, std::ostream& report) {
  constexpr Eigen::Index per_block = 6;
  for (Eigen::Index first = 0; first < orbitals.cols(); first += per_block) {
    const Eigen::Index last = std::min(first + per_block, orbitals.cols());
    fmt::print(report, "   BF              ");
    for (Eigen::Index c = first; c < last; ++c) fmt::print(report, "{:>12s}", "MO" + std::to_string(c + 1));
    fmt::print(report, "\n");
    for (Eigen::Index r = 0; r < orbitals.rows(); ++r) {
      fmt::print(report, "{:5d} {}", r + 1, labels[static_cast<std::size_t>(r)]);
      for (Eigen::Index c = first; c < last; ++c) fmt::print(report, "{:12.6f}", without_minus_zero(orbitals(r, c), 6));
      fmt::print(report, "\n");
    }
  }
}

}  // namespace

void print_populations(const MOLECULE_T& molecule, const POPULATIONS_T& populations, std::ostream& report) {
  fmt::print(report, "\n   Mulliken Population Analysis\n{}\n    Atom    Element    Population     Charge\n{}\n",
             double_rule, single_rule);
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    fmt::print(report, "   {:5d}      {:<2s}     {:12.6f} {:12.6f}\n", a + 1, molecule.atoms[a].symbol,
               without_minus_zero(populations.population[a], 6), without_minus_zero(populations.charge[a], 6));
  }
  const double total = std::accumulate(populations.population.begin(), populations.population.end(), 0.0);
  fmt::print(report, "{}\n   Total electrons: {:16.6f}\n{}\n", single_rule, total, double_rule);
}

void print_dipole(const DIPOLE_T& dipole, std::ostream& report) {
  fmt::print(report, "\n   Electric Dipole Moment\n{}\n", double_rule);
  print_vector("   Nuclear    (au): ", dipole.nuclear, report);
  print_vector("   Electronic (au): ", dipole.electronic, report);
  print_vector("   Total      (au): ", dipole.total(), report);
  fmt::print(report, "   |mu|       (au): {:16.8f}\n", dipole.magnitude());
  fmt::print(report, "   |mu|    (Debye): {:16.8f}\n{}\n", dipole.magnitude() * DEBYE_PER_AU, double_rule);
}

void print_orbitals(const MOLECULE_T& molecule, const SCF::SCF_RESULT_T& scf, std::ostream& report) {
  const std::vector<std::string> labels = function_labels(molecule);
  const std::string box = "   ================================================";
  fmt::print(report, "\n{}\n   Molecular Orbital Output\n{}\n", box, box);
  if (!scf.unrestricted()) {
    fmt::print(report, "   Orbital energies:\n");
    print_energies(scf.channels[0], report);
    fmt::print(report, "   MO coefficients (columns = MOs):\n");
    print_coefficients(scf.channels[0].orbitals, labels, report);
    return;
  }
  fmt::print(report, "   Alpha orbital energies:\n");
  print_energies(scf.channels[0], report);
  fmt::print(report, "   Beta orbital energies:\n");
  print_energies(scf.channels[1], report);
  fmt::print(report, "   Alpha MO coefficients (columns = MOs):\n");
  print_coefficients(scf.channels[0].orbitals, labels, report);
  fmt::print(report, "   Beta MO coefficients (columns = MOs):\n");
  print_coefficients(scf.channels[1].orbitals, labels, report);
}

}  // namespace zentrix::PROPERTIES

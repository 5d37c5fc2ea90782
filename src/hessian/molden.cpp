#include "hessian/molden.hpp"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

#include "constants/elements.hpp"
#include "constants/limits.hpp"
#include "constants/units.hpp"
#include "report/layout.hpp"
#include "report/side_files.hpp"

namespace zentrix::MOLDEN {
namespace {

using BUFFER_T = fmt::memory_buffer;

template <typename... ARGS>
void put(BUFFER_T& out, fmt::format_string<ARGS...> format, ARGS&&... args) {
  fmt::format_to(std::back_inserter(out), format, std::forward<ARGS>(args)...);
}

void put_atoms(BUFFER_T& out, const MOLECULE_T& molecule) {
  put(out, "[Atoms] AU\n");
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    const ATOM_T& atom = molecule.atoms[a];
    put(out, "{:<2s} {:5d} {:5d}", element_symbol(atom.z), a + 1, atom.z);
    for (const double x : atom.position) put(out, " {:18.10f}", x);
    put(out, "\n");
  }
}

void put_shell(BUFFER_T& out, const SHELL_T& shell) {
  constexpr std::string_view letters = "spdfg";
  const char letter = shell.l <= LMAX_BASIS ? letters[static_cast<std::size_t>(shell.l)] : '?';
  put(out, "  {} {:3d} 1.00\n", letter, shell.nprim);
  const std::vector<double> coefficients = normalised_coefficients(shell);
  for (std::size_t i = 0; i < coefficients.size(); ++i) {
    put(out, "  {:20.12E}  {:20.12E}\n", shell.alpha[i], coefficients[i]);
  }
}

void put_basis(BUFFER_T& out, const MOLECULE_T& molecule) {
  put(out, "[GTO]\n");
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    put(out, "{:6d} 0\n", a + 1);
    for (const SHELL_T& shell : molecule.shells) {
      if (shell.atom == static_cast<int>(a)) put_shell(out, shell);
    }
    put(out, "\n");
  }
}

int n_components(int l, bool spherical) { return spherical ? n_spherical(l) : n_cartesian(l); }

/// Functions that the shells imply.
int count_functions(const MOLECULE_T& molecule) {
  int count = 0;
  for (const SHELL_T& shell : molecule.shells) count += n_components(shell.l, molecule.spherical);
  return count;
}

/// Row of the orbital coefficients for every function of the file, which lists the shells atom by atom.
std::vector<int> function_order(const MOLECULE_T& molecule, int dimension) {
  std::vector<int> first = {0};  // of every shell, by its own count
  for (const SHELL_T& shell : molecule.shells) first.push_back(first.back() + n_components(shell.l, molecule.spherical));
  std::vector<int> order;
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    for (std::size_t s = 0; s < molecule.shells.size(); ++s) {
      if (molecule.shells[s].atom != static_cast<int>(a)) continue;
      for (const int component : component_order(molecule.shells[s].l, molecule.spherical)) {
        if (first[s] + component < dimension) order.push_back(first[s] + component);
      }
    }
  }
  for (int row = first.back(); row < dimension; ++row) order.push_back(row);
  return order;
}

void put_orbitals(BUFFER_T& out, const SCF::SPIN_CHANNEL_T& channel, const char* spin, double occupation,
                  const std::vector<int>& order) {
  for (Eigen::Index m = 0; m < channel.orbitals.cols(); ++m) {
    put(out, " Sym= A\n Ene= {:18.10f}\n Spin= {}\n", channel.energies(m), spin);
    put(out, " Occup= {:12.8f}\n", m < channel.n_occupied ? occupation : 0.0);
    for (std::size_t k = 0; k < order.size(); ++k) put(out, "{:6d}{:22.12E}\n", k + 1, channel.orbitals(order[k], m));
  }
}

/// Where the orbital file is not what a reader will take it for.
void print_doubts(const MOLECULE_T& molecule, const SCF::SCF_RESULT_T& scf, std::ostream& report) {
  const Eigen::Index dimension = scf.channels.at(0).orbitals.rows();
  const int count = count_functions(molecule);
  if (count != dimension) {
    fmt::print(report, " *** WARNING: %export_mo: AO count {} /= working dimension {} (file may be malformed).\n", count,
               dimension);
  }
}

}  // namespace

std::vector<int> component_order(int l, bool spherical) {
  std::vector<int> order(static_cast<std::size_t>(n_components(l, spherical)));
  std::iota(order.begin(), order.end(), 0);
  if (l == 0 || (l == 1 && !spherical)) return order;
  if (l == 1) return {2, 0, 1};  // x y z from m = -1, 0, +1; the format has no other order for p
  if (spherical) {               // m = 0, +1, -1, +2, -2, ... from m = -l .. +l
    for (int k = 0; k < n_spherical(l); ++k) order[static_cast<std::size_t>(k)] = l + (k % 2 == 0 ? -k / 2 : (k + 1) / 2);
    return order;
  }
  if (l == 2) return {0, 3, 5, 1, 2, 4};                        // xx yy zz xy xz yz
  if (l == 3) return {0, 6, 9, 3, 1, 2, 5, 8, 7, 4};            // xxx yyy zzz xyy xxy xxz xzz yzz yyz xyz
  if (l == 4) {                                                 // xxxx yyyy zzzz xxxy xxxz yyyx yyyz zzzx zzzy
    return {0, 10, 14, 1, 2, 6, 11, 9, 13, 3, 5, 12, 4, 7, 8};  // xxyy xxzz yyzz xxyz yyxz zzxy
  }
  return order;
}

std::vector<double> normalised_coefficients(const SHELL_T& shell) {
  // Self-overlap of x^l exp(-a r^2): (2l - 1)!! (pi/2a)^(3/2) / (4a)^l.
  std::vector<double> coefficients;
  for (std::size_t i = 0; i < shell.coeff.size(); ++i) {
    double overlap = std::pow(PI / (2.0 * shell.alpha[i]), 1.5);
    for (int k = 1; k <= shell.l; ++k) overlap *= (2 * k - 1) / (4.0 * shell.alpha[i]);
    coefficients.push_back(shell.coeff[i] * std::sqrt(overlap));
  }
  return coefficients;
}

std::string orbitals_text(const MOLECULE_T& molecule, const SCF::SCF_RESULT_T& scf) {
  BUFFER_T out;
  put(out, "[Molden Format]\n[Title]\n Zentrix molecular orbitals\n");
  put_atoms(out, molecule);
  put_basis(out, molecule);
  put(out, "[MO]\n");
  const std::vector<int> order = function_order(molecule, static_cast<int>(scf.channels.at(0).orbitals.rows()));
  put_orbitals(out, scf.channels[0], "Alpha", scf.occupation, order);
  if (scf.unrestricted()) put_orbitals(out, scf.channels[1], "Beta", scf.occupation, order);
  return fmt::to_string(out);
}

std::string vibrations_text(const MOLECULE_T& molecule, const VECTOR& frequencies, const MATRIX& modes) {
  BUFFER_T out;
  put(out, "[Molden Format]\n[Title]\n Zentrix vibrational analysis\n");
  put_atoms(out, molecule);
  put(out, "[FREQ]\n");
  for (const double frequency : frequencies) put(out, "{:12.4f}\n", without_minus_zero(frequency, 4));
  put(out, "[FR-COORD]\n");
  for (const ATOM_T& atom : molecule.atoms) {
    put(out, "{:<2s}", element_symbol(atom.z));
    for (const double x : atom.position) put(out, " {:18.10f}", x);
    put(out, "\n");
  }
  put(out, "[FR-NORM-COORD]\n");
  for (Eigen::Index m = 0; m < modes.cols(); ++m) {
    put(out, "vibration {}\n", m + 1);
    for (Eigen::Index row = 0; row < modes.rows(); row += 3) {
      for (Eigen::Index k = 0; k < 3; ++k) put(out, " {:18.10f}", without_minus_zero(modes(row + k, m), 10));
      put(out, "\n");
    }
  }
  return fmt::to_string(out);
}

std::string export_orbitals(const std::string& base, const MOLECULE_T& molecule, const SCF::SCF_RESULT_T& scf,
                            std::ostream& report) {
  int highest = 0;
  for (const SHELL_T& shell : molecule.shells) highest = std::max(highest, shell.l);
  if (highest > LMAX_BASIS) {
    fmt::print(report,
               " *** WARNING: %export_mo: basis contains L={} functions, which the Molden format cannot represent.\n"
               "     Skipping orbital export (no _mo.molden written).\n",
               highest);
    return "";
  }
  print_doubts(molecule, scf, report);
  std::string name = unique_output_name(base + "_mo", "molden", report);
  if (!write_side_file(name, orbitals_text(molecule, scf))) {
    fmt::print(report, " *** WARNING: %export_mo: could not open orbital file for writing: {}\n", name);
    return "";
  }
  fmt::print(report, "   Molden MO file written to: {}\n", name);
  if (molecule.spherical && highest > 1) {
    fmt::print(report, "   NOTE: the file does not say that its functions are spherical; see the manual on side files.\n");
  }
  return name;
}

std::string write_vibrations(const std::string& base, const MOLECULE_T& molecule, const VECTOR& frequencies,
                             const MATRIX& modes, std::ostream& report) {
  std::string name = unique_output_name(base, "molden", report);
  if (!write_side_file(name, vibrations_text(molecule, frequencies, modes))) {
    fmt::print(report, " *** WARNING: could not open Molden file for writing: {}\n", name);
    return "";
  }
  fmt::print(report, "   Molden file written to: {}\n", name);
  return name;
}

}  // namespace zentrix::MOLDEN

#include <fmt/ostream.h>

#include <string>
#include <string_view>

#include "molecule/molecule.hpp"

namespace zentrix {

void print_molecule_summary(const MOLECULE_T& molecule, std::ostream& report) {
  constexpr std::string_view letters = "spdfghi";
  const std::string rule(45, '=');
  fmt::print(report, "\n {}\n  MOLECULE SUMMARY\n {}\n", rule, rule);
  fmt::print(report, "   Number of atoms:       {:6d}\n", molecule.atoms.size());
  fmt::print(report, "   Number of shells:      {:6d}\n", molecule.shells.size());
  fmt::print(report, "   Number of basis fns:   {:6d}\n", molecule.n_basis);
  fmt::print(report, "   Primitive Gaussians:   {:6d}\n", molecule.n_primitives);
  fmt::print(report, "   Spherical basis fns:   {:6d}\n", molecule.n_spherical);
  fmt::print(report, "   Total electrons:       {:6d}\n", molecule.n_electrons);
  fmt::print(report, "   Alpha electrons:       {:6d}\n", molecule.n_alpha);
  fmt::print(report, "   Beta electrons:        {:6d}\n", molecule.n_beta);
  fmt::print(report, "   Charge:                {:6d}\n", molecule.charge);
  fmt::print(report, "   Multiplicity:          {:6d}\n", molecule.multiplicity);
  fmt::print(report, "   ECP centers:           {:6d}\n", molecule.ecps.size());
  fmt::print(report, "\n   Shell details:\n   Shell  Atom  L  NPrim  NBF  IBF_start\n   {}\n", std::string(47, '-'));
  for (std::size_t s = 0; s < molecule.shells.size(); ++s) {
    const SHELL_T& shell = molecule.shells[s];
    fmt::print(report, "   {:5d} {:5d}  {}  {:5d}  {:3d}  {:9d}\n", s + 1, shell.atom + 1,
               letters[static_cast<std::size_t>(shell.l)], shell.nprim, shell.nfunc, shell.first + 1);
  }
  fmt::print(report, " {}\n", rule);
}

}  // namespace zentrix

#include "gradients/gradient_report.hpp"

#include <fmt/ostream.h>

#include <cmath>

#include "report/layout.hpp"

namespace zentrix::GRADIENTS {

void GRADIENT_PRINTER_T::scf_begins(bool unrestricted) {
  if (unrestricted) {
    fmt::print(report_, "   Running UHF SCF for gradient...\n");
  } else {
    fmt::print(report_, "   Running SCF for gradient...\n");
  }
}

void GRADIENT_PRINTER_T::scf_ends(const SCF::SCF_RESULT_T& scf) {
  fmt::print(report_, "   SCF energy: {:20.10f}\n", scf.energy.total());
}

void GRADIENT_PRINTER_T::nuclear_begins(bool unrestricted) {
  if (unrestricted) fmt::print(report_, "   Computing nuclear repulsion gradient...\n");
}

void GRADIENT_PRINTER_T::one_electron_begins() {
  fmt::print(report_, "   Computing fused 1e gradient (S + T + V_nuc)...\n");
}

void GRADIENT_PRINTER_T::one_electron_ends() { fmt::print(report_, "   Fused 1e gradient done.\n"); }

void GRADIENT_PRINTER_T::two_electron_begins(bool unrestricted, int threads, int bra_pairs) {
  fmt::print(report_, "   Computing 2-electron gradient...\n");
  if (unrestricted) {
    fmt::print(report_, "     UHF ERI gradient: {} threads, {} bra pairs\n", threads, bra_pairs);
  } else {
    fmt::print(report_, "     ERI gradient: {} threads, {} bra pairs\n", threads, bra_pairs);
  }
}

void GRADIENT_PRINTER_T::integrals_done(bool unrestricted) {
  if (unrestricted) {
    fmt::print(report_, "   UHF analytical gradient computed.\n");
  } else {
    fmt::print(report_, "   Analytical gradient computed.\n");
  }
}

void GRADIENT_PRINTER_T::xc_begins(bool unrestricted) {
  if (unrestricted) {
    fmt::print(report_, "   Computing UKS XC gradient (analytical)...\n");
  } else {
    fmt::print(report_, "   Computing XC gradient (analytical)...\n");
  }
}

void GRADIENT_PRINTER_T::nuclear_term_begins(const std::string& name) {
  fmt::print(report_, "   Adding {} gradient...\n", name);
}

void GRADIENT_PRINTER_T::atom_done(int number) {
  fmt::print(report_, "     Atom {} done.\n", number);
  report_.flush();
}

void print_nuclear_term(const NUCLEAR_TERM_T& term, double energy, std::ostream& report) {
  fmt::print(report, "     {:<19s}{:20.10f}\n", term.energy_label() + ":", energy);
}

void GRADIENT_PRINTER_T::semi_analytical_done() { fmt::print(report_, "   Gradient computed.\n"); }

namespace {

/// One line per atom, then the extremes.
void print_components(const MOLECULE_T& molecule, const CARTESIAN_T& gradient, std::ostream& report) {
  const auto component = [&](Eigen::Index k) { return without_minus_zero(gradient(k), 10); };
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    const auto at = static_cast<Eigen::Index>(3 * a);
    fmt::print(report, "   {:4d} {:<2s}  {:16.10f} {:14.10f} {:14.10f}\n", a + 1, molecule.atoms[a].symbol, component(at),
               component(at + 1), component(at + 2));
  }
  fmt::print(report, "   Max gradient component: {:16.10f}\n", gradient.cwiseAbs().maxCoeff());
  fmt::print(report, "   RMS gradient:           {:16.10f}\n",
             std::sqrt(gradient.squaredNorm() / static_cast<double>(gradient.size())));
}

}  // namespace

void print_gradient(const MOLECULE_T& molecule, const CARTESIAN_T& gradient, std::ostream& report) {
  fmt::print(report, "\n   Cartesian gradient (Hartree/Bohr):\n     Atom              gX             gY             gZ\n");
  print_components(molecule, gradient, report);
}

void print_wanted_gradient(const MOLECULE_T& molecule, const CARTESIAN_T& gradient, std::ostream& report) {
  fmt::print(report, "\n%print_grad  (Hartree/Bohr)\n   Atom              gX             gY             gZ\n");
  print_components(molecule, gradient, report);
}

}  // namespace zentrix::GRADIENTS

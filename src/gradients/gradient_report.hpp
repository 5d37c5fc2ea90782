#pragma once

#include <iosfwd>

#include "gradients/energy_surface.hpp"
#include "gradients/gradient_observer.hpp"
#include "gradients/nuclear_term.hpp"

namespace zentrix::GRADIENTS {

/// The observer that writes the progress of a gradient.
class GRADIENT_PRINTER_T : public GRADIENT_OBSERVER_T {
 public:
  explicit GRADIENT_PRINTER_T(std::ostream& report) : report_(report) {}
  void scf_begins(bool unrestricted) override;
  void scf_ends(const SCF::SCF_RESULT_T& scf) override;
  void nuclear_begins(bool unrestricted) override;
  void one_electron_begins() override;
  void one_electron_ends() override;
  void two_electron_begins(bool unrestricted, int threads, int bra_pairs) override;
  void integrals_done(bool unrestricted) override;
  void xc_begins(bool unrestricted) override;
  void nuclear_term_begins(const std::string& name) override;
  void atom_done(int number) override;
  void semi_analytical_done() override;

 private:
  std::ostream& report_;
};

/// The energy of a nuclear term behind the energies of the SCF that it adds to, hartree.
void print_nuclear_term(const NUCLEAR_TERM_T& term, double energy, std::ostream& report);

/// The table of a gradient under its heading, one line per atom, then the largest component and the root mean square.
void print_gradient(const MOLECULE_T& molecule, const CARTESIAN_T& gradient, std::ostream& report);
/// The same under the heading of %print_grad.
void print_wanted_gradient(const MOLECULE_T& molecule, const CARTESIAN_T& gradient, std::ostream& report);

}  // namespace zentrix::GRADIENTS

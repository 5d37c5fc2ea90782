#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "dft/xc_component.hpp"

// The functional catalogue: a method name of the input becomes a record that says which exchange-correlation components are
// evaluated, how much exact exchange enters the Fock matrix and which density ingredients the grid must supply.

namespace zentrix::DFT {

enum class FUNCTIONAL_CLASS : int { hartree_fock = 0, lda = 1, gga = 2, meta_gga = 3, hybrid = 4 };

struct WEIGHTED_COMPONENT_T {
  XC_COMPONENT id = XC_COMPONENT::slater_x;
  double weight = 0.0;
};

/// One method of the catalogue.
struct FUNCTIONAL_T {
  std::string name;  ///< upper case, as asked for
  FUNCTIONAL_CLASS functional_class = FUNCTIONAL_CLASS::hartree_fock;
  std::vector<WEIGHTED_COMPONENT_T> components;  ///< in evaluation order
  double hf_exchange = 0.0;                      ///< factor of the exact-exchange matrix K
  bool needs_gradient = false;                   ///< density gradient
  bool needs_tau = false;                        ///< kinetic-energy density

  /// Hartree-Fock followed by second-order correlation.
  bool is_mp2() const { return name == "MP2" || name == "UMP2"; }
  bool is_hartree_fock() const { return functional_class == FUNCTIONAL_CLASS::hartree_fock; }
};

/// Looks a method name up (letters a-z in any case, trailing blanks ignored, otherwise exact). Returns 0, or non-zero after
/// the reason was printed.
[[nodiscard]] int set_up_functional(std::string_view method_name, FUNCTIONAL_T& functional, std::ostream& report);

/// The block of the job header.
void print_functional(const FUNCTIONAL_T& functional, std::ostream& report);

/// All method words, aliases included, in the order of the catalogue.
std::vector<std::string_view> method_words();

}  // namespace zentrix::DFT

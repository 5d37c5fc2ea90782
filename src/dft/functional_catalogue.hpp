#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

// The functional catalogue: a method name of the input becomes a record that says which exchange-correlation components are
// evaluated, how much exact exchange enters the Fock matrix and which density ingredients the grid must supply.

namespace zentrix::DFT {

enum class FUNCTIONAL_CLASS : int { hartree_fock = 0, lda = 1, gga = 2, meta_gga = 3, hybrid = 4 };

/// Exchange-correlation components: exchange in the 100s, correlation in the 200s, meta-GGA in the 300s.
enum class XC_COMPONENT : int {
  slater_x = 101,  ///< Dirac, Proc. Camb. Phil. Soc. 26 (1930) 376
  b88_x = 102,     ///< Becke, Phys. Rev. A 38 (1988) 3098
  pbe_x = 103,     ///< Perdew, Burke, Ernzerhof, Phys. Rev. Lett. 77 (1996) 3865
  vwn5_c = 201,    ///< Vosko, Wilk, Nusair, Can. J. Phys. 58 (1980) 1200, fit V
  lyp_c = 203,     ///< Lee, Yang, Parr, Phys. Rev. B 37 (1988) 785
  pbe_c = 204,     ///< Perdew, Burke, Ernzerhof (1996), on the local part of Perdew and Wang (1992)
  vwn3_c = 205,    ///< Vosko, Wilk, Nusair (1980), fit of the random-phase approximation
  p86_c = 206,     ///< Perdew, Phys. Rev. B 33 (1986) 8822
  pw91_c = 207,    ///< Perdew et al., Phys. Rev. B 46 (1992) 6671
  r2scan_x = 301,  ///< Furness et al., J. Phys. Chem. Lett. 11 (2020) 8208
  r2scan_c = 302   ///< the same
};

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

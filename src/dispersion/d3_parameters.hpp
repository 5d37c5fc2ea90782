#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace zentrix::DISPERSION {

/// Becke-Johnson damping of the D3 correction for one functional: S. Grimme, S. Ehrlich, L. Goerigk, J. Comput. Chem. 32
/// (2011) 1456.
struct D3_PARAMETERS_T {
  std::string model;       ///< "D3(BJ)"; empty: no dispersion
  std::string functional;  ///< the functional the numbers were fitted to, as asked for
  double s6 = 1.0, s8 = 0.0;
  double a1 = 0.0;
  double a2 = 0.0;  ///< bohr
};

/// Parameters for a dispersion word and a functional, both compared as whole words in any case; "NONE" and a blank word give
/// an empty model. 0 on success, otherwise a code after the reason was printed.
[[nodiscard]] int select_d3(std::string_view word, std::string_view functional, D3_PARAMETERS_T& parameters,
                            std::ostream& report);

}  // namespace zentrix::DISPERSION

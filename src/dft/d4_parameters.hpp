#pragma once

#include <string>
#include <string_view>

namespace zentrix::DFT {

/// Damping parameters of the D4 dispersion correction for one functional: E. Caldeweyher, S. Ehlert, A. Hansen, H.
/// Neugebauer, S. Spicher, C. Bannwarth, S. Grimme, J. Chem. Phys. 150 (2019) 154122.
struct D4_PARAMETERS_T {
  std::string functional;  ///< as asked for
  double s6 = 1.0, s8 = 0.0, s9 = 1.0;
  double a1 = 0.0;
  double a2 = 0.0;      ///< bohr
  double alpha = 16.0;  ///< exponent of the three-body damping
  bool valid = false;   ///< s8, a1 and a2 are those of the functional, not zeros
};

/// Looks a functional up (letters in any case, trailing blanks ignored, otherwise exact; hyphenated aliases are known).
/// Returns whether it was found. Functionals of the method table without D4 parameters: SVWN and its kin, B3LYP3, B3LYP5,
/// BPW91, R2SCAN.
[[nodiscard]] bool find_d4_parameters(std::string_view functional, D4_PARAMETERS_T& parameters);

}  // namespace zentrix::DFT

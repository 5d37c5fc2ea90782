#include <cmath>
#include <cstdint>
#include <sstream>

#include "constants/limits.hpp"
#include "molecule/basis_file.hpp"
#include "require.hpp"

// The basis-set reader: whatever it accepts can be integrated.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const int z : {1, 6, 35}) {
    std::istringstream file(text);
    zentrix::ELEMENT_BASIS_T basis;
    if (zentrix::read_basis(file, z, basis) != zentrix::DATA_STATUS::ok) continue;
    for (const zentrix::SHELL_T& shell : basis.shells) {
      ZENTRIX_REQUIRE(shell.l >= 0 && shell.l <= zentrix::LMAX_BASIS);
      ZENTRIX_REQUIRE(shell.nprim >= 1 && shell.alpha.size() == static_cast<std::size_t>(shell.nprim));
      ZENTRIX_REQUIRE(shell.coeff.size() == shell.alpha.size());
      for (const double exponent : shell.alpha) ZENTRIX_REQUIRE(std::isfinite(exponent) && exponent > 0.0);
      for (const double coefficient : shell.coeff) ZENTRIX_REQUIRE(std::isfinite(coefficient));
    }
  }
  return 0;
}

#include <cmath>
#include <cstdint>
#include <sstream>

#include "molecule/basis_file.hpp"
#include "require.hpp"

// The reader of effective core potentials.

namespace {

void check_terms(const std::vector<zentrix::ECP_TERM_T>& terms) {
  for (const zentrix::ECP_TERM_T& term : terms) {
    ZENTRIX_REQUIRE(term.n >= 0 && std::isfinite(term.coefficient));
    ZENTRIX_REQUIRE(std::isfinite(term.exponent) && term.exponent > 0.0);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const int z : {35, 53}) {
    std::istringstream file(text);
    zentrix::ECP_T ecp;
    if (zentrix::read_ecp(file, z, ecp) != zentrix::DATA_STATUS::ok) continue;
    ZENTRIX_REQUIRE(ecp.n_core >= 0 && ecp.n_core < z);
    ZENTRIX_REQUIRE(ecp.l_max >= 0 && ecp.semi_local.size() == static_cast<std::size_t>(ecp.l_max));
    check_terms(ecp.local);
    for (const auto& terms : ecp.semi_local) check_terms(terms);
  }
  return 0;
}

#include <cmath>
#include <cstdint>
#include <sstream>

#include "dispersion/d3_data.hpp"
#include "require.hpp"

// The readers of the dispersion data.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zentrix::DISPERSION;
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::ostringstream report;
  D3_DATA_T d3;
  std::istringstream atomic(text);
  const bool refused = read_d3_atomic(atomic, d3, report) != 0;
  ZENTRIX_REQUIRE(refused == (report.str().find(" *** ERROR: ") == 0));
  d3.set_atomic_loaded();
  report.str("");
  std::istringstream reference(text);
  const bool stopped = read_d3_reference(reference, d3, report) != 0;
  ZENTRIX_REQUIRE(stopped == (report.str().find(" *** ERROR: ") == 0));
  for (int z = 0; z <= D3_MAX_Z; ++z) {
    const D3_ELEMENT_T& element = d3.element(z);
    ZENTRIX_REQUIRE(std::isfinite(element.radius) && std::isfinite(element.q));
    ZENTRIX_REQUIRE(element.n_references >= 0 && element.n_references <= D3_MAX_REFERENCES);
    for (int i = 0; i < element.n_references; ++i) ZENTRIX_REQUIRE(std::isfinite(d3.reference_c6(z, z, i, i)));
  }
  ZENTRIX_REQUIRE(d3.element(0).n_references == 0);
  return 0;
}

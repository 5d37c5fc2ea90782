#include <cstdint>
#include <sstream>

#include "hessian/hessian_file.hpp"
#include "require.hpp"

// The reader of Hessian files.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zentrix::HESSIAN;
  HESSIAN_IDENTITY_T current;
  current.method = "HF";
  current.basis = "STO-3G";
  current.atoms = {{1, {0.0, 0.0, 0.0}}, {9, {0.0, 0.0, 1.75}}};
  std::istringstream file(std::string(reinterpret_cast<const char*>(data), size));
  std::ostringstream report;
  HESSIAN_FILE_T content;
  const READ_STATUS status = read_hessian(file, "fuzz.hess", current, content, report);
  ZENTRIX_REQUIRE(!report.str().empty());
  if (status != READ_STATUS::accepted) return 0;
  ZENTRIX_REQUIRE(content.hessian.rows() == 6 && content.hessian.cols() == 6 && content.hessian.allFinite());
  ZENTRIX_REQUIRE(content.identity.atoms.size() == 2);
  ZENTRIX_REQUIRE(content.gradient.allFinite() && content.frequencies.allFinite() && content.modes.allFinite());
  return 0;
}

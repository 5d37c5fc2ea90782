#pragma once

#include <cstdlib>
#include <vector>

#include "simd/isa.hpp"

// The instruction sets the kernels are compiled for, to be tried one after the other.

namespace zentrix::TESTS {

/// Those that this processor and this build can run.
inline std::vector<kernels::ISA> available_isas() {
  std::vector<kernels::ISA> list;
  for (kernels::ISA isa : {kernels::ISA::baseline, kernels::ISA::avx2, kernels::ISA::avx512})
    if (isa <= kernels::best_isa()) list.push_back(isa);
  return list;
}

/// Runs a block with one instruction set.
class ISA_GUARD {
 public:
  explicit ISA_GUARD(kernels::ISA isa) { setenv("ZENTRIX_ISA", kernels::isa_name(isa), 1); }
  ~ISA_GUARD() { unsetenv("ZENTRIX_ISA"); }
  ISA_GUARD(const ISA_GUARD&) = delete;
  ISA_GUARD& operator=(const ISA_GUARD&) = delete;
};

}  // namespace zentrix::TESTS

#include <cstdlib>
#include <string_view>

#include "simd/isa.hpp"

namespace zentrix::kernels {

ISA best_isa() {
#ifndef ZX_BASELINE_ONLY
  // The same list as the compiler flags in cmake/kernels.cmake.
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
      __builtin_cpu_supports("fma"))
    return ISA::avx512;
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) return ISA::avx2;
#endif
  return ISA::baseline;
}

ISA chosen_isa() {
  const ISA best = best_isa();
  const char* wish = std::getenv("ZENTRIX_ISA");
  if (wish == nullptr) return best;
  for (ISA isa : {ISA::baseline, ISA::avx2, ISA::avx512})
    if (std::string_view(wish) == isa_name(isa) && isa <= best) return isa;
  return best;
}

const char* isa_name(ISA isa) {
  switch (isa) {
    case ISA::avx512:
      return "avx512";
    case ISA::avx2:
      return "avx2";
    default:
      return "baseline";
  }
}

}  // namespace zentrix::kernels

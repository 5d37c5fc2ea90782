#pragma once

// Run-time choice of the instruction set.
//
// Every file src/<folder>/kernels/*.cpp is compiled once per instruction set from the same source; the macro ZX_ISA names
// the namespace its code lands in (zentrix::kernels::baseline, ::avx2, ::avx512). Nothing outside those namespaces may be
// defined in a kernel file: an inline function compiled with wide flags would otherwise replace the portable copy at link
// time. Kernel files therefore include no standard containers or algorithms, only types and constexpr arithmetic.

namespace zentrix::kernels {

enum class ISA { baseline, avx2, avx512 };

/// The widest instruction set that this processor and this build have.
ISA best_isa();

/// The one to use: the environment variable ZENTRIX_ISA (baseline, avx2, avx512) for tests and benchmarks where it names one
/// that can run here, otherwise the best. Read at every call; engines ask once, when they are made.
ISA chosen_isa();

const char* isa_name(ISA isa);

/// Doubles per vector of the kernels of that instruction set.
constexpr int lane_count(ISA isa) { return isa == ISA::avx512 ? 8 : 4; }
inline constexpr int MAX_LANES = 8;

}  // namespace zentrix::kernels

// The function of that name from the namespace of `isa` (all have the same type); a macro because the name is looked up in
// three namespaces. Declare it in all three with ZX_DECLARE_FOR_EACH_ISA.
#ifdef ZX_BASELINE_ONLY
#define ZX_PICK(isa, function) ((void)(isa), &zentrix::kernels::baseline::function)
#else
#define ZX_PICK(isa, function)                                                  \
  ((isa) == zentrix::kernels::ISA::avx512 ? &zentrix::kernels::avx512::function \
   : (isa) == zentrix::kernels::ISA::avx2 ? &zentrix::kernels::avx2::function   \
                                          : &zentrix::kernels::baseline::function)
#endif
#define ZX_DECLARE_FOR_EACH_ISA(declaration) \
  namespace zentrix::kernels::baseline {     \
  declaration;                               \
  }                                          \
  namespace zentrix::kernels::avx2 {         \
  declaration;                               \
  }                                          \
  namespace zentrix::kernels::avx512 {       \
  declaration;                               \
  }

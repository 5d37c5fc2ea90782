#pragma once

#include <string>
#include <string_view>

#include "molecule/types.hpp"

namespace zentrix {

/// First fault of a shell, as the report names it ("negative angular momentum", "l exceeds LMAX = 5", ...), examined in the
/// order angular momentum, number of primitives, exponents; empty when the shell is sound.
std::string shell_fault(const SHELL_T& shell);

/// Stops the run with "FATAL [routine]: fault" when the shell is not sound. Called where shells enter the engine, never
/// inside its loops.
void validate_shell(std::string_view routine, const SHELL_T& shell);

}  // namespace zentrix

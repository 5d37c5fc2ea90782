#pragma once

#include <string>
#include <string_view>

#include "molecule/types.hpp"

namespace zentrix {

/// First fault of a shell, examined in the order angular momentum, number of primitives, exponents.
struct SHELL_FAULT_T {
  std::string detail;     ///< with the figures: "nprim must be > 0, got 0"; empty when the shell is sound
  std::string stop_text;  ///< what the run stops with: "invalid nprim"
};
SHELL_FAULT_T shell_fault(const SHELL_T& shell);

/// Stops the run with "FATAL [routine]: detail" and the stop text when the shell is not sound. Called where shells enter the
/// engine, never inside its loops.
void validate_shell(std::string_view routine, const SHELL_T& shell);
/// The same for derivatives, whose shells end at LMAX_GRAD.
void validate_gradient_shell(std::string_view routine, const SHELL_T& shell);

}  // namespace zentrix

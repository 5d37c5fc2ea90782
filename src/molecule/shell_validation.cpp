#include "molecule/shell_validation.hpp"

#include <fmt/format.h>

#include "constants/limits.hpp"
#include "report/stop.hpp"

namespace zentrix {

SHELL_FAULT_T shell_fault(const SHELL_T& shell) {
  if (shell.l < 0) return {"negative angular momentum", "negative angular momentum"};
  if (shell.l > LMAX) return {fmt::format("l exceeds LMAX = {}", LMAX), "angular momentum exceeds LMAX"};
  if (shell.nprim < 1) return {fmt::format("nprim must be > 0, got {}", shell.nprim), "invalid nprim"};
  const auto n = static_cast<std::size_t>(shell.nprim);
  if (shell.alpha.size() < n || shell.coeff.size() < n) {
    return {"normalize_shell: alpha/coeff not allocated", "normalize_shell: alpha/coeff not allocated"};
  }
  for (std::size_t i = 0; i < n; ++i) {
    if (!(shell.alpha[i] > 0.0)) return {fmt::format("alpha({}) <= 0: {}", i + 1, shell.alpha[i]), "non-positive exponent"};
  }
  return {};
}

void validate_shell(std::string_view routine, const SHELL_T& shell) {
  const SHELL_FAULT_T fault = shell_fault(shell);
  if (!fault.detail.empty()) throw run_stopped(fmt::format("FATAL [{}]: {}\n{}", routine, fault.detail, fault.stop_text));
}

void validate_gradient_shell(std::string_view routine, const SHELL_T& shell) {
  validate_shell(routine, shell);
  if (shell.l > LMAX_GRAD) throw run_stopped(fmt::format("FATAL [{}]: l exceeds LMAX_GRAD = {}", routine, LMAX_GRAD));
}

}  // namespace zentrix

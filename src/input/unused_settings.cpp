#include <fmt/ostream.h>

#include <algorithm>
#include <cstdint>

#include "constants/elements.hpp"
#include "input/input_checks.hpp"

// Settings that the job of the input never looks at: nothing that a user wrote is to be without effect and without a word.

namespace zentrix::INPUT_PARSER {
namespace {

struct SETTING_T {
  const char* keyword;
  bool changed;  ///< the input asks for something else than the default
  bool used;     ///< by the job
};

bool has_element(const INPUT_DATA_T& input, int z) {
  return std::any_of(input.atoms.begin(), input.atoms.end(), [z](const INPUT_ATOM_T& atom) { return atom.z == z; });
}

/// Names for elements that the molecule does not have.
void warn_absent_elements(const INPUT_DATA_T& input, const std::map<int, std::string>& names, const char* keyword,
                          std::ostream& report) {
  for (const auto& [z, name] : names) {
    if (has_element(input, z)) continue;
    fmt::print(report, "   *** WARNING: %{} {}={} names an element that is not there.\n", keyword, element_symbol(z), name);
  }
}

}  // namespace

void warn_unused_settings(const INPUT_DATA_T& input, std::ostream& report) {
  const INPUT_DATA_T usual;
  const JOB job = input.job;
  const bool searches = job == JOB::ts || job == JOB::ts_freq;
  const bool optimises = job == JOB::opt || job == JOB::opt_freq;
  const bool moves = optimises || searches || job == JOB::scanopt;
  const bool hessian = searches || job == JOB::freq || job == JOB::opt_freq;
  const bool sections = job != JOB::scan && job != JOB::scanopt && job != JOB::bsse;
  const SETTING_T settings[] = {
      {"read_hess", !input.read_hess.empty(), searches || optimises || job == JOB::freq},
      {"ts_mode", input.ts_mode > 0, searches},
      {"hess_method", input.hess_method != usual.hess_method, hessian},
      {"grad_method", input.semi_analytical_gradient, moves || hessian || job == JOB::gradient},
      {"initial_hess", input.initial_hess != usual.initial_hess, optimises || job == JOB::scanopt},
      {"opt_coord", input.opt_coord != usual.opt_coord, moves},
      {"geom_maxiter", input.geom_maxiter != usual.geom_maxiter, moves},
      {"grad_tol", input.grad_tol != usual.grad_tol, moves || hessian},
      {"print_mo", input.print_mo, sections},
      {"export_mo", input.export_mo, sections},
      {"print_grad", input.print_grad, moves || job == JOB::gradient},
      {"pcm_lebedev", input.pcm_lebedev != usual.pcm_lebedev, input.solvated()},
      {"pcm_scaling", input.pcm_scaling != usual.pcm_scaling, input.solvated()},
      {"pcm_switch", input.pcm_switch != usual.pcm_switch, input.solvated()},
      {"pcm_grad_method", input.pcm_grad_method != usual.pcm_grad_method, input.solvated()},
  };
  for (const SETTING_T& setting : settings)
    if (setting.changed && !setting.used)
      fmt::print(report, "   *** WARNING: %{} is not used by this job.\n", setting.keyword);
  const bool cartesian = !searches && (input.opt_coord == OPT_COORD::cartesian || input.atoms.size() < 3);
  if (input.grad_tol != usual.grad_tol && moves && !cartesian) {
    fmt::print(report, "   NOTE: %grad_tol sets the limits of the Cartesian optimizer (%opt_coord cart);\n");
    fmt::print(report, "         other searches have fixed ones.\n");
  }
  const std::int64_t least = std::int64_t{input.scf_min_iter} + input.scf_n_converged;
  if (input.scf_maxiter < least) {
    fmt::print(report, "   *** WARNING: no SCF can converge in %scf_maxiter {} iterations: it takes {} at least.\n",
               input.scf_maxiter, least);
  }
  warn_absent_elements(input, input.element_basis, "basis", report);
  warn_absent_elements(input, input.element_ecp, "ecp", report);
}

}  // namespace zentrix::INPUT_PARSER

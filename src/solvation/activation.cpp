#include "solvation/activation.hpp"

#include <fmt/ostream.h>

#include "solvation/solvents.hpp"

namespace zentrix::SOLVATION {
namespace {

using INPUT_PARSER::INPUT_DATA_T;
using INPUT_PARSER::JOB;
using INPUT_PARSER::PCM_MODEL;

int resolve_permittivity(const INPUT_DATA_T& input, double& permittivity, std::ostream& report) {
  if (input.eps_given) {
    permittivity = input.eps;
    return 0;
  }
  if (!input.solvent_given) {
    fmt::print(report, " --- PCM: no solvent specified; defaulting to water (eps=78.36) ---\n");
    permittivity = solvent_permittivity("WATER");
    return 0;
  }
  permittivity = solvent_permittivity(input.solvent);
  if (permittivity > 0.0) return 0;
  fmt::print(report, " *** PCM ERROR: Unknown solvent \"{}\"\n", input.solvent);
  print_known_solvents(report);
  return 1;
}

int resolve_model(const INPUT_DATA_T& input, PCM_MODEL& model, std::ostream& report) {
  model = input.pcm_given ? input.pcm_model : PCM_MODEL::iefpcm;
  if (!model_name(model).empty()) return 0;
  fmt::print(report, " *** PCM ERROR: Unknown model id {}\n", static_cast<int>(model));
  return 1;
}

int check_method(bool correlated, std::ostream& report) {
  if (!correlated) return 0;
  fmt::print(report,
             " *** PCM ERROR: MP2/UMP2/PUMP2 + PCM is not implemented in v0.74.0.\n"
             "     SCF-level PCM (HF, DFT) is fully supported.  Drop \"%method ump2/mp2\"\n"
             "     or remove the solvent keywords to proceed.\n");
  return 1;
}

int check_job(JOB job, std::ostream& report) {
  if (job == JOB::energy || job == JOB::gradient || job == JOB::opt) return 0;
  fmt::print(report,
             " *** PCM ERROR: PCM with this %job is deferred.\n"
             "     Stage 2.2b supports %job energy, gradient, opt.\n"
             "     %job freq, opt+freq, bsse, scan, ts are deferred to\n"
             "     later Stage 2 sub-stages.  Either pick a supported\n"
             "     %job, or remove %solvent / %eps / %pcm.\n");
  return 1;
}

}  // namespace

std::string model_name(PCM_MODEL model) {
  switch (model) {
    case PCM_MODEL::cpcm:
      return "C-PCM";
    case PCM_MODEL::iefpcm:
      return "IEF-PCM";
    case PCM_MODEL::cosmo:
      return "COSMO";
    default:
      return "";
  }
}

int resolve_solvation(const INPUT_DATA_T& input, bool correlated, SOLVATION_T& solvation, std::ostream& report) {
  solvation = {};
  solvation.active = input.solvated();
  if (!solvation.active) return 0;
  if (const int error = resolve_permittivity(input, solvation.permittivity, report); error != 0) return error;
  if (const int error = resolve_model(input, solvation.model, report); error != 0) return error;
  if (const int error = check_method(correlated, report); error != 0) return error;
  return check_job(input.job, report);
}

}  // namespace zentrix::SOLVATION

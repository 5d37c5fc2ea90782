#include "driver/availability.hpp"

#include <fmt/format.h>

#include "input/input_parser.hpp"

namespace zentrix {
namespace {

bool computes_frequencies(INPUT_PARSER::JOB job) {
  using INPUT_PARSER::JOB;
  return job == JOB::freq || job == JOB::opt_freq || job == JOB::ts || job == JOB::ts_freq;
}

/// What of the keywords about Hessians cannot be had.
std::string missing_for_hessian(const INPUT_PARSER::INPUT_DATA_T& input) {
  using INPUT_PARSER::JOB;
  const bool reads = !input.read_hess.empty();
  // An optimisation ends at another geometry than the one that the file belongs to.
  if (reads && (input.job == JOB::opt || input.job == JOB::opt_freq)) {
    return fmt::format("%read_hess with %job {}", INPUT_PARSER::job_word(input.job));
  }
  const bool computes = computes_frequencies(input.job) && !(reads && input.job != JOB::ts_freq);
  if (computes && input.hess_method == INPUT_PARSER::DERIVATIVE::analytical) return "%hess_method analytical";
  return "";
}

}  // namespace

using INPUT_PARSER::JOB;

std::string missing_for_input(const INPUT_PARSER::INPUT_DATA_T& input, const DFT::FUNCTIONAL_T& functional) {
  const bool searches = input.job == JOB::ts || input.job == JOB::ts_freq;  // stops with a message of its own
  if (functional.is_mp2() && input.job != JOB::energy && input.job != JOB::scan && input.job != JOB::bsse && !searches)
    return fmt::format("%job {} with %method {}", INPUT_PARSER::job_word(input.job), functional.name);
  if (input.pump2) return "%pump2";
  if (input.dispersion == "D4") return fmt::format("%dispersion {}", input.dispersion);
  if (input.solvated()) return "continuum solvation (%solvent, %eps, %pcm)";
  return missing_for_hessian(input);
}

double matrices_mb(const MOLECULE_T& molecule) {
  // Eight entries of DIIS with a Fock matrix, a density and an error each, and about a dozen matrices beside them.
  constexpr double matrices = 36.0;
  const double elements = static_cast<double>(molecule.n_basis) * molecule.n_basis;
  return matrices * (molecule.unrestricted ? 2 : 1) * elements * sizeof(double) / (1024.0 * 1024.0);
}

std::string missing_for_molecule(const MOLECULE_T& molecule) {
  if (!molecule.ecps.empty())
    return fmt::format("integrals of effective core potentials ({} centers)", molecule.ecps.size());
  return "";
}

}  // namespace zentrix

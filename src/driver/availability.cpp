#include "driver/availability.hpp"

#include <fmt/format.h>

#include "driver/job_table.hpp"
#include "input/input_parser.hpp"

namespace zentrix {

using INPUT_PARSER::JOB;

std::string missing_for_input(const INPUT_PARSER::INPUT_DATA_T& input, const DFT::FUNCTIONAL_T& functional) {
  if (job_row(input.job).sections.empty()) return fmt::format("%job {}", INPUT_PARSER::job_word(input.job));
  if (functional.is_mp2() && input.job != JOB::energy && input.job != JOB::scan && input.job != JOB::bsse)
    return fmt::format("%job {} with %method {}", INPUT_PARSER::job_word(input.job), functional.name);
  if (input.pump2) return "%pump2";
  if (input.dispersion != "NONE") return fmt::format("%dispersion {}", input.dispersion);
  if (input.solvent_given || input.eps_given || input.pcm_given) return "continuum solvation (%solvent, %eps, %pcm)";
  if (input.export_mo) return "%export_mo";
  return "";
}

std::string missing_for_molecule(const MOLECULE_T& molecule) {
  if (!molecule.ecps.empty())
    return fmt::format("integrals of effective core potentials ({} centers)", molecule.ecps.size());
  return "";
}

}  // namespace zentrix

#include "driver/job_table.hpp"

#include <algorithm>

#include "driver/sections.hpp"

namespace zentrix {

using INPUT_PARSER::JOB;

const std::vector<JOB_ROW_T>& job_table() {
  static const std::vector<JOB_ROW_T> table = {
      {JOB::energy, {section_one_electron, section_scf, section_output}},
      {JOB::gradient, {section_one_electron, section_gradient, section_output}},
      {JOB::opt, {section_one_electron, section_optimization, section_output}},
      {JOB::freq, {section_one_electron, section_scf, section_frequencies, section_output}},
      {JOB::opt_freq, {section_one_electron, section_optimization, section_frequencies, section_output}},
      {JOB::bsse, {section_counterpoise}},
      {JOB::scan, {section_rigid_scan}},
      {JOB::scanopt, {section_relaxed_scan}},
      {JOB::ts, {section_one_electron, section_transition_state, section_output}},
      {JOB::ts_freq, {section_one_electron, section_transition_state, section_validation, section_output}},
  };
  return table;
}

const JOB_ROW_T& job_row(JOB job) {
  return *std::find_if(job_table().begin(), job_table().end(), [job](const JOB_ROW_T& row) { return row.job == job; });
}

}  // namespace zentrix

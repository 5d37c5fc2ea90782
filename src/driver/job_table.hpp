#pragma once

#include <iosfwd>
#include <vector>

#include "driver/run_state.hpp"

// What a job is: the sections it walks after Section 1, in their order. To add a job, add its section and fill its row.

namespace zentrix {

using SECTION = int (*)(RUN_T& run, std::ostream& report);

struct JOB_ROW_T {
  INPUT_PARSER::JOB job = INPUT_PARSER::JOB::energy;
  std::vector<SECTION> sections;
};

/// One row per job word.
const std::vector<JOB_ROW_T>& job_table();
const JOB_ROW_T& job_row(INPUT_PARSER::JOB job);

}  // namespace zentrix

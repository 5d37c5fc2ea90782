#pragma once

#include <iosfwd>

// Timing profile: the one process-wide mutable table of the program.

namespace zentrix {

/// Stages of the timing profile, in the order of the printed table.
enum class STAGE : int {
  total = 1,
  input = 2,
  integrals_1e = 3,
  integrals_ecp = 4,
  integrals_2e = 5,
  xc = 6,
  scf = 7,
  gradient_1e = 8,
  gradient_2e = 9,
  gradient_ecp = 10,
  gradient_dft = 11,
  optimizer = 12,
  properties = 13,
  grid = 14,
  hessian = 15,
  hessian_1e = 16,
  hessian_2e = 17,
  hessian_cphf = 18,
  hessian_density = 19,
  hessian_response = 20,
  mp2 = 21,
  mp2_gradient = 22,
  mp2_hessian = 23
};

/// Zeroes all counts and times.
void timer_reset();
/// Starts / stops a stage, 1 to 23; any other number is ignored. Main thread only. A stage may nest in others.
void timer_start(int stage);
void timer_stop(int stage);
inline void timer_start(STAGE stage) { timer_start(static_cast<int>(stage)); }
inline void timer_stop(STAGE stage) { timer_stop(static_cast<int>(stage)); }
/// Wall seconds a stage has gathered so far (its running interval included) and how often it was stopped.
double timer_wall(STAGE stage);
int timer_calls(STAGE stage);

/// Brackets a block with a stage, also when the block is left by an exception.
class STAGE_TIMER {
 public:
  explicit STAGE_TIMER(STAGE stage) : stage_(stage) { timer_start(stage_); }
  ~STAGE_TIMER() { timer_stop(stage_); }
  STAGE_TIMER(const STAGE_TIMER&) = delete;
  STAGE_TIMER& operator=(const STAGE_TIMER&) = delete;

 private:
  STAGE stage_;
};

/// Prints the table of all stages that were called.
void print_timing_profile(std::ostream& report);

}  // namespace zentrix

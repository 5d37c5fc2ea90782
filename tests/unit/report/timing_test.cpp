#include "report/timing.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include "support/printed.hpp"

using namespace zentrix;

namespace {

void sleep_milliseconds(int n) { std::this_thread::sleep_for(std::chrono::milliseconds(n)); }

/// Wall seconds of the row with this label in the printed profile; -1 when there is none.
double printed_wall(const std::string& profile, const std::string& label) {
  const auto at = profile.find("\n  " + label);
  if (at == std::string::npos) return -1.0;
  return std::stod(profile.substr(at + 3 + 28 + 6, 11));
}

std::string profile_of_run() {
  timer_stop(STAGE::total);
  return TESTS::printed(print_timing_profile);
}

class Timing : public testing::Test {
 protected:
  Timing() {
    timer_reset();
    timer_start(STAGE::total);
  }
};

}  // namespace

TEST_F(Timing, NestedStagesAreNotSubtractedTwice) {
  sleep_milliseconds(120);  // in no stage
  timer_start(STAGE::properties);
  timer_start(STAGE::scf);
  for (int n = 0; n < 3; ++n) {
    const STAGE_TIMER jk(STAGE::integrals_2e);
    sleep_milliseconds(40);
  }
  timer_stop(STAGE::scf);
  timer_stop(STAGE::properties);
  const std::string profile = profile_of_run();
  EXPECT_EQ(timer_calls(STAGE::integrals_2e), 3);
  EXPECT_GE(timer_wall(STAGE::scf), timer_wall(STAGE::integrals_2e));
  const double total = printed_wall(profile, "Total program");
  const double other = printed_wall(profile, "Other / unaccounted");
  EXPECT_NEAR(other, total - timer_wall(STAGE::properties), 0.011) << profile;
  EXPECT_GE(other, 0.11);
}

TEST_F(Timing, OddCallsLeaveTheTableSound) {
  timer_start(0);
  timer_start(24);
  timer_start(-3);
  timer_stop(24);
  timer_stop(STAGE::mp2);  // never started
  EXPECT_EQ(timer_calls(STAGE::mp2), 0);
  timer_start(STAGE::scf);
  timer_start(STAGE::scf);  // a stage within itself: both calls count, the time counts once
  sleep_milliseconds(20);
  timer_stop(STAGE::scf);
  sleep_milliseconds(20);
  timer_stop(STAGE::scf);
  EXPECT_EQ(timer_calls(STAGE::scf), 2);
  EXPECT_GE(timer_wall(STAGE::scf), 0.039);
  EXPECT_LE(timer_wall(STAGE::scf), timer_wall(STAGE::total));
  try {
    const STAGE_TIMER grid(STAGE::grid);
    throw std::runtime_error("left early");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(timer_calls(STAGE::grid), 1);
}

TEST_F(Timing, PrintedTable) {
  { const STAGE_TIMER timer(STAGE::hessian_cphf); }
  { const STAGE_TIMER timer(STAGE::hessian); }
  const std::string profile = profile_of_run();
  const std::string equals(90, '=');
  const std::string dashes(90, '-');
  EXPECT_EQ(profile.find(equals + "\n" + dashes + "\n  Stage                        Calls    Wall(s)     CPU(s)   %Wall\n" +
                         dashes + "\n"),
            0U)
      << profile;
  EXPECT_NE(profile.find("\n    Hessian: CPHF                  1       0.00       0.00  "), std::string::npos) << profile;
  EXPECT_EQ(profile.find("SCF iterations"), std::string::npos);
  EXPECT_EQ(profile.find("  (*) SCF"), std::string::npos);
  EXPECT_NE(profile.find("  (**) Hessian total includes sub-steps (skeleton, CPHF, etc.)\n" + equals + "\n"),
            std::string::npos);
  EXPECT_EQ(profile.find("MP2 Hessian"), std::string::npos);
}

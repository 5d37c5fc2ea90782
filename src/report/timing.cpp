#include "report/timing.hpp"

#include <fmt/ostream.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <string>

namespace zentrix {
namespace {

constexpr int n_stages = 23;
constexpr int rule_length = 90;

constexpr std::array<const char*, n_stages + 1> stage_labels = {"",
                                                                "Total program",
                                                                "Input & initialization",
                                                                "1e-integrals (S,T,V)",
                                                                "ECP integrals",
                                                                "2e-integrals (J,K)",
                                                                "DFT XC (grid integration)",
                                                                "SCF iterations (*)",
                                                                "Gradient 1e",
                                                                "Gradient 2e",
                                                                "Gradient ECP",
                                                                "Gradient DFT",
                                                                "Optimizer work",
                                                                "Properties & output",
                                                                "DFT grid construction",
                                                                "Hessian total (**)",
                                                                "  Hessian: skeleton 1e",
                                                                "  Hessian: skeleton 2e",
                                                                "  Hessian: CPHF",
                                                                "  Hessian: density resp.",
                                                                "  Hessian: response",
                                                                "MP2 correlation",
                                                                "MP2 gradient",
                                                                "MP2 Hessian total (**)"};

/// Readings of both clocks, seconds.
struct CLOCKS_T {
  double wall = 0.0;
  double cpu = 0.0;
};

CLOCKS_T read_clocks() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return {std::chrono::duration<double>(now).count(), static_cast<double>(std::clock()) / CLOCKS_PER_SEC};
}

struct STAGE_RECORD_T {
  int calls = 0;
  CLOCKS_T sum;    ///< of the finished intervals
  CLOCKS_T begin;  ///< of the running interval
  int depth = 0;   ///< how often the stage is running within itself; only the outermost interval counts time
};

struct TIMING_TABLE_T {
  std::array<STAGE_RECORD_T, n_stages + 1> stages;
  int running = 0;             ///< intervals that are running, those of stage 1 left out
  double outermost_begin = 0;  ///< wall clock when `running` left zero
  double outermost_wall = 0;   ///< wall time in which some stage other than 1 was running
};

TIMING_TABLE_T table;

bool is_stage(int stage) { return stage >= 1 && stage <= n_stages; }

const STAGE_RECORD_T& record_of(STAGE stage) { return table.stages[static_cast<std::size_t>(stage)]; }

void print_row(const char* label, const std::string& calls, double wall, const std::string& cpu, double total,
               std::ostream& report) {
  const double share = total > 0.0 ? 100.0 * wall / total : 0.0;
  fmt::print(report, "  {:<28}{:>6}{:11.2f}{:>11}{:8.1f}\n", label, calls, wall, cpu, share);
}

void print_stage(int stage, double total, std::ostream& report) {
  const STAGE_RECORD_T& record = table.stages[static_cast<std::size_t>(stage)];
  print_row(stage_labels[static_cast<std::size_t>(stage)], std::to_string(record.calls), record.sum.wall,
            fmt::format("{:.2f}", record.sum.cpu), total, report);
}

void print_footnotes(std::ostream& report) {
  if (timer_calls(STAGE::scf) > 0) fmt::print(report, "  (*) SCF time includes 2e-integrals and DFT XC contributions\n");
  if (timer_calls(STAGE::hessian) > 0) {
    fmt::print(report, "  (**) Hessian total includes sub-steps (skeleton, CPHF, etc.)\n");
  }
  if (timer_calls(STAGE::mp2_hessian) > 0) {
    fmt::print(report, "  (**) MP2 Hessian total includes 6N analytical-grad evaluations\n");
  }
}

}  // namespace

void timer_reset() { table = TIMING_TABLE_T{}; }

void timer_start(int stage) {
  if (!is_stage(stage)) return;
  STAGE_RECORD_T& record = table.stages[static_cast<std::size_t>(stage)];
  if (record.depth++ > 0) return;
  record.begin = read_clocks();
  if (stage != static_cast<int>(STAGE::total) && table.running++ == 0) table.outermost_begin = record.begin.wall;
}

void timer_stop(int stage) {
  if (!is_stage(stage)) return;
  STAGE_RECORD_T& record = table.stages[static_cast<std::size_t>(stage)];
  if (record.depth == 0) return;
  record.calls += 1;
  if (--record.depth > 0) return;
  const CLOCKS_T now = read_clocks();
  record.sum.wall += now.wall - record.begin.wall;
  record.sum.cpu += now.cpu - record.begin.cpu;
  if (stage != static_cast<int>(STAGE::total) && --table.running == 0) {
    table.outermost_wall += now.wall - table.outermost_begin;
  }
}

double timer_wall(STAGE stage) {
  const STAGE_RECORD_T& record = record_of(stage);
  return record.sum.wall + (record.depth > 0 ? read_clocks().wall - record.begin.wall : 0.0);
}

int timer_calls(STAGE stage) { return record_of(stage).calls; }

void print_timing_profile(std::ostream& report) {
  const std::string dashes(rule_length, '-');
  const std::string equals(rule_length, '=');
  const double total = record_of(STAGE::total).sum.wall;
  fmt::print(report, "{}\n{}\n", equals, dashes);
  fmt::print(report, "  Stage                        Calls    Wall(s)     CPU(s)   %Wall\n{}\n", dashes);
  for (int stage = static_cast<int>(STAGE::input); stage <= n_stages; ++stage) {
    if (table.stages[static_cast<std::size_t>(stage)].calls > 0) print_stage(stage, total, report);
  }
  fmt::print(report, "{}\n", dashes);
  print_stage(static_cast<int>(STAGE::total), total, report);
  print_row("Other / unaccounted", "", std::max(0.0, total - table.outermost_wall), "", total, report);
  fmt::print(report, "{}\n", dashes);
  print_footnotes(report);
  fmt::print(report, "{}\n", equals);
}

}  // namespace zentrix

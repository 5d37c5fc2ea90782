#include "driver/interrupts.hpp"

#include <unistd.h>
#include <csignal>

#include <atomic>
#include <cstring>

namespace zentrix {
namespace {

// A signal handler can reach nothing but a global.
std::atomic<const char*> run_phase = "start-up";

/// Only calls that a signal handler may make: the report is line-buffered, so all finished lines are out.
void write_text(const char* text) {
  const ssize_t ignored = write(STDOUT_FILENO, text, std::strlen(text));
  static_cast<void>(ignored);
}

extern "C" void end_run(int signal_number) {
  write_text("\n *** Run stopped by ");
  write_text(signal_number == SIGINT ? "SIGINT" : "SIGTERM");
  write_text(" during ");
  write_text(run_phase.load());
  write_text(".\n");
  _exit(128 + signal_number);
}

}  // namespace

void install_interrupt_handlers() {
  struct sigaction action = {};
  action.sa_handler = end_run;
  sigemptyset(&action.sa_mask);
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGTERM);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

void set_run_phase(const char* phase) { run_phase.store(phase); }

}  // namespace zentrix

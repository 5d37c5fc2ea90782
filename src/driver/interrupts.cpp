#include "driver/interrupts.hpp"

#include <unistd.h>
#include <csignal>

#include <array>
#include <atomic>
#include <cstring>

namespace zentrix {
namespace {

// A signal handler can reach nothing but a global.
std::atomic<const char*> run_phase = "start-up";
std::atomic<const char*> interrupt_note = "";

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
  write_text(interrupt_note.load());
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

void set_interrupt_note(const std::string& note) {
  // The handler may come while the next text is being put together: it then finds the last one, which stays.
  static std::array<std::string, 2> texts;
  static std::size_t next = 0;
  texts[next] = note;
  interrupt_note.store(texts[next].c_str());
  next = 1 - next;
}

}  // namespace zentrix

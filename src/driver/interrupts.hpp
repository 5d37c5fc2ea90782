#pragma once

#include <string>

// Interruption from outside: SIGINT and SIGTERM print where the run stood and end it with 128 + the number of the signal.

namespace zentrix {

void install_interrupt_handlers();

/// What the run is doing, as the line of an interruption names it. `phase` must be a literal: the handler reads it at any
/// time.
void set_run_phase(const char* phase);

/// Lines that an interruption adds below its own, so that what the run has reached is not lost; empty: none. The text before
/// the last one may be dropped.
void set_interrupt_note(const std::string& note);

}  // namespace zentrix

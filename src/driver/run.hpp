#pragma once

namespace zentrix {

/// Exit statuses of the program. A run that is interrupted ends with 128 + the number of the signal.
inline constexpr int EXIT_DONE = 0;     ///< end lines reached, everything converged
inline constexpr int EXIT_STOPPED = 1;  ///< a fatal or error stop
inline constexpr int EXIT_NOT_CONVERGED =
    3;  ///< end lines reached, but an SCF, an optimisation, a search or a scan point did not converge

/// The whole program: banner, sections, end lines. Returns the exit status.
int run_program(int argc, char** argv);

}  // namespace zentrix

#pragma once

namespace zentrix {

/// The whole program: banner, sections, end lines. Returns the exit status: 0 when everything converged, 1 after a fatal or
/// error stop, 3 when the run reached its end lines but an SCF, an optimisation or a scan point did not converge.
int run_program(int argc, char** argv);

}  // namespace zentrix

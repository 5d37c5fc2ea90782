#pragma once

namespace zentrix {

/// Makes threads that wait for others sleep instead of spin, unless the environment says how they are to wait.
///
/// The OpenMP runtime's own choice is to spin for milliseconds after every parallel loop. On a machine that does anything
/// else beside, that takes the processor from the very thread that is waited for: runs of small molecules then take three
/// times as long, while on an idle machine sleeping costs them a few per cent. The runtime reads OMP_WAIT_POLICY while the
/// program is loaded, before `main`, so the program is started once more with it set; where that is not allowed it goes on
/// as it is. `arguments` are those of `main`.
void let_waiting_threads_sleep(char** arguments);

}  // namespace zentrix

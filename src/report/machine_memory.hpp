#pragma once

namespace zentrix {

/// Bytes of physical memory of this machine. The system hands out more than that, and ends a run without a word once it is
/// used.
double machine_memory();

}  // namespace zentrix

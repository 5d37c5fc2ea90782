#include "report/machine_memory.hpp"

#include <unistd.h>

namespace zentrix {

double machine_memory() { return static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE)); }

}  // namespace zentrix

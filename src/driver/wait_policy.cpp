#include "driver/wait_policy.hpp"

#include <unistd.h>

#include <cstdlib>

namespace zentrix {

void let_waiting_threads_sleep(char** arguments) {
  if (std::getenv("OMP_WAIT_POLICY") != nullptr || std::getenv("GOMP_SPINCOUNT") != nullptr) return;
  if (setenv("OMP_WAIT_POLICY", "passive", 0) == 0) (void)execv("/proc/self/exe", arguments);
}

}  // namespace zentrix

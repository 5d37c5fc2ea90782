#include "driver/run.hpp"
#include "driver/wait_policy.hpp"

int main(int argc, char** argv) {
  zentrix::let_waiting_threads_sleep(argv);
  return zentrix::run_program(argc, argv);
}

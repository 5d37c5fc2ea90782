#include "driver/run.hpp"

int main(int argc, char** argv) { return zentrix::run_program(argc, argv); }

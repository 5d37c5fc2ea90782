#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the program where something that must hold of every input does not; libFuzzer keeps the input that did it.
#define ZENTRIX_REQUIRE(condition)                                                        \
  do {                                                                                    \
    if (!(condition)) {                                                                   \
      std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                       \
    }                                                                                     \
  } while (false)

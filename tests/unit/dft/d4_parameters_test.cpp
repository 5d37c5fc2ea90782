#include "dft/d4_parameters.hpp"

#include <gtest/gtest.h>

using namespace zentrix::DFT;

TEST(D4_PARAMETERS, NAMES_AND_ALIASES) {
  D4_PARAMETERS_T p;
  for (const char* name : {"bp86", "BP", "b-p", "B-P86  "}) {
    EXPECT_TRUE(find_d4_parameters(name, p)) << name;
    EXPECT_EQ(p.s8, 3.35497927);
    EXPECT_EQ(p.a1, 0.43645861);
    EXPECT_EQ(p.a2, 4.92406854);
  }
  for (const char* name : {"B3-lyp", "b-lyp", "pbe", "PBE0", "tpss", "HF"}) EXPECT_TRUE(find_d4_parameters(name, p)) << name;
  // A look-up that fails leaves nothing of the one before.
  for (const char* name : {"svwn", "B3LYP3", "bpw91", "r2scan", "", " pbe", "pbe-0"}) {
    EXPECT_FALSE(find_d4_parameters(name, p)) << name;
    EXPECT_FALSE(p.valid);
    EXPECT_EQ(p.s8, 0.0);
  }
}

#include "constants/elements.hpp"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace zentrix;

/// A slip in a table of 118 rows shifts or doubles symbols: every one must lead back to its own number.
TEST(ELEMENTS, SymbolsLeadBackToTheirNumbers) {
  std::set<std::string> symbols;
  for (int z = 1; z <= MAX_Z; ++z) {
    EXPECT_EQ(atomic_number(element_symbol(z)), z);
    symbols.insert(element_symbol(z));
  }
  EXPECT_EQ(symbols.size(), static_cast<std::size_t>(MAX_Z));
  // Ends of the periods and of the f series pin the order.
  EXPECT_EQ(element_symbol(10) + element_symbol(18) + element_symbol(36) + element_symbol(54), "NeArKrXe");
  EXPECT_EQ(element_symbol(71) + element_symbol(86) + element_symbol(103) + element_symbol(118), "LuRnLrOg");
}

TEST(ELEMENTS, SymbolsAreReadInAnyCaseAndNothingElseIs) {
  EXPECT_EQ(atomic_number(" cL "), 17);
  EXPECT_EQ(atomic_number("CO"), 27);
  for (const char* text : {"", "  ", "Xx", "C1", "Carbon", "\xff", "6"}) EXPECT_EQ(atomic_number(text), 0) << text;
}

/// Weights rise with the atomic number but for the four inversions of the table among the natural elements.
TEST(ELEMENTS, WeightsAreOrderedLikeTheTable) {
  std::set<int> inversions;
  for (int z = 2; z <= 92; ++z) {
    if (atomic_weight(z) < atomic_weight(z - 1)) inversions.insert(z);
    EXPECT_GT(atomic_weight(z), 1.9 * z);
    EXPECT_LT(atomic_weight(z), 2.7 * z);
  }
  EXPECT_EQ(inversions, (std::set<int>{19, 28, 53, 91}));
}

}  // namespace

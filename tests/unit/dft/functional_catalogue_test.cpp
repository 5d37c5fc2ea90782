#include "dft/functional_catalogue.hpp"

#include <gtest/gtest.h>

#include <set>

#include "dft/functional_report.hpp"
#include "support/printed.hpp"
#include "xc_samples.hpp"

using namespace zentrix::DFT;
using samples::method;

TEST(FunctionalCatalogue, EveryRowConservesExchangeAndCorrelation) {
  // Exact and semilocal exchange add to one, and so does correlation: a weight mistyped in any row shows here.
  std::set<std::string_view> seen;
  for (const std::string_view word : method_words()) {
    EXPECT_TRUE(seen.insert(word).second) << word << " stands twice";
    const FUNCTIONAL_T functional = method(word);
    double exchange = functional.hf_exchange;
    double correlation = 0.0;
    for (const auto& [component, weight] : functional.components) {
      const int id = static_cast<int>(component);
      (id < 200 || id == 301 ? exchange : correlation) += weight;
    }
    EXPECT_DOUBLE_EQ(exchange, 1.0) << word;
    EXPECT_DOUBLE_EQ(correlation, functional.is_hartree_fock() ? 0.0 : 1.0) << word;
    EXPECT_EQ(functional.needs_tau, functional.functional_class == FUNCTIONAL_CLASS::meta_gga) << word;
  }
}

TEST(FunctionalCatalogue, PrintedBlocks) {
  const auto printed = [](const char* word) { return zentrix::TESTS::printed(print_functional, method(word)); };
  EXPECT_EQ(printed("mp2"), "   Functional:       MP2\n   Class:            Hartree-Fock\n   HF exchange:      100.00 %\n");
  EXPECT_EQ(printed("PBE0"),
            "   Functional:       PBE0\n   Class:            Hybrid\n   HF exchange:       25.00 %\n   XC components:\n"
            "     id= 103  weight=  0.7500\n     id= 204  weight=  1.0000\n");
  EXPECT_NE(printed("r2scan").find("   Class:            meta-GGA\n"), std::string::npos);
}

#include "dft/functional_catalogue.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <string>

using namespace zentrix::DFT;

namespace {

FUNCTIONAL_T look_up(const std::string& name) {
  std::ostringstream report;
  FUNCTIONAL_T functional;
  EXPECT_EQ(set_up_functional(name, functional, report), 0) << name << report.str();
  EXPECT_EQ(report.str(), "");
  return functional;
}

std::map<int, double> weights(const FUNCTIONAL_T& functional) {
  std::map<int, double> all;
  for (const auto& component : functional.components) all[static_cast<int>(component.id)] = component.weight;
  return all;
}

std::string printed(const std::string& name) {
  std::ostringstream report;
  print_functional(look_up(name), report);
  return report.str();
}

}  // namespace

TEST(FunctionalCatalogue, B3lypIsTheVwn5Form) {
  const FUNCTIONAL_T b3lyp = look_up("b3lyp");
  EXPECT_EQ(weights(b3lyp), (std::map<int, double>{{101, 0.08}, {102, 0.72}, {201, 0.19}, {203, 0.81}}));
  EXPECT_EQ(weights(look_up("B3lyp5   ")), weights(b3lyp));
  EXPECT_EQ(weights(look_up("B3LYP3")), (std::map<int, double>{{101, 0.08}, {102, 0.72}, {205, 0.19}, {203, 0.81}}));
}

TEST(FunctionalCatalogue, EveryRowConservesExchangeAndCorrelation) {
  // Exact and semilocal exchange add to one, and so does correlation: a weight mistyped in any row shows here.
  std::set<std::string_view> seen;
  for (const std::string_view word : method_words()) {
    EXPECT_TRUE(seen.insert(word).second) << word << " stands twice";
    const FUNCTIONAL_T functional = look_up(std::string(word));
    double exchange = functional.hf_exchange;
    double correlation = 0.0;
    for (const auto& [id, weight] : weights(functional)) (id < 200 || id == 301 ? exchange : correlation) += weight;
    EXPECT_DOUBLE_EQ(exchange, 1.0) << word;
    EXPECT_DOUBLE_EQ(correlation, functional.is_hartree_fock() ? 0.0 : 1.0) << word;
    EXPECT_EQ(functional.needs_tau, functional.functional_class == FUNCTIONAL_CLASS::meta_gga) << word;
  }
}

TEST(FunctionalCatalogue, DensityIngredients) {
  EXPECT_TRUE(look_up("r2scan").needs_gradient);
  EXPECT_TRUE(look_up("r2scan").needs_tau);
  EXPECT_FALSE(look_up("SVWN3").needs_gradient);
  EXPECT_TRUE(look_up("PBE0").needs_gradient);
  EXPECT_FALSE(look_up("mp2").needs_gradient);
}

TEST(FunctionalCatalogue, PrintedBlocks) {
  EXPECT_EQ(printed("mp2"), "   Functional:       MP2\n   Class:            Hartree-Fock\n   HF exchange:      100.00 %\n");
  EXPECT_EQ(printed("PBE0"),
            "   Functional:       PBE0\n   Class:            Hybrid\n   HF exchange:       25.00 %\n   XC components:\n"
            "     id= 103  weight=  0.7500\n     id= 204  weight=  1.0000\n");
  EXPECT_NE(printed("r2scan").find("   Class:            meta-GGA\n"), std::string::npos);
}

TEST(FunctionalCatalogue, UnknownNames) {
  for (const std::string name : {"B3-LYP", "PBE 0", "TPSS", "", " HF"}) {
    std::ostringstream report;
    FUNCTIONAL_T functional;
    EXPECT_NE(set_up_functional(name, functional, report), 0) << name;
    EXPECT_EQ(report.str().find(" *** ERROR: Unknown method/functional: \""), 0U);
    EXPECT_NE(
        report.str().find("     Available: HF, SVWN, SVWN3, SVWN5, BLYP, BP86, BPW91, PBE, B3LYP, B3LYP3, B3LYP5, PBE0, "
                          "R2SCAN\n"),
        std::string::npos);
  }
}

#include "solvation/solvents.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "solvation/activation.hpp"
#include "support/printed.hpp"

using namespace zentrix::SOLVATION;
using zentrix::INPUT_PARSER::INPUT_DATA_T;
using zentrix::INPUT_PARSER::PCM_MODEL;

TEST(Solvents, NamesInAnyCase) {
  for (const char* water : {"water", "Water", "H2O", " h2o "}) EXPECT_EQ(solvent_permittivity(water), 78.3553) << water;
  EXPECT_EQ(solvent_permittivity("n-hexane"), 1.8819);
  EXPECT_EQ(solvent_permittivity("VACUUM"), 1.0);
  EXPECT_EQ(solvent_permittivity("none"), 1.0);
  for (const char* unknown : {"", "wat", "waters", "n hexane", "octanol"})
    EXPECT_EQ(solvent_permittivity(unknown), -1.0) << unknown;
}

TEST(Solvents, EveryNameOfTheHelpIsKnownWithItsRoundedValue) {
  std::string text = zentrix::TESTS::printed(print_known_solvents);
  text = text.substr(text.find('\n'), text.find("   Use ") - text.find('\n'));
  for (char& c : text)
    if (c == '(' || c == ')') c = ' ';
  std::istringstream words(text);
  std::string name;
  double value = 0.0;
  int found = 0;
  for (; words >> name >> value; ++found) EXPECT_NEAR(solvent_permittivity(name), value, 0.005001) << name;
  EXPECT_EQ(found, 18);
}

namespace {

/// What `resolve_solvation` prints when it refuses, and an empty text with the settings when it does not.
std::string outcome(const INPUT_DATA_T& input, bool correlated, SOLVATION_T& solvation) {
  std::ostringstream report;
  const int error = resolve_solvation(input, correlated, solvation, report);
  EXPECT_EQ(error != 0, report.str().find("ERROR") != std::string::npos);
  return report.str();
}

}  // namespace

TEST(Solvation, WhatIsResolvedFromWhatWasGiven) {
  SOLVATION_T solvation;
  INPUT_DATA_T input;
  EXPECT_EQ(outcome(input, true, solvation), "");
  EXPECT_FALSE(solvation.active);
  input.solvent_given = true;
  input.solvent = "Toluene";
  EXPECT_EQ(outcome(input, false, solvation), "");
  EXPECT_TRUE(solvation.active);
  EXPECT_EQ(solvation.permittivity, 2.3741);
  EXPECT_EQ(model_name(solvation.model), "IEF-PCM");
  input.eps_given = true;  // goes before the solvent, whatever that is
  input.eps = 3.5;
  input.solvent = "nonsense";
  EXPECT_EQ(outcome(input, false, solvation), "");
  EXPECT_EQ(solvation.permittivity, 3.5);
  INPUT_DATA_T model_only;
  model_only.pcm_given = true;
  model_only.pcm_model = PCM_MODEL::cosmo;
  EXPECT_EQ(outcome(model_only, false, solvation), " --- PCM: no solvent specified; defaulting to water (eps=78.36) ---\n");
  EXPECT_EQ(solvation.permittivity, 78.3553);
  EXPECT_EQ(model_name(solvation.model), "COSMO");
}

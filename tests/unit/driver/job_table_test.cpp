#include "driver/job_table.hpp"

#include <gtest/gtest.h>

#include <string>

#include "input/keyword_table.hpp"

using namespace zentrix;

TEST(JobTable, EveryJobWordHasARowWithSections) {
  // The words come from the keyword's own list of valid values, so a job added there and forgotten here fails.
  const auto* keyword = INPUT_PARSER::find_keyword("JOB");
  ASSERT_NE(keyword, nullptr);
  std::string words = keyword->valid;
  std::size_t n_words = 0;
  while (!words.empty()) {
    const std::size_t bar = words.find(" | ");
    const std::string word = words.substr(0, bar);
    words = bar == std::string::npos ? "" : words.substr(bar + 3);
    INPUT_PARSER::INPUT_DATA_T input;
    ASSERT_TRUE(keyword->value.set(input, word)) << word;
    EXPECT_EQ(job_row(input.job).job, input.job);
    EXPECT_FALSE(job_row(input.job).sections.empty()) << word;
    n_words += 1;
  }
  EXPECT_EQ(job_table().size(), n_words);
}

#include "report/side_files.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/temporary_folder.hpp"

using namespace zentrix;

TEST(SideFiles, BaseNames) {
  EXPECT_EQ(output_base_name("dir/run.b.inp"), "run.b");
  EXPECT_EQ(output_base_name("water"), "water");
  EXPECT_EQ(output_base_name("C:\\jobs\\water.inp"), "water");
  EXPECT_EQ(output_base_name("dir.x/water"), "water");
  EXPECT_EQ(output_base_name(".hidden"), ".hidden");
  EXPECT_EQ(output_base_name("a/.hidden.inp"), ".hidden");
  EXPECT_EQ(output_base_name("water."), "water");
  EXPECT_EQ(output_base_name("dir/"), "zentrix");
  EXPECT_EQ(output_base_name(""), "zentrix");
}

TEST(SideFiles, FirstFreeNameAndTheLastVariant) {
  const TEMPORARY_FOLDER folder;
  const std::string base = folder.path() / "run";
  const auto touch = [&](const std::string& name) { std::ofstream(name) << "x"; };
  std::ostringstream report;
  EXPECT_EQ(unique_output_name(base, "hess", report), base + ".hess");
  EXPECT_FALSE(std::filesystem::exists(base + ".hess")) << "looking for a name must not create it";
  touch(base + ".hess");
  touch(base + "_3.hess");
  EXPECT_EQ(unique_output_name(base, "hess", report), base + "_2.hess");
  for (int k = 2; k < 999; ++k) touch(base + "_" + std::to_string(k) + ".hess");
  EXPECT_EQ(unique_output_name(base, "hess", report), base + "_999.hess");
  EXPECT_EQ(report.str(), "");
  touch(base + "_999.hess");
  EXPECT_EQ(unique_output_name(base, "hess", report), base + "_999.hess");
  EXPECT_EQ(report.str(), "   WARNING: output_files: more than 999 collisions; overwriting last variant.\n");
}

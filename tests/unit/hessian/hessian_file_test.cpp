#include "hessian/hessian_file.hpp"

#include <gtest/gtest.h>

#include <sstream>

#include "support/temporary_folder.hpp"

using namespace zentrix;
using namespace zentrix::HESSIAN;

namespace {

HESSIAN_FILE_T water() {
  HESSIAN_FILE_T content;
  content.identity.method = "B3LYP ";
  content.identity.basis = "6-31G*";
  content.identity.atoms = {{8, {0.0, 0.0, 0.221}}, {1, {0.0, 1.431, -0.887}}, {1, {0.0, -1.431, -0.887}}};
  content.energy = -76.4;
  content.gradient = VECTOR::LinSpaced(9, -1e-4, 1e-4);
  content.hessian = MATRIX::Random(9, 9);
  content.hessian(3, 4) = 1e-120;
  content.frequencies = VECTOR::LinSpaced(9, -20.0, 3800.0);
  content.modes = MATRIX::Random(9, 9);
  return content;
}

struct OUTCOME_T {
  READ_STATUS status = READ_STATUS::accepted;
  std::string report;
  HESSIAN_FILE_T content;
};

OUTCOME_T read_text(const std::string& text, const HESSIAN_IDENTITY_T& current = water().identity) {
  std::istringstream file(text);
  std::ostringstream report;
  OUTCOME_T outcome;
  outcome.status = read_hessian(file, "w.hess", current, outcome.content, report);
  outcome.report = report.str();
  return outcome;
}

/// The text with its first `from` replaced.
std::string changed(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

/// The text without a tag and what belongs to it.
std::string without(const std::string& text, const std::string& tag) {
  const std::size_t at = text.find("\n" + tag + "\n");
  EXPECT_NE(at, std::string::npos) << tag;
  return text.substr(0, at) + text.substr(text.find("\n$", at + 2));
}

}  // namespace

TEST(HessianFile, LayoutIsTheDocumentedOne) {
  HESSIAN_FILE_T content = water();
  content.gradient.resize(0);
  const std::string text = hessian_file_text(content);
  for (const std::string part :
       {"# Zentrix Hessian file\n# Format version: 1\n# Generated:      2",
        "# Basis:          6-31G*\n# ECP:            none\n# Spin:           restricted\n",
        "# Units:          bohr (geometry, gradient), Ha/bohr^2 (Hessian), cm^-1 (frequencies)\n\n$method\nB3LYP\n\n"
        "$basis\n6-31G*\n\n$ecp\nnone\n\n$spin\nrestricted\n\n$charge\n0\n\n$multiplicity\n1\n\n$natoms\n3\n\n$atoms\n"
        "  8 O    0.000000000000E+00   0.000000000000E+00   2.210000000000E-01\n",
        "\n\n$frequencies\n9\n", "\n\n$normal_modes\n",
        "\n\n$energy\n -7.640000000000E+01\n\n$gradient\n   0.000000000000E+00   0.000000000000E+00 "}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text;
  }
  // Five numbers of 21 characters on a line.
  const std::size_t row = text.find("\n\n$hessian\n9 9 \n") + 16;
  EXPECT_EQ(text.find('\n', row), row + 5 * 21);
  EXPECT_EQ(text.find('\n', row + 5 * 21 + 1), row + 5 * 21 + 1 + 4 * 21);
  EXPECT_EQ(text.substr(text.size() - 6), "\n$end\n");
}

TEST(HessianFile, WhatIsWrittenReadsBack) {
  const TEMPORARY_FOLDER folder;
  const std::string base = (folder.path() / "run").string();
  const HESSIAN_FILE_T content = water();
  std::ostringstream report;
  EXPECT_EQ(write_hessian_file(base, content, report), base + ".hess");
  EXPECT_EQ(write_hessian_file(base, content, report), base + "_2.hess");
  HESSIAN_FILE_T found;
  ASSERT_EQ(read_hessian_file(base + "_2.hess", content.identity, found, report), READ_STATUS::accepted) << report.str();
  EXPECT_LT((found.hessian - content.hessian).cwiseAbs().maxCoeff(), 1e-12);
  EXPECT_LT((found.modes - content.modes).cwiseAbs().maxCoeff(), 1e-12);
  EXPECT_LT((found.gradient - content.gradient).cwiseAbs().maxCoeff(), 1e-15);
  EXPECT_LT((found.frequencies - content.frequencies).cwiseAbs().maxCoeff(), 1e-8);
  EXPECT_DOUBLE_EQ(found.energy.value(), -76.4);
  std::ostringstream refused;
  EXPECT_EQ(read_hessian_file(base + ".nothing", content.identity, found, refused), READ_STATUS::no_file);
  EXPECT_NE(refused.str().find(" *** ERROR: cannot open Hessian file: " + base + ".nothing\n"), std::string::npos);
  EXPECT_EQ(read_hessian_file(folder.path(), content.identity, found, refused), READ_STATUS::no_file) << "a folder";
}

TEST(HessianFile, FreeFormatIsAccepted) {
  const HESSIAN_FILE_T content = water();
  std::string text = hessian_file_text(content);
  for (const char* tag : {"$energy", "$gradient", "$frequencies", "$normal_modes"}) text = without(text, tag);
  text = changed(text, "$hessian\n9 9 \n",
                 "stray line\n$own_tag of somebody\n12 apples\n$HESSIAN and more\n 9\n\n9 rest dropped\n");
  text = changed(text, "$method", "# a remark\n$Method");
  text = changed(text, "$charge\n0\n", "$charge\n+0 electrons\n");
  for (std::size_t at = text.find("E-0"); at != std::string::npos; at = text.find("E-0")) text.replace(at, 1, "D");
  std::string dos;
  for (const char c : text) dos += c == '\n' ? std::string("\r\n") : std::string(1, c);
  const OUTCOME_T outcome = read_text(dos);
  ASSERT_EQ(outcome.status, READ_STATUS::accepted) << outcome.report;
  EXPECT_LT((outcome.content.hessian - content.hessian).cwiseAbs().maxCoeff(), 1e-12);
  EXPECT_FALSE(outcome.content.energy.has_value());
  EXPECT_EQ(outcome.content.modes.size() + outcome.content.gradient.size() + outcome.content.frequencies.size(), 0);
}

TEST(HessianFile, FaultyFilesAreRefusedWithTheirLine) {
  const std::string text = hessian_file_text(water());
  const auto expect_refusal = [](READ_STATUS status, const std::string& faulty, const std::string& line) {
    const OUTCOME_T outcome = read_text(faulty);
    EXPECT_EQ(outcome.status, status) << line;
    EXPECT_EQ(outcome.report, line);
  };
  const std::string no_version = " *** ERROR: w.hess: missing \"# Format version:\" header.\n";
  expect_refusal(READ_STATUS::no_version, "", no_version);
  expect_refusal(READ_STATUS::no_version, changed(text, "# Format version: 1\n", ""), no_version);
  expect_refusal(READ_STATUS::other_version, changed(text, "version: 1", "version: 2"),
                 " *** ERROR: Hessian file format version 2 is incompatible with current version 1\n");
  const std::string no_count = changed(text, "$natoms\n3\n", "");
  expect_refusal(READ_STATUS::out_of_order, no_count, " *** ERROR: $atoms before $natoms\n");
  expect_refusal(READ_STATUS::out_of_order, without(no_count, "$atoms"), " *** ERROR: $gradient before $natoms\n");
  expect_refusal(READ_STATUS::other_size, changed(text, "9 9 \n", "6 6 \n"),
                 " *** ERROR: $hessian: matrix size 6 x 6 but expected 9\n");
  for (const auto& [from, to] : {std::pair{"$natoms\n3\n", "$natoms\n3000000000\n"},
                                 {"$natoms\n3\n", "$natoms\n-3\n"},
                                 {"$charge\n0\n", "$charge\nnone\n"},
                                 {"$frequencies\n9\n", "$frequencies\n99\n"},
                                 {"2.210000000000E-01", "nan"}})
    expect_refusal(READ_STATUS::malformed, changed(text, from, to),
                   " *** ERROR: w.hess: malformed Hessian file (parse error).\n");
  expect_refusal(READ_STATUS::malformed, text.substr(0, text.find("$frequencies") - 300),
                 " *** ERROR: w.hess: malformed Hessian file (parse error).\n");
  for (const char* tag : {"$method", "$basis", "$ecp", "$spin", "$charge", "$multiplicity", "$hessian"})
    expect_refusal(READ_STATUS::incomplete, without(text, tag), " *** ERROR: w.hess: required tag(s) missing.\n");
}

TEST(HessianFile, MustBelongToTheRun) {
  const std::string text = hessian_file_text(water());
  const auto expect_refusal = [&](READ_STATUS status, const std::string& lines, const auto& change) {
    HESSIAN_IDENTITY_T run = water().identity;
    change(run);
    const OUTCOME_T outcome = read_text(text, run);
    EXPECT_EQ(outcome.status, status) << lines;
    EXPECT_EQ(outcome.report, lines);
  };
  const auto mismatch = [](const std::string& item, const std::string& there, const std::string& here) {
    return " *** ERROR: hess_file " + item + " mismatch:\n              file:    " + there +
           "\n              input:   " + here +
           "\n              Run aborted; the cached Hessian is inconsistent with the current run.\n";
  };
  expect_refusal(READ_STATUS::other_element, " *** ERROR: hess_file atom 2: Z = 1, current Z = 9\n",
                 [](auto& run) { run.atoms[1].z = 9; });
  expect_refusal(READ_STATUS::other_geometry,
                 " *** ERROR: hess_file geometry mismatch on atom 3\n"
                 "            file:        0.0000000000    -1.4310000000    -0.8870000000\n"
                 "            input:       0.0000000000    -1.4310200000    -0.8870000000\n"
                 "            |dx| = 2.000e-05 bohr  (tolerance 1.000e-05 bohr)\n"
                 "            Run aborted; recompute the Hessian at the current geometry.\n",
                 [](auto& run) { run.atoms[0].position[0] += 5e-6, run.atoms[2].position[1] -= 2e-5; });
  expect_refusal(READ_STATUS::other_method, mismatch("method", "B3LYP", "HF"), [](auto& run) { run.method = "HF"; });
  expect_refusal(READ_STATUS::other_basis, mismatch("basis", "6-31G*", "6-31G"), [](auto& run) { run.basis = "6-31G"; });
  expect_refusal(READ_STATUS::other_ecp, mismatch("ECP", "none", "LANL2DZ"), [](auto& run) { run.ecp = "LANL2DZ"; });
  expect_refusal(READ_STATUS::other_spin, mismatch("spin", "restricted", "unrestricted"),
                 [](auto& run) { run.spin = "unrestricted"; });
  EXPECT_EQ(read_text(changed(text, "$spin\nrestricted", "$spin\n RHF")).report, mismatch("spin", "RHF", "restricted"));
  expect_refusal(READ_STATUS::other_charge, " *** ERROR: hess_file charge = 0, current charge = -1\n",
                 [](auto& run) { run.charge = -1; });
  expect_refusal(READ_STATUS::other_multiplicity, " *** ERROR: hess_file mult = 1, current mult = 3\n",
                 [](auto& run) { run.multiplicity = 3; });
  // The atom count is compared when the matrix has the run's size all the same.
  EXPECT_EQ(read_text(without(changed(text, "$natoms\n3\n", "$natoms\n2\n"), "$gradient")).report,
            " *** ERROR: hess_file natom = 2, current natom = 3\n");
  HESSIAN_FILE_T alike = water();
  alike.identity.method = " b3lyp";
  alike.identity.ecp = "NONE";
  alike.identity.atoms[1].position[2] += 5e-6;
  const OUTCOME_T outcome = read_text(text, alike.identity);
  EXPECT_EQ(outcome.status, READ_STATUS::accepted);
  EXPECT_NE(outcome.report.find("max dx = 0.00000500 bohr (within tolerance).\n"), std::string::npos);
}

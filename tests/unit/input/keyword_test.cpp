#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <set>

#include "input/keyword_table.hpp"
#include "input/text.hpp"
#include "parsing.hpp"

namespace zentrix {
namespace {

using namespace INPUT_PARSER;
using TESTS::helium;
using TESTS::parse;

/// Keyword lines must leave the record as the check behind them says.
void expect_fields(const std::vector<std::pair<std::string, bool (*)(const INPUT_DATA_T&)>>& cases) {
  for (const auto& [lines, holds] : cases) {
    const auto result = parse(lines + "\n" + helium);
    EXPECT_EQ(result.error, 0) << lines << "\n" << result.report;
    EXPECT_TRUE(holds(result.input)) << lines;
  }
}

TEST(Keywords, FillTheirFields) {
  using IN = INPUT_DATA_T;
  expect_fields({
      {"", [](const IN& in) { return in.method == "HF" && in.basis == "STO-3G" && in.grid == "6" && in.frozen_core == -1; }},
      {"", [](const IN& in) { return in.scf_maxiter == 150 && in.scf_etol == 1e-8 && in.scf_ptol == 1e-6; }},
      {"",
       [](const IN& in) { return in.scf_gtol == 1e-5 && in.scf_diis_cond_max == 1e10 && in.eri_memory_limit_mb == 4096; }},
      {"%METHOD ump2", [](const IN& in) { return in.method == "UMP2"; }},
      {"%disp d3(bj)", [](const IN& in) { return in.dispersion == "D3(BJ)"; }},
      {"%charge +2\n%multiplicity 3", [](const IN& in) { return in.charge == 2 && in.multiplicity == 3; }},
      {"%job cp\n%job hessian", [](const IN& in) { return in.job == JOB::freq; }},
      {"%job Opt_TS+Freq", [](const IN& in) { return in.job == JOB::ts_freq; }},
      {"%spin uks", [](const IN& in) { return in.unrestricted; }},
      {"%spherical\n%pump2", [](const IN& in) { return in.spherical && in.pump2; }},
      {"%spherical\n%spherical F", [](const IN& in) { return !in.spherical; }},
      {"%boys_precise on\n%molden_mo T", [](const IN& in) { return in.boys_precise && in.export_mo; }},
      {"%scf_gtol\t1D-6\t", [](const IN& in) { return in.scf_gtol == 1e-6; }},
      {"%geom_maxiter 80", [](const IN& in) { return in.geom_maxiter == 80; }},
      {"%level_shift none", [](const IN& in) { return in.level_shift_mode == LEVEL_SHIFT::off; }},
      {"%level_shift 0.3", [](const IN& in) { return in.level_shift_mode == LEVEL_SHIFT::fixed && in.level_shift == 0.3; }},
      {"%level_shift 0.3\n%level_shift auto",
       [](const IN& in) { return in.level_shift_mode == LEVEL_SHIFT::automatic && in.level_shift == 0.0; }},
      {"%converger off", [](const IN& in) { return in.scf_converger == "NONE"; }},
      {"%grid gfine", [](const IN& in) { return in.grid == "FINE"; }},
      {"%grid_quality 10", [](const IN& in) { return in.grid == "10"; }},
      {"%grad_method 0", [](const IN& in) { return in.semi_analytical_gradient; }},
      {"%read_hess My Water.hess  # old", [](const IN& in) { return in.read_hess == "My Water.hess"; }},
      {"%solvent Water", [](const IN& in) { return in.solvent_given && in.solvent == "Water"; }},
      {"%pcm ief-pcm", [](const IN& in) { return in.pcm_given && in.pcm_model == PCM_MODEL::iefpcm; }},
      {"%pcm cosmo\n%pcm none", [](const IN& in) { return !in.pcm_given; }},
      {"%epsilon 4.7", [](const IN& in) { return in.eps_given && in.eps == 4.7; }},
      {"%eps 4.7\n%pcm cpcm\n%solvent none",
       [](const IN& in) { return !in.eps_given && !in.pcm_given && !in.solvent_given; }},
      {"%pcm none\n%solvent water", [](const IN& in) { return !in.pcm_given && !in.solvent_given; }},
      {"%pcm none\n%solvent water\n%pcm cosmo", [](const IN& in) { return in.pcm_given && in.solvent_given; }},
  });
}

TEST(Keywords, BasisAndEcpNamesPerElement) {
  using IN = INPUT_DATA_T;
  expect_fields({
      {"%basis 6-311++G(2d, 2p)", [](const IN& in) { return in.basis == "6-311++G(2d, 2p)" && in.element_basis.empty(); }},
      {"%basis MIDI! ! comment", [](const IN& in) { return in.basis == "MIDI!"; }},
      {"%basis cc-pVDZ\n%basis br = LANL2DZ",
       [](const IN& in) {
         return in.basis == "mixed" && basis_name_of(in, 35) == "LANL2DZ" && basis_name_of(in, 1) == "cc-pVDZ";
       }},
      {"%basis H=STO-3G\n%basis cc-pVDZ\n%basis H=6-31G",
       [](const IN& in) {
         return in.basis == "mixed" && basis_name_of(in, 1) == "6-31G" && basis_name_of(in, 6) == "cc-pVDZ";
       }},
      {"%ecp NONE", [](const IN& in) { return in.ecp == "none" && in.default_ecp == "none"; }},
      {"%ecp I=SDD",
       [](const IN& in) { return in.ecp == "mixed" && in.element_ecp.at(53) == "SDD" && in.default_ecp.empty(); }},
  });
}

TEST(Keywords, RefusedValuesQuoteTheLineAndWhatIsAccepted) {
  // What is accepted comes from the table, whose texts the manual pins.
  for (const char* faulty :
       {"%job dance",    "%charge 1.5",     "%charge 99999999999", "%charge -2147483648", "%charge +-1",
        "%mult 0",       "%spin both",      "%scf_maxiter 10x",    "%scf_etol nan",       "%scf_etol -1e-8",
        "%scf_ptol inf", "%scf_ptol 1e-6x", "%scf_gtol 1e999",     "%level_shift some",   "%level_shift 1e300",
        "%damping 1",    "%eps 0.99",       "%eri_mem_limit 0",    "%occupation fermi",   "%scf_diis_cond_max 1",
        "%guess huckel", "%opt_coord z",    "%initial_hess unit",  "%frozen_core -2",     "%basis Zz=STO-3G",
        "%basis H=",     "%grid 11",        "%pump2 maybe",        "%xc_deriv x",         "%pcm smd"}) {
    const std::string line = faulty, word = line.substr(1, line.find(' ') - 1);
    const KEYWORD_T* row = find_keyword(upper(word));
    ASSERT_NE(row, nullptr) << word;
    TESTS::expect_refusals(
        {{fmt::format("\n  {}   ! why\n{}", line, helium),
          " *** ERROR: Invalid value for %" + word +
              "\n            (please check spelling).\n            Offending input line:\n              " + line +
              "   ! why\n            Valid: " + row->valid + "\n"}});
  }
}

TEST(Keywords, MissingValuesAndUnknownKeywords) {
  EXPECT_EQ(parse("%Charge\n" + helium).report,
            " *** ERROR: Missing or empty value for %Charge\n            (please check spelling).\n"
            "            Offending input line:\n              %Charge\n"
            "            Valid: expected: integer (e.g. 0, +1, -1)\n            Run aborted.\n");
  for (const char* word : {"methd", "geom_steps", "scan_points", "constrain_bonds", "basis=STO-3G"}) {
    const std::string line = fmt::format("%{} hf", word);
    EXPECT_EQ(parse(line + "\n%another fault\n").report,
              " *** ERROR: Unknown input keyword: %" + std::string(word) +
                  " (please check spelling).\n            Offending input line:\n              " + line +
                  "\n            Run aborted.\n");
  }
}

TEST(Keywords, EveryNameIsUniqueAndEveryWordIsAccepted) {
  std::set<std::string> names;
  for (const KEYWORD_T& row : keyword_table()) {
    EXPECT_TRUE(names.insert(row.name).second) << row.name;
    for (const char* alias : row.aliases) {
      EXPECT_TRUE(names.insert(alias).second) << alias;
      EXPECT_EQ(find_keyword(alias), &row);
    }
    EXPECT_STRNE(row.valid, "") << row.name;
    for (const WORD_GROUP_T& group : row.value.words) {
      for (const std::string& word : group) {
        INPUT_DATA_T input;
        EXPECT_TRUE(row.value.set(input, word)) << row.name << " " << word;
      }
    }
  }
}

/// ZENTRIX_UPDATE_DOCS=1 rewrites the chapter instead of comparing it.
TEST(Keywords, ManualChapterFollowsTheTable) {
  const std::string path = ZENTRIX_SOURCE_DIR "/docs/keywords.md";
  if (std::getenv("ZENTRIX_UPDATE_DOCS") != nullptr) std::ofstream(path) << keyword_manual();
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(), keyword_manual()) << "run ZENTRIX_UPDATE_DOCS=1 build/tests/test_input to rewrite it";
}

}  // namespace
}  // namespace zentrix

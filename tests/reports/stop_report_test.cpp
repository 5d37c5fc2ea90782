#include "support/program_run.hpp"

using namespace zentrix;

namespace {

/// Water with these lines before it stops; a timing profile is asked for and must not follow.
void expect_stops(const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [lines, last_lines] : cases) expect_stop(lines + "%print_time\n" + water_block, last_lines);
}

std::string missing(const std::string& feature) { return " *** ERROR: Not available in this version: " + feature + ".\n"; }

}  // namespace

TEST(StopReport, RequestsThatThisVersionCannotServe) {
  expect_stops({
      {"%job freq\n%hess_method full\n", missing("%hess_method analytical")},
      {"%job opt+freq\n%read_hess run.hess\n", missing("%read_hess with %job opt+freq")},
      {"%job freq\n%method mp2\n", missing("%job freq with %method MP2")},
      {"%job ts\n%method mp2\n",
       " *** ERROR: TS search does not yet support MP2 / UMP2 / PUMP2.\n            Use HF or DFT in this release.\n"},
      {"%job gradient\n%method mp2\n", missing("%job gradient with %method MP2")},
      {"%job opt\n%method ump2\n", missing("%job opt with %method UMP2")},
      {"%method ump2\n%pump2\n", missing("%pump2")},
      {"%pump2\n", missing("%pump2")},
      {"%dispersion d4\n", missing("%dispersion D4")},
      {"%solvent water\n", missing("continuum solvation (%solvent, %eps, %pcm)")},
      {"%eps 4.0\n", missing("continuum solvation (%solvent, %eps, %pcm)")},
      {"%pcm cosmo\n", missing("continuum solvation (%solvent, %eps, %pcm)")},
  });
}

TEST(StopReport, SolvationThatCannotBe) {
  const std::string deferred =
      " *** PCM ERROR: PCM with this %job is deferred.\n"
      "     Stage 2.2b supports %job energy, gradient, opt.\n"
      "     %job freq, opt+freq, bsse, scan, ts are deferred to\n"
      "     later Stage 2 sub-stages.  Either pick a supported\n"
      "     %job, or remove %solvent / %eps / %pcm.\n";
  const std::string no_correlation =
      " *** PCM ERROR: MP2/UMP2/PUMP2 + PCM is not implemented in v0.74.0.\n"
      "     SCF-level PCM (HF, DFT) is fully supported.  Drop \"%method ump2/mp2\"\n"
      "     or remove the solvent keywords to proceed.\n";
  expect_stops({
      {"%solvent Octanol\n",
       " *** PCM ERROR: Unknown solvent \"Octanol\"\n"
       "   Recognized solvent names (epsilon values):\n"
       "     water     ( 78.36)   methanol  ( 32.61)   ethanol     ( 24.85)\n"
       "     acetone   ( 20.49)   mecn      ( 35.69)   dmso        ( 46.83)\n"
       "     dmf       ( 37.22)   thf       (  7.43)   chcl3       (  4.71)\n"
       "     ccl4      (  2.23)   dcm       (  8.93)   toluene     (  2.37)\n"
       "     benzene   (  2.27)   cyclohexane(2.02)   hexane      (  1.88)\n"
       "     ether     (  4.24)   etoac     (  5.99)   ammonia     ( 22.40)\n"
       "   Use \"%eps <value>\" to override or set a custom permittivity.\n"},
      {"%method mp2\n%solvent water\n", no_correlation},
      {"%pump2\n%eps 2\n", no_correlation},
      {"%pcm cpcm\n%job freq\n", deferred},
      {"%solvent dmso\n%job opt+freq\n", deferred},
      {"%eps 10\n%job ts\n", deferred},
  });
  expect_report("%solvent Thf\n" + water_block, {"   PCM solvent:      Thf (eps=7.4257)\n"}, 1);
}

TEST(StopReport, SettingsThatSwitchSomethingOffAreServed) {
  expect_report(
      "%dispersion none\n%solvent none\n%pcm none\n%export_mo no\n%pump2 no\n%guess core\n%spin rhf\n" + water_block, {});
}

TEST(StopReport, EcpMoleculesStopAfterTheSummary) {
  const std::string ending = missing("integrals of effective core potentials (1 centers)");
  const PROGRAM_RUN_T run =
      expect_report("%basis LANL2DZ\n%geo\nBr 0 0 0\nH 0 0 1.41\n*end\n", {"   ECP centers:                1\n", ending}, 1);
  EXPECT_TRUE(run.ends_with(ending)) << run.report;
}

TEST(StopReport, AbsurdSizesEndWithALine) {
  std::string many = "%geo\n";
  for (int i = 0; i < 100000; ++i) many += "He " + std::to_string(i % 300) + " 0 " + std::to_string(i / 300) + "\n";
  expect_report(many + "*end\n",
                {" *** ERROR: Not enough memory: the matrices of 100000 basis functions take some 2746582 MB,\n"}, 1);
  expect_report(water_block, {"   *** WARNING: 1000000 threads were asked for; "}, 0,
                "OMP_NUM_THREADS=1000000 PROGRAM run.inp");
}

TEST(StopReport, FatalLines) {
  const auto unknown = [](const std::string& name) {
    return " *** ERROR: Unknown method/functional: \"" + name +
           "\"\n     Available: HF, SVWN, SVWN3, SVWN5, BLYP, BP86, BPW91, PBE, B3LYP, B3LYP3, B3LYP5, PBE0, R2SCAN\n";
  };
  expect_stops({
      {"%metod hf\n",
       " *** ERROR: Unknown input keyword: %metod (please check spelling).\n"
       "            Offending input line:\n              %metod hf\n            Run aborted.\n"
       " *** FATAL: Input parsing failed, error = 1\n"},
      {"%method tpss\n", unknown("tpss")},
      {"%method PBE 0  # not PBE\n", unknown("PBE 0")},
      {"%basis no-such-basis\n", "     File not found.\n *** FATAL: Molecule build failed, error = 1\n"},
  });
}

TEST(StopReport, InputDatIsReadWhenNoFileIsNamed) {
  expect_report(helium_block,
                {" --- Section 1: Input & Setup ---\n Usage: zentrix <input_file>\n"
                 " No input file specified, looking for \"input.dat\"...\n Reading input from: input.dat\n"},
                0, "mv run.inp input.dat; PROGRAM");
}

TEST(StopReport, HelpAndVersionAnswerWithoutARun) {
  EXPECT_FALSE(expect_report("", {"Usage: zentrix"}, 0, "PROGRAM --help").says("Section"));
  EXPECT_EQ(expect_report("", {}, 0, "PROGRAM --version").report, "zentrix 0.82.1 (2026-06-07)\n");
}

TEST(StopReport, SignalsTellWhereTheRunStood) {
  // The reader of the pipe sends the signal once the first row of the iteration table is there: a line must reach it at
  // once.
  const std::string input = "%basis cc-pVQZ\n%eri_memory_limit_mb 1\n" + water_block;
  for (const auto& [name, status] : {std::pair{"INT", 130}, std::pair{"TERM", 143}}) {
    const std::string command = std::string(
                                    "mkfifo pipe; PROGRAM run.inp > pipe & program=$!; while read -r line; do "
                                    "echo \"$line\"; case \"$line\" in 1\\ *yes|1\\ *no) kill -s ") +
                                name + " $program;; esac; done < pipe; wait $program";
    const std::string stop = std::string("*** Run stopped by SIG") + name + " during Section 3 (SCF).\n";
    EXPECT_TRUE(expect_report(input, {stop}, status, "bash -c '" + command + "'").ends_with(stop));
  }
}

TEST(StopReport, AReportThatCannotBeWrittenIsAnError) {
  EXPECT_EQ(expect_report(water_block, {}, 1, "PROGRAM run.inp > /dev/full").report,
            " *** ERROR: The report could not be written in full.\n");
}

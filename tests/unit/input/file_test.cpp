#include <gtest/gtest.h>

#include "parsing.hpp"

// Lines, comments and blocks: what surrounds the values.

namespace zentrix {
namespace {

using namespace INPUT_PARSER;
using TESTS::helium;
using TESTS::parse;
using TESTS::peroxide;

TEST(InputFile, LineEndsBlanksAndCommentsDoNotMatter) {
  const char* same[] = {
      "%charge 1\n%geo\nH 0 0 0\nHe 0 0 1\n*end\n",
      "%charge 1\r\n%geo\r\nH 0 0 0\r\nHe 0 0 1\r\n*end",
      "\xEF\xBB\xBF%charge 1\n*geom\n\tH\t0\t0\t0\t\n  He 0 0 1\n*End\n",
      "# title %job\n! note\n%charge 1 # cation\n%geometry ! bohr\nH 0 0 0 ! first\n#H 0 0 9\n\nHe 0 0 1\n *END of it\n",
      "%GEO angstrom\nh 0 0 0\nhe 0 0 1\n*end\n%CHARGE 1",
  };
  for (const char* text : same) {
    const auto result = parse(text);
    EXPECT_EQ(result.report, "") << text;
    ASSERT_EQ(result.input.atoms.size(), 2u) << text;
    EXPECT_EQ(result.input.charge, 1);
    EXPECT_FALSE(result.input.bohr_units);
    EXPECT_DOUBLE_EQ(result.input.atoms[1].position[2], 1.8897261246257702);
  }
}

TEST(InputFile, TextThatIsNotUsedIsQuoted) {
  const std::pair<const char*, const char*> cases[] = {
      {"%charge 1 2\n%geo\nHe 0 0 0\n*end\n", "   *** WARNING: text after the value is ignored: 2\n"},
      {"%geo\nHe 0 0 0 0.5 q\n*end\n", "   *** WARNING: text after the value is ignored: 0.5 q\n"},
      {"%geo bhor\nHe 0 0 0\n*end\n", "   *** WARNING: text after the value is ignored: bhor\n"},
      {"%gz\nHe 1\n*end\n", "   *** WARNING: text after the value is ignored: 1\n"},
      {"method b3lyp\n%geo\nHe 0 0 0\n*end\n", "   *** WARNING: line outside any block is ignored: method b3lyp\n"},
      {"%geo\nHe 0 0 0\n*end\n%scan\nR 2 1 2 0.1\n*end\n", "   *** WARNING: the %scan block is not used by this job.\n"},
      {"%read_hess a.hess\n%geo\nHe 0 0 0\n*end\n", "   *** WARNING: %read_hess is not used by this job.\n"},
      {"%scf_maxiter 6\n%geo\nHe 0 0 0\n*end\n",
       "   *** WARNING: no SCF can converge in %scf_maxiter 6 iterations: it takes 7 at least.\n"},
      {"%job freq\n%ts_mode 2\n%geo\nHe 0 0 0\n*end\n", "   *** WARNING: %ts_mode is not used by this job.\n"},
      {"%geom_maxiter 9\n%basis Br=STO-3G\n%pcm_lebedev 50\n%geo\nHe 0 0 0\n*end\n",
       "   *** WARNING: %geom_maxiter is not used by this job.\n"
       "   *** WARNING: %pcm_lebedev is not used by this job.\n"
       "   *** WARNING: %basis Br=STO-3G names an element that is not there.\n"},
      {"%print_grad\n%print_mo\n%geo\nHe 0 0 0\n*end\n", "   *** WARNING: %print_grad is not used by this job.\n"},
      {"%job scan\n%print_mo\n%gz\nHe\nHe 1 3\n*end\n%scan\nR 2 3 4 1\n*end\n",
       "   *** WARNING: %print_mo is not used by this job.\n"},
      {"%job ts\n%grad_tol 1e-5\n%geo\nHe 0 0 0\n*end\n",
       "   NOTE: %grad_tol sets the limits of the Cartesian optimizer (%opt_coord cart);\n"
       "         other searches have fixed ones.\n"},
      {"%job opt\n%grad_tol 1e-5\n%geo\nHe 0 0 0\nHe 0 0 3\n*end\n", ""},
  };
  for (const auto& [text, warning] : cases) {
    const auto result = parse(text);
    EXPECT_EQ(result.error, 0);
    EXPECT_EQ(result.report, warning);
  }
}

TEST(InputFile, LinesUpToTheBufferAreWholeAndLongerOnesAreRefused) {
  const std::string longest = "%read_hess " + std::string(512 - 11, 'x');
  EXPECT_EQ(parse(longest + "\r\n" + helium).input.read_hess.size(), 501u);
  TESTS::expect_refusals({{longest + "x\n" + helium,
                           " *** ERROR: input line is longer than 512 characters; it begins:\n              %read_hess " +
                               std::string(49, 'x') + "\n"}});
}

TEST(InputFile, NulCharactersAreNoBlanks) {
  // "0\0" once read as "0" and the rest of the number as a column of its own; the second text is UTF-16.
  const std::string cut(
      "%geo\nHe 0 0 0.\0"
      "117\n*end\n",
      23);
  const std::string wide("\xFF\xFE%\0g\0e\0o\0\n\0", 12);
  const char* message = " *** ERROR: the input file contains NUL characters; it must be plain text (ASCII or UTF-8).\n";
  TESTS::expect_refusals({{cut, message}, {wide, message}});
}

TEST(InputFile, BlocksThatStayOpenOrComeTwice) {
  TESTS::expect_refusals({
      {"%scan\nR 2 1 2 0.1\n%method hf\n", " *** ERROR: %-keyword inside an open %scan block (missing *end?): %method hf\n"},
      {"%constrain\n%job opt\n", " *** ERROR: %-keyword inside an open %constrain block (missing *end?): %job opt\n"},
      {"%geo\nHe 0 0 0\n%job opt\n", " *** ERROR: %-keyword inside an open %geo block (missing *end?): %job opt\n"},
      {"%gz\nHe\n%end\n", " *** ERROR: %-keyword inside an open %gz block (missing *end?): %end\n"},
      {"%geo\nHe 0 0 0\n", " *** ERROR: %geo block is not closed (missing *end).\n"},
      {helium + "%scan\n", " *** ERROR: %scan block is not closed (missing *end).\n"},
      {helium + helium, " *** ERROR: more than one geometry block (%geo or %gz) in the input file.\n"},
      {peroxide + helium, " *** ERROR: more than one geometry block (%geo or %gz) in the input file.\n"},
      {"", " *** ERROR: No atoms found in input file.\n"},
      {"%geo\n*end\n", " *** ERROR: No atoms found in input file.\n"},
  });
}

TEST(InputFile, FilesThatCannotBeRead) {
  for (const char* name : {"/nonexistent/Water.inp", "/tmp"}) {
    INPUT_DATA_T input;
    std::ostringstream report;
    EXPECT_EQ(parse_input(name, input, report), 1);
    EXPECT_EQ(report.str(), " *** ERROR: Cannot open input file: " + std::string(name) + "\n            Run aborted.\n");
  }
}

}  // namespace
}  // namespace zentrix

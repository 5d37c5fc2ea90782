#include <gtest/gtest.h>

#include <Eigen/Geometry>
#include <tuple>

#include "constants/units.hpp"
#include "parsing.hpp"

namespace zentrix {
namespace {

using namespace INPUT_PARSER;
using TESTS::expect_refusals;
using TESTS::parse;

TEST(CartesianGeometry, TokensAndUnits) {
  const auto angstrom = parse("%geo\n8 0 0 0\nO2 0 0 1.2\nxe17 -1.5 2.5e0 +3D0\n*end\n");
  ASSERT_EQ(angstrom.error, 0) << angstrom.report;
  EXPECT_EQ(angstrom.input.atoms[0].z, 8);
  EXPECT_EQ(angstrom.input.atoms[1].token, "O2");
  EXPECT_EQ(angstrom.input.atoms[2].z, 54);
  EXPECT_DOUBLE_EQ(angstrom.input.atoms[2].position[2], 3.0 * 1.8897261246257702);
  const auto bohr = parse("*geom (BOHR)\nH 0 0 0\nH 0 0 1.4\n*end\n");
  EXPECT_TRUE(bohr.input.bohr_units);
  EXPECT_EQ(bohr.input.atoms[1].position[2], 1.4);
}

TEST(CartesianGeometry, FaultyLines) {
  const std::string formats =
      "\n            Accepted formats:\n              <AtomicNumber>           (e.g. 6, 8, 1)\n"
      "              <Element>                (e.g. C, O, H)\n"
      "              <Element><OrderingNumber> (e.g. C1, O5, H12)\n";
  for (const std::string token : {"Xx", "0", "119", "-6", "C1a", "1C", "Hyd", "C_1", "99999999999999999999"})
    expect_refusals({{token, " *** ERROR: Unrecognized atom token: " + token + formats}}, "%geo\n", " 0 0 0\n*end\n");
  for (const std::string line : {"C 0 0", "C", "C 0 0 x", "C 0 0 nan", "C 0 0 1e999", "C 0 1e300 0", "C 0,0 0 0"})
    expect_refusals({{line, " *** ERROR parsing geometry line: " + line + "\n"}}, "%geo\n", "\n*end\n");
}

TEST(CartesianGeometry, AtomsOnTopOfEachOther) {
  expect_refusals(
      {{"%geo\nH 1 2 3\nC 0 0 0\nH 1 2 3.0001\n*end\n", " *** ERROR: atoms 1 and 3 are at the same position.\n"}});
  EXPECT_EQ(parse("%geo bohr\nH 0 0 0\nH 0 0 0.0011\n*end\n").error, 0);
  EXPECT_EQ(parse("%gz\nH\nH 1 0.0\n*end\n").error, 1);
  // A long chain, a plane: no pairwise comparison may be left. (A quadratic search takes minutes here.)
  std::string text = "%geo\n";
  for (int i = 0; i < 100000; ++i) text += "H 0 " + std::to_string(i % 300) + " " + std::to_string(i / 300) + "\n";
  EXPECT_EQ(parse(text + "*end\n").input.atoms.size(), 100000u);
}

TEST(Fragments, AreReadCountedAndChecked) {
  const std::string job = "%job cp\n";
  const std::string dimer = "%geo\nHe 0 0 0 2\nHe 0 0 3 1\nHe 0 0 6 2\n*end\n";
  const char* counted = "   BSSE: 2 fragments detected:\n         fragment 1: 1 atoms\n         fragment 2: 2 atoms\n";
  for (const std::string& text : {job + dimer, dimer + job}) {
    const auto result = parse(text);
    ASSERT_EQ(result.report, counted);
    EXPECT_EQ(result.input.n_fragments, 2);
    EXPECT_EQ(result.input.atoms[0].fragment, 2);
  }
  const auto form = [](const std::string& line) {
    return " *** ERROR parsing %geo line under %job bsse:\n              " + line +
           "\n            Expected 5 columns: <Atom>  X  Y  Z  ifrag\n";
  };
  expect_refusals({
      {job + "%geo\nHe 0 0 0\n*end\n", form("He 0 0 0")},
      {"%geo\nHe 0 0 0\n*end\n" + job, form("He 0 0 0")},
      {job + "%geo\nHe 0 0 0 A\n*end\n", form("He 0 0 0 A")},
      {job + "%geo\nHe 0 0 0 0\n*end\n", " *** ERROR: fragment index must be >= 1, got 0\n"},
      {job + "%geo\nHe 0 0 x 1\n*end\n", " *** ERROR parsing geometry line: He 0 0 x 1\n"},
      {job + "%geo\nHe 0 0 0 1\n*end\n", " *** ERROR: %job bsse requires at least 2 fragments; found 1\n"},
      {job + TESTS::peroxide, " *** ERROR: %job bsse requires at least 2 fragments; found 0\n"},
      {job + "%geo\nHe 0 0 0 1\nHe 0 0 3 4\n*end\n", " *** ERROR: fragment 2 is missing (max ifrag = 4).\n"},
  });
}

TEST(Fragments, ChargesAndMultiplicities) {
  // Li (1), H2O (2), O2 (3).
  const std::string geometry =
      "%job bsse\n%geo\nLi 0 0 0 1\nO 0 0 2 2\nH 0 0.8 2.6 2\nH 0 -0.8 2.6 2\nO 4 0 0 3\nO 4 0 1.2 3\n*end\n";
  const std::tuple<std::string, std::vector<std::pair<int, int>>, std::string> cases[] = {
      {"%mult 2\n",
       {{0, 2}, {0, 1}, {0, 1}},
       "   NOTE: fragment 1 has an odd number of electrons and is computed as a doublet.\n"},
      {"%charge 1\n%charge 1=+1\n", {{1, 1}, {0, 1}, {0, 1}}, ""},
      {"%charge 1\n%charge 2=0\n%charge 3=0\n", {{1, 1}, {0, 1}, {0, 1}}, ""},  // the only one left has the rest
      {"%charge 1\n%charge 1=1\n%mult 3\n%mult 3=3\n", {{1, 1}, {0, 1}, {0, 3}}, ""},
      {"%mult 2\n%mult 1=2\n", {{0, 2}, {0, 1}, {0, 1}}, ""},
  };
  for (const auto& [lines, states, note] : cases) {
    SCOPED_TRACE(lines);
    const auto result = parse(lines + geometry);
    ASSERT_EQ(result.error, 0) << result.report;
    EXPECT_NE(result.report.find(note), std::string::npos) << result.report;
    for (int f = 1; f <= 3; ++f)
      EXPECT_EQ(std::pair(result.input.fragment_charge.at(f), result.input.fragment_multiplicity.at(f)),
                states[static_cast<std::size_t>(f - 1)]);
  }
  const std::string error =
      "   BSSE: 3 fragments detected:\n         fragment 1: 1 atoms\n         fragment 2: 3 atoms\n"
      "         fragment 3: 2 atoms\n *** ERROR: ";
  const std::string charges = "            Give the charge of a fragment k with \"%charge k=value\".\n";
  expect_refusals(
      {{"%charge 1\n", error + "the charges of the fragments add up to +0, the complex has +1.\n" + charges},
       {"%charge 1=3\n", error + "the charges of the fragments add up to +3, the complex has +0.\n" + charges},
       {"%charge 3\n%charge 1=3\n",
        error + "fragment 1 has 0 electrons.\n            Check \"%charge 1=value\" and the fragment numbers.\n"},
       {"%mult 2\n%mult 1=2\n%mult 2=2\n", error + "fragment 2 has 10 electrons and cannot have multiplicity 2.\n"
                                                   "            Give another one with \"%mult 2=value\".\n"},
       {"%charge 1\n%charge 1=1\n%mult 3\n",
        error + "the complex has 2 unpaired electrons, its fragments 0 in all.\n"
                "            Give the multiplicity of a fragment k with \"%mult k=value\".\n"},
       {"%charge 4=1\n", error + "%charge 4=1 names a fragment that is not there (3 fragments).\n"}},
      "", geometry);
  EXPECT_EQ(parse("%charge 2=1\n%geo\nHe 0 0 0\n*end\n").report,
            "   *** WARNING: charges and multiplicities of fragments are not used by this job.\n");
  for (const char* faulty : {"%charge 0=1\n", "%charge 1=\n", "%charge =1\n", "%mult 1=0\n", "%mult x=1\n"})
    EXPECT_NE(parse(faulty + geometry).error, 0) << faulty;
}

TEST(Zmatrix, FaultyRows) {
  const std::string three = "H\nO 1 0.96\nO 2 1.4 1 100\n";
  std::string many;
  for (int i = 0; i < 501; ++i) many += "H\n";
  const auto bad_row = [](int row, const std::string& line, const std::string& form) {
    return " *** ERROR: cannot parse %gz line " + std::to_string(row) + "\n              " + line +
           "\n            expected: " + form + "\n";
  };
  const std::string form4 = "<Atom> <Ref1> <R/Ang> <Ref2> <theta/deg> <Ref3> <phi/deg>";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", " *** ERROR: empty %gz block.\n"},
      {many, " *** ERROR: %gz block exceeds maximum 500 atoms.\n"},
      {"H\nO 1\n", bad_row(2, "O 1", "<Atom> <Ref1> <R/Ang>")},
      {"H\nO 1 -0.96\n", bad_row(2, "O 1 -0.96", "<Atom> <Ref1> <R/Ang>")},
      {"H\nO 1 0.96\nH 2 0.96 1\n", bad_row(3, "H 2 0.96 1", "<Atom> <Ref1> <R/Ang> <Ref2> <theta/deg>")},
      {three + "H 3 0.96 2 inf 1 90\n", bad_row(4, "H 3 0.96 2 inf 1 90", form4)},
      {three + "H 3 0.96 2 100\n", bad_row(4, "H 3 0.96 2 100", form4)},
      {"C1\nO C1 1.2\nHa C1 1.1 O 120\n", " *** ERROR: %gz line: unrecognized atom token: Ha\n"},
      {"H\nO H2 0.96\n", " *** ERROR: %gz reference \"H2\" on line 2 does not name an earlier atom.\n"},
      {"H\nO 2 0.96\n", " *** ERROR: %gz reference \"2\" on line 2 does not name an earlier atom.\n"},
      {"H\nO 0 0.96\n", " *** ERROR: %gz reference \"0\" on line 2 does not name an earlier atom.\n"},
      {three + "H O 0.96 H 100 3 90\n",
       " *** ERROR: %gz reference \"O\" is ambiguous on line 4 (multiple atoms of that element above).\n"},
      {"C1\nC1 1 1.5\nC1 C1 1.5 2 100\n",
       " *** ERROR: %gz reference \"C1\" is ambiguous on line 3 (multiple atoms of that element above).\n"},
      {"H\nO 1 0.96\nH 2 0.96 O 104\n", " *** ERROR: %gz line 3: bond and angle partners must be different.\n"},
      {three + "H 3 0.96 2 100 2 90\n", " *** ERROR: %gz line 4: dihedral partner duplicates earlier ref.\n"},
      {"O\nH 1 0\nH 1 0.96 2 104.5\n", " *** ERROR: %gz row 3 has zero ref bond.\n"},
      {"O\nH 1 1\nH 1 1 2 0\nH 2 1 3 90 1 90\n", " *** ERROR: %gz row 4 has zero-length ref_i-ref_j bond.\n"},
      {"O\nH 1 1\nH 1 1 2 0\nH 1 1 2 90 3 90\n", " *** ERROR: %gz row 4 has zero-length ref_j-ref_k bond.\n"},
  };
  expect_refusals(cases, "%gz\n", "*end\n");
}

TEST(Zmatrix, ReferencesByRowNumberLabelAndElement) {
  const auto numbers = parse("%gz\nC\nO 1 1.2\nH 1 1.1 2 120\nH 1 1.1 2 120 3 180\n*end\n");
  const auto mixed = parse("%gz\nC1\n8 C 1.2\nH1 c1 1.1 O 120\nH2 1 1.1 O 120 H1 180\n*end\n");
  ASSERT_EQ(numbers.error, 0) << numbers.report;
  ASSERT_EQ(mixed.error, 0) << mixed.report;
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(numbers.input.atoms[i].z, mixed.input.atoms[i].z);
    EXPECT_EQ(numbers.input.atoms[i].position, mixed.input.atoms[i].position);
  }
}

TEST(Zmatrix, ConversionRefusesWhatDoesNotFit) {
  std::vector<double> coords(5);
  std::ostringstream report;
  EXPECT_NE(zmatrix_to_cartesian(std::vector<ZMATRIX_ROW_T>(2), coords, report), 0);
  EXPECT_NE(zmatrix_to_cartesian(std::vector<ZMATRIX_ROW_T>(501), coords, report), 0);
  EXPECT_EQ(report.str(),
            " *** ERROR: zmatrix_to_cartesian: coords too small.\n"
            " *** ERROR: %gz block has 501 atoms; maximum supported is 500\n");
}

Eigen::Vector3d at(const INPUT_DATA_T& input, int row) {
  return Eigen::Vector3d(input.atoms[static_cast<std::size_t>(row - 1)].position.data()) / BOHR_PER_ANGSTROM;
}

TEST(Zmatrix, FirstRowsStandInTheirPlaces) {
  // Water in closed form: O at the origin, H on +z, the second H in the xz-plane on the +x side.
  const auto water = parse("%gz\nO\nH 1 0.96\nH 1 0.96 2 104.5\n*end\n");
  const double theta = 104.5 * RADIAN_PER_DEGREE;
  EXPECT_TRUE(at(water.input, 2).isApprox(Eigen::Vector3d(0, 0, 0.96), 1e-14));
  EXPECT_TRUE(at(water.input, 3).isApprox(0.96 * Eigen::Vector3d(std::sin(theta), 0, std::cos(theta)), 1e-14));
  // A right angle at the far end of the bond, hydrogen 2 as the apex.
  const auto bent = parse("%gz\nO\nH 1 1\nH 2 2 1 90\n*end\n");
  EXPECT_TRUE(at(bent.input, 3).isApprox(Eigen::Vector3d(2, 0, 1), 1e-14));
}

/// Dihedral angle 1-2-3-4 in degrees by the IUPAC rule: seen along 2 -> 3, positive when 4 is clockwise from 1.
double dihedral(const Eigen::Vector3d& a, const Eigen::Vector3d& b, const Eigen::Vector3d& c, const Eigen::Vector3d& d) {
  const Eigen::Vector3d axis = (c - b).normalized();
  const Eigen::Vector3d from = (a - b) - axis * axis.dot(a - b);
  const Eigen::Vector3d to = (d - c) - axis * axis.dot(d - c);
  return std::atan2(axis.dot(from.cross(to)), from.dot(to)) / RADIAN_PER_DEGREE;
}

TEST(Zmatrix, BondsAnglesAndDihedralsComeOutAsWritten) {
  // The view of the rule itself, free of any formula: 1 at +x, axis 2 -> 3 pointing away along +z; a quarter turn clockwise,
  // as seen by someone looking along +z, takes x to y.
  EXPECT_NEAR(dihedral({1, 0, 0}, {0, 0, 0}, {0, 0, 1}, {0, 1, 1}), 90.0, 1e-12);
  for (const double phi : {-179.0, -90.0, -30.0, 0.0, 1.0, 60.0, 116.0, 179.9}) {
    for (const double theta : {10.0, 90.0, 104.0, 175.0}) {
      std::ostringstream text;
      text << "%gz\nC\nC 1 1.5\nC 2 1.4 1 112\nO 3 1.3 2 " << theta << " 1 " << phi << "\nH 2 1.1 3 " << theta << " 4 "
           << phi << "\n*end\n";
      const auto result = parse(text.str());
      ASSERT_EQ(result.error, 0) << result.report;
      const auto p = [&](int row) { return at(result.input, row); };
      EXPECT_NEAR((p(4) - p(3)).norm(), 1.3, 1e-12);
      EXPECT_NEAR(std::acos((p(4) - p(3)).normalized().dot((p(2) - p(3)).normalized())) / RADIAN_PER_DEGREE, theta, 1e-10);
      EXPECT_NEAR(dihedral(p(1), p(2), p(3), p(4)), phi, 1e-9);
      EXPECT_NEAR((p(5) - p(2)).norm(), 1.1, 1e-12);
      EXPECT_NEAR(dihedral(p(4), p(3), p(2), p(5)), phi, 1e-9);
    }
  }
}

TEST(Zmatrix, LinearReferencesStillPlaceTheAtom) {
  const auto result = parse("%gz\nH\nC 1 1.06\nC 2 1.2 1 180\nH 3 1.06 2 180 1 0\n*end\n");
  ASSERT_EQ(result.error, 0) << result.report;
  EXPECT_NEAR(at(result.input, 4).z(), 1.06 + 1.2 + 1.06, 1e-7);
  EXPECT_NEAR(at(result.input, 4).head<2>().norm(), 0.0, 1e-7);
}

}  // namespace
}  // namespace zentrix

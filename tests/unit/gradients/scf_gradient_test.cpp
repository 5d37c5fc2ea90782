#include "gradients/scf_gradient.hpp"

#include <gtest/gtest.h>

#include <tuple>

#include "support/differences.hpp"
#include "support/surfaces.hpp"

// Total gradients: against an independent program (tests/reference/make_gradient_references.py), with density functionals
// against differences of the energies of the same surface, and against themselves (restricted = unrestricted,
// semi-analytical = analytic). The terms by themselves: tests/unit/integrals, tests/unit/dft.

namespace {

using namespace zentrix;
using namespace zentrix::GRADIENTS;
using TESTS::SURFACE_CASE_T;

SURFACE_CASE_T tight(SURFACE_CASE_T test) {
  test.input.scf_etol = 1e-11;
  test.input.scf_ptol = 1e-9;
  test.input.scf_gtol = 1e-8;
  return test;
}

SURFACE_POINT_T point_of(const SURFACE_CASE_T& test) {
  return test.surface().energy_and_gradient(positions_of(test.molecule));
}

VECTOR gradient_of(const SURFACE_CASE_T& test) { return point_of(test).gradient; }

const std::string bent = "O 0.1 0.0 0.1173\nH 0.0 0.7572 -0.4692\nH 0.2 -0.7572 -0.4692\n";

TEST(SCF_GRADIENT, AgreesWithAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("gradients");
  ASSERT_GE(cases.size(), 10U);
  for (const auto& entry : cases) {
    SCOPED_TRACE(entry["molecule"].get<std::string>() + " " + entry["basis"].get<std::string>());
    const SURFACE_POINT_T point = point_of(tight(TESTS::surface_case(entry)));
    EXPECT_TRUE(point.converged);
    EXPECT_NEAR(point.energy, entry["energy"].get<double>(), 1e-7);
    for (Eigen::Index k = 0; k < point.gradient.size(); ++k)
      EXPECT_NEAR(point.gradient(k), entry["gradient"][static_cast<std::size_t>(k)].get<double>(), 2e-7);
  }
}

TEST(SCF_GRADIENT, IsTheDerivativeOfThePrintedEnergy) {
  const std::string radical = "N 0.1 0.0 0.1416\nH 0.0 0.8034 -0.4957\nH 0.2 -0.8034 -0.4957\n";
  const std::tuple<std::string, std::string, std::string, int> cases[] = {
      {bent, "SVWN", "2", 1},   {bent, "PBE", "6", 1},       {radical, "B3LYP", "2", 2},
      {bent, "R2SCAN", "2", 1}, {radical, "R2SCAN", "8", 2},
  };
  for (const auto& [geometry, method, grid, multiplicity] : cases) {
    SCOPED_TRACE(method + " multiplicity " + std::to_string(multiplicity));
    SURFACE_CASE_T set_up = tight(TESTS::surface_case(geometry, "6-31G*", method, {0, multiplicity, false}));
    set_up.input.grid = grid;
    SCF_SURFACE_T surface = set_up.surface();
    const CARTESIAN_T here = positions_of(set_up.molecule);
    const VECTOR gradient = surface.energy_and_gradient(here).gradient;
    for (const Eigen::Index k : {2, 6}) {
      const auto energy_at = [&](double step) { return surface.energy(here + step * VECTOR::Unit(here.size(), k)).energy; };
      EXPECT_NEAR(gradient(k), TESTS::derivative(energy_at, 1e-3), 1e-6) << k;
    }
    for (Eigen::Index k = 0; k < 3; ++k) EXPECT_NEAR(gradient(k) + gradient(3 + k) + gradient(6 + k), 0.0, 1e-8);
  }
}

TEST(SCF_GRADIENT, NuclearRepulsionByItself) {
  MOLECULE_T molecule = TESTS::sample_molecule(bent, "STO-3G");
  molecule.atoms[1].charge = 0.0;  // a ghost
  molecule.atoms[2].charge = 2.5;
  const VECTOR gradient = nuclear_repulsion_gradient(molecule);
  const CARTESIAN_T here = positions_of(molecule);
  for (Eigen::Index k = 0; k < here.size(); ++k) {
    const auto energy_at = [&](double h) {
      return nuclear_repulsion(moved(molecule, here + h * VECTOR::Unit(here.size(), k)));
    };
    EXPECT_NEAR(gradient(k), TESTS::derivative(energy_at, 1e-3), 1e-7) << k;
  }
}

TEST(SCF_GRADIENT, RestrictedEqualsUnrestrictedAndSemiAnalyticalEqualsAnalytic) {
  for (const char* method : {"HF", "PBE0"}) {
    SCOPED_TRACE(method);
    SURFACE_CASE_T test = tight(TESTS::surface_case(TESTS::water, "STO-3G", method));
    test.input.grid = "2";
    const VECTOR restricted = gradient_of(test);
    for (const bool semi : {false, true}) {
      for (const bool open : {false, true}) {
        test.molecule.unrestricted = open;
        test.input.semi_analytical_gradient = semi;
        EXPECT_LT((gradient_of(test) - restricted).cwiseAbs().maxCoeff(), semi ? 2e-6 : 1e-7) << semi << open;
      }
    }
  }
}

}  // namespace

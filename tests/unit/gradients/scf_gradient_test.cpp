#include "gradients/scf_gradient.hpp"

#include <gtest/gtest.h>

#include <Eigen/Geometry>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "gradients/scf_surface.hpp"
#include "support/molecules.hpp"

// Total gradients: against an independent program (tests/reference/make_gradient_references.py), against central differences
// of the energies of the same surface, and against themselves (restricted = unrestricted, semi-analytical = analytic).

namespace {

using namespace zentrix;
using namespace zentrix::GRADIENTS;

struct SURFACE_CASE_T {
  INPUT_PARSER::INPUT_DATA_T input;
  DFT::FUNCTIONAL_T functional;
  MOLECULE_T molecule;
};

SURFACE_CASE_T surface_case(const std::string& geometry, const std::string& basis, const std::string& method,
                            TESTS::SAMPLE_OPTIONS_T options = {}, bool unrestricted = false) {
  SURFACE_CASE_T out;
  out.input = TESTS::sample_input(geometry, basis, options);
  out.input.scf_etol = 1e-11;
  out.input.scf_ptol = 1e-9;
  out.input.scf_gtol = 1e-8;
  out.molecule = TESTS::sample_molecule(geometry, basis, options);
  out.molecule.unrestricted = unrestricted || options.multiplicity > 1;
  std::ostringstream report;
  EXPECT_EQ(DFT::set_up_functional(method, out.functional, report), 0);
  return out;
}

VECTOR gradient_of(const SURFACE_CASE_T& test) {
  SCF_SURFACE_T surface(test.input, test.functional, test.molecule, nullptr);
  return surface.energy_and_gradient(positions_of(test.molecule)).gradient;
}

TEST(SCF_GRADIENT, AgreesWithAnIndependentProgram) {
  std::ifstream file(ZENTRIX_SOURCE_DIR "/tests/reference/gradients.json");
  const nlohmann::json cases = nlohmann::json::parse(file);
  ASSERT_GE(cases.size(), 10U);
  for (const auto& entry : cases) {
    SCOPED_TRACE(entry["molecule"].get<std::string>() + " " + entry["basis"].get<std::string>());
    const SURFACE_CASE_T test =
        surface_case(TESTS::geometry_of(entry["atoms"]), entry["basis"], "HF",
                     {entry["charge"].get<int>(), entry["multiplicity"].get<int>(), entry["spherical"].get<bool>()});
    SCF_SURFACE_T surface(test.input, test.functional, test.molecule, nullptr);
    const SURFACE_POINT_T point = surface.energy_and_gradient(positions_of(test.molecule));
    EXPECT_TRUE(point.converged);
    EXPECT_NEAR(point.energy, entry["energy"].get<double>(), 1e-7);
    for (Eigen::Index k = 0; k < point.gradient.size(); ++k)
      EXPECT_NEAR(point.gradient(k), entry["gradient"][static_cast<std::size_t>(k)].get<double>(), 2e-7);
  }
}

TEST(SCF_GRADIENT, IsTheDerivativeOfThePrintedEnergy) {
  const std::string bent = "O 0.1 0.0 0.1173\nH 0.0 0.7572 -0.4692\nH 0.2 -0.7572 -0.4692\n";
  const std::string radical = "N 0.1 0.0 0.1416\nH 0.0 0.8034 -0.4957\nH 0.2 -0.8034 -0.4957\n";
  struct CASE_T {
    std::string geometry, method, grid;
    int multiplicity;
    double tolerance;
  };
  const std::vector<CASE_T> cases = {
      {bent, "HF", "6", 1, 2e-7},        {radical, "HF", "6", 2, 2e-7},    {bent, "SVWN", "2", 1, 1e-6},
      {bent, "PBE", "6", 1, 1e-6},       {radical, "B3LYP", "2", 2, 1e-6}, {bent, "R2SCAN", "2", 1, 1e-6},
      {radical, "R2SCAN", "8", 2, 1e-6},
  };
  const double h = 1e-3;
  for (const CASE_T& test : cases) {
    SCOPED_TRACE(test.method + " multiplicity " + std::to_string(test.multiplicity));
    SURFACE_CASE_T set_up = surface_case(test.geometry, "6-31G*", test.method, {0, test.multiplicity, false});
    set_up.input.grid = test.grid;
    SCF_SURFACE_T surface(set_up.input, set_up.functional, set_up.molecule, nullptr);
    const CARTESIAN_T here = positions_of(set_up.molecule);
    const VECTOR gradient = surface.energy_and_gradient(here).gradient;
    for (const Eigen::Index k : {2, 6}) {
      CARTESIAN_T step = CARTESIAN_T::Zero(here.size());
      step(k) = h;
      const double wide = surface.energy(here + 2.0 * step).energy - surface.energy(here - 2.0 * step).energy;
      const double narrow = surface.energy(here + step).energy - surface.energy(here - step).energy;
      EXPECT_NEAR(gradient(k), (8.0 * narrow - wide) / (12.0 * h), test.tolerance) << k;
    }
    for (Eigen::Index k = 0; k < 3; ++k) EXPECT_NEAR(gradient(k) + gradient(3 + k) + gradient(6 + k), 0.0, 1e-8);
  }
}

TEST(SCF_GRADIENT, RestrictedEqualsUnrestrictedAndSemiAnalyticalEqualsAnalytic) {
  for (const char* method : {"HF", "PBE0"}) {
    SCOPED_TRACE(method);
    SURFACE_CASE_T test = surface_case(TESTS::water, "STO-3G", method);
    test.input.grid = "2";
    const VECTOR restricted = gradient_of(test);
    SURFACE_CASE_T open = test;
    open.molecule.unrestricted = true;
    EXPECT_LT((gradient_of(open) - restricted).cwiseAbs().maxCoeff(), 1e-7);
    test.input.semi_analytical_gradient = true;
    EXPECT_LT((gradient_of(test) - restricted).cwiseAbs().maxCoeff(), 2e-6);
    open.input.semi_analytical_gradient = true;
    EXPECT_LT((gradient_of(open) - restricted).cwiseAbs().maxCoeff(), 2e-6);
  }
}

TEST(SCF_GRADIENT, RotatesWithTheMoleculeAndVanishesForAtoms) {
  const VECTOR atom = gradient_of(surface_case("N 0.3 0.2 0.1\n", "6-31G*", "HF", {0, 4, false}));
  EXPECT_LT(atom.cwiseAbs().maxCoeff(), 1e-9);
  SURFACE_CASE_T test = surface_case(TESTS::formaldehyde, "6-31G*", "HF");
  const VECTOR gradient = gradient_of(test);
  const Eigen::Matrix3d turn = Eigen::AngleAxisd(0.7, Eigen::Vector3d(1.0, 2.0, -0.5).normalized()).toRotationMatrix();
  SURFACE_CASE_T turned = test;
  CARTESIAN_T positions = positions_of(test.molecule);
  for (Eigen::Index a = 0; a < positions.size() / 3; ++a)
    positions.segment<3>(3 * a) = turn * positions.segment<3>(3 * a) + Eigen::Vector3d(1.0, -2.0, 3.0);
  turned.molecule = moved(test.molecule, positions);
  const VECTOR there = gradient_of(turned);
  for (Eigen::Index a = 0; a < positions.size() / 3; ++a)
    EXPECT_LT((there.segment<3>(3 * a) - turn * gradient.segment<3>(3 * a)).norm(), 1e-8);
}

TEST(SCF_SURFACE, ForgetsWhereItHasBeen) {
  // Displaced and back again: the energy is that of a fresh run.
  const SURFACE_CASE_T test = surface_case(TESTS::water, "6-31G*", "B3LYP");
  SCF_SURFACE_T surface(test.input, test.functional, test.molecule, nullptr);
  const CARTESIAN_T here = positions_of(test.molecule);
  const double fresh = surface.energy(here).energy;
  CARTESIAN_T there = here;
  there(4) += 0.3;
  EXPECT_GT(surface.energy(there).energy - fresh, 1e-3);
  EXPECT_NEAR(surface.energy(here).energy, fresh, 1e-9);
}

}  // namespace

#include <gtest/gtest.h>

#include <cstdlib>

#include "properties/properties.hpp"
#include "scf_samples.hpp"
#include "support/reference.hpp"

// Hartree-Fock against an independent program over molecules x basis sets (tests/reference/make_rhf_references.py and
// make_uhf_references.py). A fault anywhere on the road from the basis file to the energy shows here: readers,
// normalisation, spherical functions, every integral class from s to g, J and K, the loop; with open shells (radicals,
// triplets, ions, high-spin metals, at their lowest stable solutions) spin counts, two-density exchange, the superposition
// of atoms and the occupation control. The long cases run when ZENTRIX_LONG_TESTS is set.

namespace {

using namespace zentrix;
using namespace zentrix::SCF::samples;

RUN_T run_case(const nlohmann::json& entry, const MOLECULE_T& molecule, double gradient_tolerance) {
  SCOPED_TRACE(entry["molecule"].get<std::string>() + " " + entry["basis"].get<std::string>());
  RUN_OPTIONS_T tight;
  tight.settings.energy_tolerance = 1e-10;
  tight.settings.density_tolerance = 0.1 * gradient_tolerance;
  tight.settings.gradient_tolerance = gradient_tolerance;
  RUN_T result = run(molecule, tight);
  EXPECT_EQ(molecule.n_basis, entry["functions"].get<int>());
  EXPECT_TRUE(result.scf.converged);
  EXPECT_NEAR(result.scf.energy.total(), entry["energy"].get<double>(), 1e-7);
  return result;
}

TEST(HARTREE_FOCK_GRID, ClosedShellsAgreeWithAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("rhf");
  const bool run_long = std::getenv("ZENTRIX_LONG_TESTS") != nullptr;
  ASSERT_GT(cases.size(), 50U);
  for (const auto& entry : cases) {
    if (entry["long"] && !run_long) continue;
    const MOLECULE_T molecule = molecule_of(entry);
    const RUN_T result = run_case(entry, molecule, 1e-6);
    const auto& channel = result.scf.channels[0];
    EXPECT_NEAR(channel.energies(channel.n_occupied - 1), entry["homo"].get<double>(), 1e-5) << entry["molecule"];
    const auto dipole = PROPERTIES::dipole_moment(molecule, result.scf.total_density()).total();
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(dipole[k], entry["dipole"][k].get<double>(), 1e-4) << entry["molecule"];
  }
}

TEST(HARTREE_FOCK_GRID, OpenShellsAgreeWithAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("uhf");
  ASSERT_GT(cases.size(), 30U);
  for (const auto& entry : cases) {
    const RUN_T result = run_case(entry, molecule_of(entry, true), 1e-7);
    EXPECT_NEAR(result.scf.s_squared, entry["s_squared"].get<double>(), 1e-7) << entry["molecule"];
  }
}

}  // namespace

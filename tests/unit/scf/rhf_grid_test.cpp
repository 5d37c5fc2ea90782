#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "properties/properties.hpp"
#include "scf/scf_observer.hpp"
#include "support/molecules.hpp"

// Restricted Hartree-Fock against an independent program over molecules x basis sets
// (tests/reference/make_rhf_references.py). A fault anywhere on the road from the basis file to the energy shows here:
// readers, normalisation, spherical functions, every integral class from s to g, J and K, the loop. The long cases run when
// ZENTRIX_LONG_TESTS is set.

namespace {

using namespace zentrix;

struct RUN_T {
  MOLECULE_T molecule;
  SCF::SCF_RESULT_T scf;
};

RUN_T run(const nlohmann::json& entry, int memory_limit_mb) {
  RUN_T result;
  TESTS::SAMPLE_OPTIONS_T options;
  options.charge = entry["charge"];
  options.spherical = entry["spherical"];
  result.molecule = TESTS::sample_molecule(TESTS::geometry_of(entry["atoms"]), entry["basis"], options);
  SCF::GEOMETRY_DATA_T geometry(result.molecule, INTEGRALS_1E::one_electron_matrices(result.molecule));
  SCF::SCF_SETTINGS_T settings;
  settings.energy_tolerance = 1e-10;
  settings.density_tolerance = 1e-7;
  settings.gradient_tolerance = 1e-6;
  settings.eri_memory_limit_mb = memory_limit_mb;
  SCF::SCF_OBSERVER_T silent;
  result.scf = SCF::run_scf(geometry, SCF::hartree_fock_terms(geometry), settings, {}, silent);
  return result;
}

TEST(RHF_GRID, AgreesWithAnIndependentProgram) {
  std::ifstream file(ZENTRIX_SOURCE_DIR "/tests/reference/rhf.json");
  const nlohmann::json cases = nlohmann::json::parse(file);
  const bool run_long = std::getenv("ZENTRIX_LONG_TESTS") != nullptr;
  ASSERT_GT(cases.size(), 50U);
  for (const auto& entry : cases) {
    if (entry["long"] && !run_long) continue;
    SCOPED_TRACE(entry["molecule"].get<std::string>() + " " + entry["basis"].get<std::string>());
    const RUN_T result = run(entry, 4096);
    EXPECT_EQ(result.molecule.n_basis, entry["functions"].get<int>());
    EXPECT_TRUE(result.scf.converged);
    EXPECT_NEAR(result.scf.energy.total(), entry["energy"].get<double>(), 1e-7);
    const auto& channel = result.scf.channels[0];
    EXPECT_NEAR(channel.energies(channel.n_occupied - 1), entry["homo"].get<double>(), 1e-5);
    const auto dipole = PROPERTIES::dipole_moment(result.molecule, result.scf.total_density()).total();
    for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(dipole[k], entry["dipole"][k].get<double>(), 1e-4);
  }
}

TEST(RHF_GRID, StoredAndDirectIntegralsGiveTheSameEnergy) {
  std::ifstream file(ZENTRIX_SOURCE_DIR "/tests/reference/rhf.json");
  int compared = 0;
  for (const auto& entry : nlohmann::json::parse(file)) {
    if (entry["long"] || entry["functions"].get<int>() < 60 || compared >= 4) continue;
    SCOPED_TRACE(entry["molecule"].get<std::string>() + " " + entry["basis"].get<std::string>());
    EXPECT_NEAR(run(entry, 4096).scf.energy.total(), run(entry, 1).scf.energy.total(), 1e-9);
    ++compared;
  }
  EXPECT_EQ(compared, 4);
}

}  // namespace

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "scf/guess.hpp"
#include "scf/scf_observer.hpp"
#include "support/molecules.hpp"

// Unrestricted Hartree-Fock against an independent program (tests/reference/make_uhf_references.py): radicals, triplets,
// ions, high-spin metals. Spin counts, two-density exchange, the superposition of atoms and the occupation control all stand
// behind these numbers; the references are the lowest stable solutions.

namespace {

using namespace zentrix;

TEST(UHF_GRID, AgreesWithAnIndependentProgram) {
  std::ifstream file(ZENTRIX_SOURCE_DIR "/tests/reference/uhf.json");
  const nlohmann::json cases = nlohmann::json::parse(file);
  ASSERT_GT(cases.size(), 30U);
  for (const auto& entry : cases) {
    SCOPED_TRACE(entry["molecule"].get<std::string>() + " " + entry["basis"].get<std::string>());
    TESTS::SAMPLE_OPTIONS_T options{entry["charge"], entry["multiplicity"], entry["spherical"]};
    MOLECULE_T molecule = TESTS::sample_molecule(TESTS::geometry_of(entry["atoms"]), entry["basis"], options);
    molecule.unrestricted = true;
    SCF::GEOMETRY_DATA_T geometry(molecule, INTEGRALS_1E::one_electron_matrices(molecule));
    SCF::GUESS_OBSERVER_T quiet;
    const SCF::SCF_START_T start =
        SCF::initial_guess(molecule, geometry.one_electron.s, INPUT_PARSER::GUESS::automatic, quiet);
    ASSERT_EQ(start.densities.size(), 2U);
    SCF::SCF_SETTINGS_T settings;
    settings.energy_tolerance = 1e-10;
    settings.density_tolerance = 1e-8;
    settings.gradient_tolerance = 1e-7;
    SCF::SCF_OBSERVER_T silent;
    const SCF::SCF_RESULT_T result = SCF::run_scf(geometry, SCF::hartree_fock_terms(geometry), settings, start, silent);
    EXPECT_TRUE(result.converged);
    EXPECT_NEAR(result.energy.total(), entry["energy"].get<double>(), 1e-7);
    EXPECT_NEAR(result.s_squared, entry["s_squared"].get<double>(), 1e-7);
  }
}

}  // namespace

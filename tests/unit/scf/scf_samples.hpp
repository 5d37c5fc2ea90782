#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "dft/xc_integrator.hpp"
#include "scf/guess.hpp"
#include "scf/scf_report.hpp"
#include "support/molecules.hpp"

// One run of the SCF from a molecule to its energy, as the tests of the loop and of what follows it want it.

namespace zentrix::SCF::samples {

struct RUN_OPTIONS_T {
  std::string method = "HF";
  int grid = 6;
  INPUT_PARSER::GUESS guess = INPUT_PARSER::GUESS::automatic;
  SCF_SETTINGS_T settings;
};

struct RUN_T {
  GEOMETRY_DATA_T geometry;
  SCF_RESULT_T scf;
  std::string report;      ///< what the loop said
  double electrons = 0.0;  ///< integral of the density over the grid of a density functional
};

inline RUN_T run(const MOLECULE_T& molecule, const RUN_OPTIONS_T& options = {}) {
  std::ostringstream report;
  DFT::FUNCTIONAL_T functional;
  EXPECT_EQ(DFT::set_up_functional(options.method, functional, report), 0);
  RUN_T out{{molecule, INTEGRALS_1E::one_electron_matrices(molecule)}, {}, {}, 0.0};
  if (!functional.is_hartree_fock()) out.geometry.grid = DFT_GRID::build_grid(molecule, options.grid, report);
  GUESS_OBSERVER_T quiet;
  const SCF_START_T start = initial_guess(molecule, out.geometry.one_electron.s, options.guess, 1000, quiet);
  SCF_PRINTER_T printer(report);
  out.scf = run_scf(out.geometry, energy_terms(out.geometry, functional, 1000), options.settings, start, printer);
  out.report = report.str();
  if (!functional.is_hartree_fock())
    out.electrons = DFT::integrate_density(molecule, out.geometry.grid, out.scf.total_density());
  return out;
}

/// A molecule for two spin channels.
inline MOLECULE_T open_molecule(const std::string& geometry, const std::string& basis,
                                TESTS::SAMPLE_OPTIONS_T options = {}) {
  MOLECULE_T molecule = TESTS::sample_molecule(geometry, basis, options);
  molecule.unrestricted = true;
  return molecule;
}

/// The molecule of a case of a reference file; two channels for open shells and where the file is of unrestricted runs.
inline MOLECULE_T molecule_of(const nlohmann::json& entry, bool unrestricted = false) {
  const int multiplicity = entry.value("multiplicity", 1);
  MOLECULE_T molecule = TESTS::sample_molecule(TESTS::geometry_of(entry["atoms"]), entry["basis"],
                                               {entry["charge"].get<int>(), multiplicity, entry["spherical"].get<bool>()});
  molecule.unrestricted = unrestricted || multiplicity > 1;
  return molecule;
}

}  // namespace zentrix::SCF::samples

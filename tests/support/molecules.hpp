#pragma once

#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "constants/elements.hpp"
#include "constants/units.hpp"
#include "input/input_data.hpp"
#include "molecule/molecule.hpp"

// Sample molecules of the tests, built on the same road as a run's molecule.

namespace zentrix::TESTS {

/// Lines "symbol x y z" in angstrom.
inline const std::string water = "O 0.0 0.0 0.1173\nH 0.0 0.7572 -0.4692\nH 0.0 -0.7572 -0.4692\n";
inline const std::string hydrogen_fluoride = "F 0.0 0.0 0.0\nH 0.0 0.0 0.917\n";
inline const std::string ammonia =
    "N 0.0 0.0 0.1161\nH 0.0 0.9397 -0.2709\nH 0.8138 -0.4698 -0.2709\nH -0.8138 -0.4698 -0.2709\n";
inline const std::string formaldehyde = "C 0.0 0.0 -0.5296\nO 0.0 0.0 0.6756\nH 0.0 0.9347 -1.1127\nH 0.0 -0.9347 -1.1127\n";
inline const std::string caffeine =
    "C -0.2580 -0.6690 -0.0010\nC 0.5980 0.4610 0.0\nC 1.9670 0.3250 0.0\nN 2.4340 -0.9790 -0.0010\n"
    "C 1.6090 -2.1040 -0.0010\nN 0.2320 -1.9570 -0.0010\nO 2.1090 -3.2170 -0.0010\nO 2.7590 1.2580 0.0010\n"
    "N -0.2090 1.5690 0.0010\nC -1.4690 1.1250 0.0010\nN -1.5630 -0.2310 -0.0010\nC 3.8860 -1.1640 -0.0010\n"
    "C -0.6470 -3.1400 -0.0020\nC 0.2320 2.9650 0.0020\nH -2.3420 1.7680 0.0010\nH 4.3210 -0.6970 0.8870\n"
    "H 4.3210 -0.6960 -0.8890\nH 4.0950 -2.2370 -0.0020\nH -1.2890 -3.1060 0.8850\nH -1.2890 -3.1050 -0.8890\n"
    "H -0.0310 -4.0430 -0.0020\nH 0.8430 3.1530 0.8890\nH 0.8430 3.1540 -0.8850\nH -0.6500 3.6110 0.0020\n";

/// Atoms without basis functions from lines "symbol x y z", times `unit`.
inline MOLECULE_T bare_molecule(const std::string& geometry, double unit = BOHR_PER_ANGSTROM) {
  MOLECULE_T molecule;
  std::istringstream lines(geometry);
  ATOM_T atom;
  while (lines >> atom.symbol >> atom.position[0] >> atom.position[1] >> atom.position[2]) {
    atom.z = atomic_number(atom.symbol);
    atom.charge = atom.z;
    for (double& coordinate : atom.position) coordinate *= unit;
    molecule.atoms.push_back(atom);
  }
  return molecule;
}

struct SAMPLE_OPTIONS_T {
  int charge = 0;
  int multiplicity = 1;
  bool spherical = false;
};

/// Input record of a sample, as the parser would have filled it.
inline INPUT_PARSER::INPUT_DATA_T sample_input(const std::string& geometry, const std::string& basis,
                                               SAMPLE_OPTIONS_T options = {}) {
  INPUT_PARSER::INPUT_DATA_T input;
  input.basis = input.default_basis = basis;
  input.charge = options.charge;
  input.multiplicity = options.multiplicity;
  input.spherical = options.spherical;
  for (const ATOM_T& atom : bare_molecule(geometry).atoms) input.atoms.push_back({atom.symbol, atom.z, atom.position, 0});
  return input;
}

/// Lines of a geometry from the atoms of a reference file: [["O", x, y, z], ...], angstrom.
inline std::string geometry_of(const nlohmann::json& atoms) {
  std::string lines;
  for (const auto& atom : atoms) {
    lines += atom[0].get<std::string>();
    for (int k = 1; k <= 3; ++k) lines.append(" ").append(atom[k].dump());
    lines.append("\n");
  }
  return lines;
}

inline MOLECULE_T sample_molecule(const std::string& geometry, const std::string& basis, SAMPLE_OPTIONS_T options = {}) {
  MOLECULE_T molecule;
  std::ostringstream report;
  if (build_molecule(sample_input(geometry, basis, options), molecule, report) != 0) throw std::runtime_error(report.str());
  return molecule;
}

}  // namespace zentrix::TESTS

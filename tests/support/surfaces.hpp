#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "gradients/scf_surface.hpp"
#include "support/molecules.hpp"
#include "support/reference.hpp"

// Energy surfaces of sample molecules and of the cases in tests/reference.

namespace zentrix::TESTS {

/// What an SCF surface refers to.
struct SURFACE_CASE_T {
  INPUT_PARSER::INPUT_DATA_T input;
  DFT::FUNCTIONAL_T functional;
  MOLECULE_T molecule;

  GRADIENTS::SCF_SURFACE_T surface() const { return {input, functional, molecule, nullptr}; }
};

inline SURFACE_CASE_T surface_case(const std::string& geometry, const std::string& basis, const std::string& method,
                                   SAMPLE_OPTIONS_T options = {}) {
  SURFACE_CASE_T result;
  result.input = sample_input(geometry, basis, options);
  result.molecule = sample_molecule(geometry, basis, options);
  result.molecule.unrestricted = options.multiplicity > 1;
  std::ostringstream report;
  EXPECT_EQ(DFT::set_up_functional(method, result.functional, report), 0) << report.str();
  return result;
}

/// A case of a reference file; Hartree-Fock and Cartesian functions where it does not say otherwise.
inline SURFACE_CASE_T surface_case(const nlohmann::json& entry) {
  return surface_case(geometry_of(entry["atoms"]), entry["basis"], entry.value("method", "HF"),
                      {entry["charge"].get<int>(), entry["multiplicity"].get<int>(), entry.value("spherical", false)});
}

}  // namespace zentrix::TESTS

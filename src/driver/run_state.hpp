#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "correlation/mp2.hpp"
#include "dft/functional_catalogue.hpp"
#include "gradients/nuclear_term.hpp"
#include "input/input_data.hpp"
#include "molecule/types.hpp"
#include "scf/scf.hpp"
#include "solvation/activation.hpp"

namespace zentrix {

/// Everything that lives as long as the run. Sections fill it in their order and pass it on; nothing below the driver sees
/// it.
struct RUN_T {
  std::string input_file;
  INPUT_PARSER::INPUT_DATA_T input;
  DFT::FUNCTIONAL_T functional;
  std::vector<std::unique_ptr<GRADIENTS::NUCLEAR_TERM_T>> nuclear_terms;  ///< dispersion
  SOLVATION::SOLVATION_T solvation;
  MOLECULE_T molecule;                             ///< of the input; after Section 5 at the optimised geometry
  INTEGRALS_1E::ONE_ELECTRON_T one_electron;       ///< Section 2; handed to `geometry` by Section 3
  std::unique_ptr<SCF::GEOMETRY_DATA_T> geometry;  ///< of the last SCF
  SCF::SCF_RESULT_T scf;                           ///< the last SCF: Section 3, or the one behind the last gradient
  SCF::SPIN_MATRICES_T start;                      ///< converged densities to start from while there is no `scf`
  std::optional<CORRELATION::MP2_RESULT_T> mp2;    ///< the correlation step behind `scf`, of a method that has one
  bool optimized = false;                          ///< `scf` and `geometry` are those of an optimisation's last step
  bool converged = true;                           ///< false once an iterative procedure of the run has not converged
};

}  // namespace zentrix

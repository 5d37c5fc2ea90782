#pragma once

#include <iosfwd>

#include "scf/scf.hpp"

namespace zentrix::SCF {

/// Builds the integration grid of the input's level for the geometry; tells about it when `report` is not null.
void set_up_grid(GEOMETRY_DATA_T& geometry, const INPUT_PARSER::INPUT_DATA_T& input, std::ostream* report);

/// One complete SCF of a method at a geometry: initial guess (when `previous` is empty), for a restricted meta-GGA a PBE run
/// that provides the starting density, then the loop. The geometry's grid must be there for a density functional. `report`:
/// where all of it is told; null for silence. `previous`: one density per channel of a finished run nearby.
SCF_RESULT_T run_method(GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                        const INPUT_PARSER::INPUT_DATA_T& input, const SPIN_MATRICES_T& previous, std::ostream* report);

}  // namespace zentrix::SCF

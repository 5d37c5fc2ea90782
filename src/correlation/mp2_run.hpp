#pragma once

#include <iosfwd>

#include "correlation/mp2.hpp"

namespace zentrix::CORRELATION {

/// The MP2 or UMP2 step of a method behind its SCF, by the settings of the input, timed. `report`: where frozen core,
/// dimensions and steps are told; null for silence. Energies are the caller's to print.
MP2_RESULT_T run_mp2(const SCF::GEOMETRY_DATA_T& geometry, const SCF::SCF_RESULT_T& scf,
                     const INPUT_PARSER::INPUT_DATA_T& input, std::ostream* report);

}  // namespace zentrix::CORRELATION

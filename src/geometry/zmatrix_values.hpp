#pragma once

#include <vector>

#include "input/input_data.hpp"
#include "linalg/matrix.hpp"

namespace zentrix::OPTIMIZER {

/// The rows with the values that their coordinates have at `positions` (bohr): lengths in angstrom, angles in degree.
std::vector<INPUT_PARSER::ZMATRIX_ROW_T> zmatrix_at(std::vector<INPUT_PARSER::ZMATRIX_ROW_T> rows, const VECTOR& positions);

}  // namespace zentrix::OPTIMIZER

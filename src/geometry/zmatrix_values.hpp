#pragma once

#include <vector>

#include "input/input_data.hpp"
#include "linalg/matrix.hpp"

namespace zentrix::OPTIMIZER {

/// Whether an angle of a Z-matrix, degree, stands for its mirror image on the far side of the straight line (190 or -170 for
/// 170): the atom's dihedral is then half a turn from the row's.
bool past_straight(double angle);

/// The rows with the values that their coordinates have at `positions` (bohr): lengths in angstrom, angles in degree. An
/// angle past the straight line stays past it; a dihedral that a straight angle leaves undefined stays what it was.
std::vector<INPUT_PARSER::ZMATRIX_ROW_T> zmatrix_at(std::vector<INPUT_PARSER::ZMATRIX_ROW_T> rows, const VECTOR& positions);

}  // namespace zentrix::OPTIMIZER

#pragma once

#include <vector>

#include "geometry/internal_coords.hpp"
#include "input/input_data.hpp"
#include "linalg/matrix.hpp"

namespace zentrix::OPTIMIZER {

/// Force constants in the coordinates of the set (hartree, bohr, radian), symmetric and positive definite.
///
/// diag: the exponential stretches, bends and torsions of R. Lindh, A. Bernhardsson, G. Karlstroem, P.-A. Malmqvist,
/// Chem. Phys. Lett. 241 (1995) 423, on the diagonal.
/// full: the constants of T. H. Fischer, J. Almloef, J. Phys. Chem. 96 (1992) 9768, on the diagonal, coordinates over a link
/// between fragments with those of Lindh; off the diagonal the couplings that the 1,3 distances of Urey-Bradley force
/// fields bring, with Lindh's pair constants.
MATRIX model_hessian(const INTERNAL_COORDS::COORDINATE_SET_T& set, const std::vector<int>& z, const VECTOR& positions,
                     INPUT_PARSER::MODEL_HESSIAN model);

}  // namespace zentrix::OPTIMIZER

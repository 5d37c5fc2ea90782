#include "geometry/zmatrix_values.hpp"

#include "constants/units.hpp"
#include "geometry/internal_coords.hpp"

namespace zentrix::OPTIMIZER {

std::vector<INPUT_PARSER::ZMATRIX_ROW_T> zmatrix_at(std::vector<INPUT_PARSER::ZMATRIX_ROW_T> rows, const VECTOR& positions) {
  using namespace INTERNAL_COORDS;
  for (std::size_t n = 0; n < rows.size(); ++n) {
    INPUT_PARSER::ZMATRIX_ROW_T& row = rows[n];
    INTCOORD_T coordinate;
    coordinate.atoms = {static_cast<int>(n) + 1, row.bond_atom, row.angle_atom, row.dihedral_atom};
    const auto value = [&](KIND kind) {
      coordinate.kind = kind;
      return coordinate_value(coordinate, positions);
    };
    if (row.bond_atom > 0) row.bond = value(KIND::bond) / BOHR_PER_ANGSTROM;
    if (row.angle_atom > 0) row.angle = value(KIND::angle) / RADIAN_PER_DEGREE;
    if (row.dihedral_atom > 0) row.dihedral = value(KIND::dihedral) / RADIAN_PER_DEGREE;
  }
  return rows;
}

}  // namespace zentrix::OPTIMIZER

#include "geometry/zmatrix_values.hpp"

#include <cmath>

#include "constants/units.hpp"
#include "geometry/internal_coords.hpp"

namespace zentrix::OPTIMIZER {
namespace {

/// Degrees from a straight angle within which a dihedral through it is rounding noise.
constexpr double straight = 1e-4;

bool is_straight(double angle) { return std::abs(std::remainder(angle, 180.0)) < straight; }

}  // namespace

bool past_straight(double angle) { return std::remainder(angle, 360.0) < 0.0; }

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
    if (row.angle_atom == 0) continue;
    const bool past = past_straight(row.angle), negative = row.angle < 0.0;
    const double angle = value(KIND::angle) / RADIAN_PER_DEGREE;
    row.angle = !past ? angle : negative ? -angle : 360.0 - angle;
    if (row.dihedral_atom == 0 || is_straight(angle)) continue;
    const double dihedral = value(KIND::dihedral) / RADIAN_PER_DEGREE;
    coordinate.atoms = {row.bond_atom, row.angle_atom, row.dihedral_atom, 0};
    if (is_straight(value(KIND::angle) / RADIAN_PER_DEGREE)) continue;
    row.dihedral = past ? std::remainder(dihedral + 180.0, 360.0) : dihedral;
  }
  return rows;
}

}  // namespace zentrix::OPTIMIZER

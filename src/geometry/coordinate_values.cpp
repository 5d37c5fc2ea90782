#include <cmath>

#include "geometry/internal_coords.hpp"
#include "geometry/vectors.hpp"

namespace zentrix::INTERNAL_COORDS {
namespace {

VECTOR3 axis_of(const INTCOORD_T& coordinate) { return VECTOR3(coordinate.axis.data()); }

double dihedral_value(const INTCOORD_T& c, const VECTOR& x) {
  const VECTOR3 b1 = position_of(x, c.atoms[1]) - position_of(x, c.atoms[0]);
  const VECTOR3 b2 = position_of(x, c.atoms[2]) - position_of(x, c.atoms[1]);
  const VECTOR3 b3 = position_of(x, c.atoms[3]) - position_of(x, c.atoms[2]);
  const VECTOR3 n1 = b1.cross(b2);
  const VECTOR3 n2 = b2.cross(b3);
  const double angle = std::atan2(n1.cross(n2).dot(b2.normalized()), n1.dot(n2));
  return angle <= -PI ? PI : angle;
}

double linear_bend_value(const INTCOORD_T& c, const VECTOR& x) {
  const VECTOR3 apex = position_of(x, c.atoms[1]);
  return angle_between(position_of(x, c.atoms[0]) - apex, axis_of(c)) +
         angle_between(axis_of(c), position_of(x, c.atoms[2]) - apex);
}

/// Derivative of the angle between a and b with respect to a; zero where the angle has none (0 and pi).
VECTOR3 angle_derivative(const VECTOR3& a, const VECTOR3& b) {
  constexpr double straight = 1e-8;
  const double length = a.norm();
  const VECTOR3 ua = a / length;
  const VECTOR3 ub = b.normalized();
  const VECTOR3 across = ub - ua.dot(ub) * ua;
  const double sine = across.norm();
  if (sine < straight) return VECTOR3::Zero();
  return -across / (sine * length);
}

using ROW = Eigen::Ref<Eigen::RowVectorXd, 0, Eigen::InnerStride<>>;

void add_to(ROW& row, int atom, const VECTOR3& derivative) { row.segment<3>(3 * (atom - 1)) += derivative.transpose(); }

void bond_row(const INTCOORD_T& c, const VECTOR& x, ROW& row) {
  const VECTOR3 unit = (position_of(x, c.atoms[1]) - position_of(x, c.atoms[0])).normalized();
  add_to(row, c.atoms[0], -unit);
  add_to(row, c.atoms[1], unit);
}

void angle_row(const INTCOORD_T& c, const VECTOR& x, ROW& row) {
  const VECTOR3 a = position_of(x, c.atoms[0]) - position_of(x, c.atoms[1]);
  const VECTOR3 b = position_of(x, c.atoms[2]) - position_of(x, c.atoms[1]);
  const VECTOR3 da = angle_derivative(a, b);
  const VECTOR3 db = angle_derivative(b, a);
  add_to(row, c.atoms[0], da);
  add_to(row, c.atoms[1], -da - db);
  add_to(row, c.atoms[2], db);
}

void linear_bend_row(const INTCOORD_T& c, const VECTOR& x, ROW& row) {
  const VECTOR3 apex = position_of(x, c.atoms[1]);
  const VECTOR3 da = angle_derivative(position_of(x, c.atoms[0]) - apex, axis_of(c));
  const VECTOR3 db = angle_derivative(position_of(x, c.atoms[2]) - apex, axis_of(c));
  add_to(row, c.atoms[0], da);
  add_to(row, c.atoms[1], -da - db);
  add_to(row, c.atoms[2], db);
}

void dihedral_row(const INTCOORD_T& c, const VECTOR& x, ROW& row) {
  constexpr double no_plane = 1e-16;
  const VECTOR3 f = position_of(x, c.atoms[0]) - position_of(x, c.atoms[1]);
  const VECTOR3 g = position_of(x, c.atoms[1]) - position_of(x, c.atoms[2]);
  const VECTOR3 h = position_of(x, c.atoms[3]) - position_of(x, c.atoms[2]);
  const VECTOR3 a = f.cross(g);
  const VECTOR3 b = h.cross(g);
  const double g_norm = g.norm();
  if (a.squaredNorm() < no_plane || b.squaredNorm() < no_plane) return;
  const VECTOR3 first = -g_norm / a.squaredNorm() * a;
  const VECTOR3 last = g_norm / b.squaredNorm() * b;
  const VECTOR3 shift = f.dot(g) / (a.squaredNorm() * g_norm) * a - h.dot(g) / (b.squaredNorm() * g_norm) * b;
  add_to(row, c.atoms[0], first);
  add_to(row, c.atoms[1], -first + shift);
  add_to(row, c.atoms[2], -shift - last);
  add_to(row, c.atoms[3], last);
}

}  // namespace

double coordinate_value(const INTCOORD_T& coordinate, const VECTOR& positions) {
  const auto& atoms = coordinate.atoms;
  switch (coordinate.kind) {
    case KIND::bond:
      return (position_of(positions, atoms[0]) - position_of(positions, atoms[1])).norm();
    case KIND::angle:
      return angle_at(positions, atoms[0], atoms[1], atoms[2]);
    case KIND::linear_bend:
      return linear_bend_value(coordinate, positions);
    case KIND::dihedral:
      return dihedral_value(coordinate, positions);
  }
  return 0.0;
}

VECTOR coordinate_values(const COORDINATE_SET_T& set, const VECTOR& positions) {
  VECTOR values(static_cast<Eigen::Index>(set.coordinates.size()));
  for (Eigen::Index n = 0; n < values.size(); ++n)
    values(n) = coordinate_value(set.coordinates[static_cast<std::size_t>(n)], positions);
  return values;
}

double wrapped(double angle) {
  const double turned = std::remainder(angle, 2.0 * PI);
  return turned <= -PI ? PI : turned;
}

VECTOR value_difference(const COORDINATE_SET_T& set, const VECTOR& a, const VECTOR& b) {
  VECTOR difference = a - b;
  for (Eigen::Index n = 0; n < difference.size(); ++n) {
    if (set.coordinates[static_cast<std::size_t>(n)].kind == KIND::dihedral) difference(n) = wrapped(difference(n));
  }
  return difference;
}

MATRIX wilson_b(const COORDINATE_SET_T& set, const VECTOR& positions) {
  const MATRIX rigid = rigid_motions(positions);
  MATRIX b = MATRIX::Zero(static_cast<Eigen::Index>(set.coordinates.size()), positions.size());
  for (Eigen::Index n = 0; n < b.rows(); ++n) {
    const INTCOORD_T& coordinate = set.coordinates[static_cast<std::size_t>(n)];
    ROW row = b.row(n);
    switch (coordinate.kind) {
      case KIND::bond:
        bond_row(coordinate, positions, row);
        break;
      case KIND::angle:
        angle_row(coordinate, positions, row);
        break;
      case KIND::linear_bend:
        linear_bend_row(coordinate, positions, row);
        row -= ((row * rigid) * rigid.transpose()).eval();
        break;
      case KIND::dihedral:
        dihedral_row(coordinate, positions, row);
        break;
    }
  }
  return b;
}

}  // namespace zentrix::INTERNAL_COORDS

#include <fmt/ostream.h>

#include <Eigen/Geometry>
#include <array>
#include <cmath>

#include "constants/limits.hpp"
#include "constants/units.hpp"
#include "input/blocks.hpp"
#include "input/input_parser.hpp"
#include "input/text.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

constexpr std::array<const char*, 4> expected_forms = {
    "expected: <Atom1>", "expected: <Atom> <Ref1> <R/Ang>", "expected: <Atom> <Ref1> <R/Ang> <Ref2> <theta/deg>",
    "expected: <Atom> <Ref1> <R/Ang> <Ref2> <theta/deg> <Ref3> <phi/deg>"};

/// Shorter vectors (bohr) have no direction.
constexpr double zero_length = 1e-10;

int print_bad_row(std::size_t row, const std::string& line, std::ostream& report) {
  fmt::print(report, " *** ERROR: cannot parse %gz line {}\n              {}\n            {}\n", row, line,
             expected_forms[std::min<std::size_t>(row, 4) - 1]);
  return 1;
}

/// Row number a reference names among the rows above, or 0 after a message. A bare integer is a row number; a token with an
/// ordering number names the row with the same token; a bare symbol the only row of that element.
int resolve_reference(std::string_view token, const std::vector<ZMATRIX_ROW_T>& above, std::ostream& report) {
  const std::size_t row = above.size() + 1;
  int found = 0;
  int matches = 0;
  if (const auto number = read_integer(token)) {
    if (*number >= 1 && *number < static_cast<int>(row)) return *number;
  } else {
    const bool labelled = token.find_first_of("0123456789") != std::string_view::npos;
    const int z = token_atomic_number(std::string(token));
    for (std::size_t i = 0; i < above.size() && z != 0; ++i) {
      if (labelled ? upper(above[i].token) == upper(token) : above[i].z == z) {
        found = static_cast<int>(i) + 1;
        ++matches;
      }
    }
  }
  if (matches == 1) return found;
  if (matches > 1) {
    fmt::print(report, " *** ERROR: %gz reference \"{}\" is ambiguous on line {} (multiple atoms of that element above).\n",
               token, row);
  } else {
    fmt::print(report, " *** ERROR: %gz reference \"{}\" on line {} does not name an earlier atom.\n", token, row);
  }
  return 0;
}

/// The fields of one row after its token: reference and value, up to three times.
int parse_row(const std::string& line, std::vector<ZMATRIX_ROW_T>& rows, std::ostream& report) {
  const std::size_t number = rows.size() + 1;
  const std::vector<std::string_view> fields = words(line);
  const std::size_t pairs = std::min<std::size_t>(number - 1, 3);
  if (fields.size() < 1 + 2 * pairs) return print_bad_row(number, line, report);
  ZMATRIX_ROW_T row;
  row.text = line;
  row.token = std::string(fields[0]);
  row.z = token_atomic_number(row.token);
  if (row.z == 0) {
    fmt::print(report, " *** ERROR: %gz line: unrecognized atom token: {}\n", row.token);
    return 1;
  }
  std::array<int*, 3> references = {&row.bond_atom, &row.angle_atom, &row.dihedral_atom};
  std::array<double*, 3> values = {&row.bond, &row.angle, &row.dihedral};
  for (std::size_t k = 0; k < pairs; ++k) {
    const auto value = read_real(fields[2 * k + 2]);
    if (!value || std::abs(*value) > 1e6 || (k == 0 && *value < 0.0)) return print_bad_row(number, line, report);
    *values[k] = *value;
  }
  for (std::size_t k = 0; k < pairs; ++k) {
    *references[k] = resolve_reference(fields[2 * k + 1], rows, report);
    if (*references[k] == 0) return 1;
  }
  if (pairs >= 2 && row.bond_atom == row.angle_atom) {
    fmt::print(report, " *** ERROR: %gz line {}: bond and angle partners must be different.\n", number);
    return 1;
  }
  if (pairs == 3 && (row.dihedral_atom == row.bond_atom || row.dihedral_atom == row.angle_atom)) {
    fmt::print(report, " *** ERROR: %gz line {}: dihedral partner duplicates earlier ref.\n", number);
    return 1;
  }
  warn_unused_fields(fields, 1 + 2 * pairs, report);
  rows.push_back(row);
  return 0;
}

using VECTOR3 = Eigen::Vector3d;

/// Unit vector across `axis` (a unit vector): the x direction with its component along the axis removed, or else y.
VECTOR3 perpendicular(const VECTOR3& axis) {
  for (const VECTOR3& direction : {VECTOR3(VECTOR3::UnitX()), VECTOR3(VECTOR3::UnitY())}) {
    const VECTOR3 across = direction - axis * axis.dot(direction);
    if (across.norm() > 1e-6) return across.normalized();
  }
  return VECTOR3::UnitY();
}

/// Position at distance r of i with the given angle at i (to j) and the right-handed dihedral about i-j (to k).
VECTOR3 place(const VECTOR3& i, const VECTOR3& j, const VECTOR3& k, double r, double theta, double phi) {
  const VECTOR3 along = (j - i).normalized();
  VECTOR3 across = (k - j) - along * along.dot(k - j);
  // References in one line leave the dihedral without meaning (the first atom off a linear chain): any plane serves.
  across = across.norm() > 1e-6 * (k - j).norm() ? VECTOR3(across.normalized()) : perpendicular(along);
  const VECTOR3 normal = along.cross(across);
  return i + r * (std::cos(theta) * along + std::sin(theta) * (std::cos(phi) * across - std::sin(phi) * normal));
}

}  // namespace

int parse_zmatrix_block(const std::vector<std::string>& lines, std::vector<ZMATRIX_ROW_T>& rows, std::ostream& report) {
  if (lines.empty()) {
    fmt::print(report, " *** ERROR: empty %gz block.\n");
    return 1;
  }
  if (lines.size() > MAX_ZMATRIX_ROWS) {
    fmt::print(report, " *** ERROR: %gz block exceeds maximum {} atoms.\n", MAX_ZMATRIX_ROWS);
    return 1;
  }
  for (const std::string& line : lines) {
    if (const int error = parse_row(line, rows, report); error != 0) return error;
  }
  return 0;
}

int zmatrix_to_cartesian(const std::vector<ZMATRIX_ROW_T>& rows, std::vector<double>& coords, std::ostream& report) {
  if (rows.size() > MAX_ZMATRIX_ROWS) {
    fmt::print(report, " *** ERROR: %gz block has {} atoms; maximum supported is {}\n", rows.size(), MAX_ZMATRIX_ROWS);
    return 1;
  }
  if (coords.size() < 3 * rows.size()) {
    fmt::print(report, " *** ERROR: zmatrix_to_cartesian: coords too small.\n");
    return 1;
  }
  std::fill(coords.begin(), coords.end(), 0.0);
  const auto atom = [&coords](int row) {
    return Eigen::Map<VECTOR3>(coords.data() + 3 * (static_cast<std::size_t>(row) - 1));
  };
  for (std::size_t n = 1; n < rows.size(); ++n) {
    const ZMATRIX_ROW_T& row = rows[n];
    const int number = static_cast<int>(n) + 1;
    const double r = row.bond * BOHR_PER_ANGSTROM;
    const double theta = row.angle * RADIAN_PER_DEGREE;
    const VECTOR3 i = atom(row.bond_atom);
    if (number == 2) {
      atom(2) = i + r * VECTOR3::UnitZ();
      continue;
    }
    const VECTOR3 j = atom(row.angle_atom);
    if ((j - i).norm() < zero_length) {
      if (number == 3) {
        fmt::print(report, " *** ERROR: %gz row 3 has zero ref bond.\n");
      } else {
        fmt::print(report, " *** ERROR: %gz row {} has zero-length ref_i-ref_j bond.\n", number);
      }
      return 1;
    }
    if (number == 3) {
      const VECTOR3 u = (i - j).normalized();
      atom(3) = i + r * (-std::cos(theta) * u + std::sin(theta) * perpendicular(u));
      continue;
    }
    const VECTOR3 k = atom(row.dihedral_atom);
    if ((k - j).norm() < zero_length) {
      fmt::print(report, " *** ERROR: %gz row {} has zero-length ref_j-ref_k bond.\n", number);
      return 1;
    }
    atom(number) = place(i, j, k, r, theta, row.dihedral * RADIAN_PER_DEGREE);
  }
  return 0;
}

}  // namespace zentrix::INPUT_PARSER

#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "input/input_data.hpp"

// Front door of the input subsystem.

namespace zentrix::INPUT_PARSER {

/// Reads the input file into `input`. Returns 0, or a non-zero code after the reason was printed to `report`; nothing is
/// read after the first error.
[[nodiscard]] int parse_input(const std::string& file_name, INPUT_DATA_T& input, std::ostream& report);

/// The same from a stream that is already open (tests, fuzzing).
[[nodiscard]] int parse_input_stream(std::istream& file, INPUT_DATA_T& input, std::ostream& report);

/// Prints all settings, the geometry, the Z-matrix and the scan grid or constraints.
void print_job_summary(const INPUT_DATA_T& input, std::ostream& report);

/// The job word as written in messages ("energy", "opt+freq", ...).
std::string job_word(JOB job);

/// Cartesian coordinates (bohr) of every row of a resolved Z-matrix, 3 values a row, written to `coords` from its start.
/// Row 1 at the origin, row 2 on the +z axis, row 3 in the xz-plane on the +x side; later rows by bond, angle and
/// right-handed dihedral. Non-zero after a message: too many rows, an array too small, or a zero-length reference bond.
[[nodiscard]] int zmatrix_to_cartesian(const std::vector<ZMATRIX_ROW_T>& rows, std::vector<double>& coords,
                                       std::ostream& report);

/// The bond, angle or dihedral that a scan variable moves, between the atom of its Z-matrix row and the row's references.
CONSTRAINT_T swept_coordinate(const INPUT_DATA_T& input, const SCAN_VARIABLE_T& variable);

}  // namespace zentrix::INPUT_PARSER

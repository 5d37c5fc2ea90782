#pragma once

#include <iosfwd>
#include <vector>

#include "geometry/internal_coords.hpp"

namespace zentrix::INTERNAL_COORDS {

/// Counts of the set and the value of every coordinate.
void print_summary(const COORDINATE_SET_T& set, std::ostream& report);

/// What became of every constraint, or the error that stopped the matching.
void print_constraint_matching(const std::vector<CONSTRAINT_MATCH_T>& matches, const COORDINATE_SET_T& set,
                               std::ostream& report);

/// The warning that bonds were left out.
void print_bonds_truncated(std::ostream& report);

/// The line that tells of a change of coordinates on the way.
void print_remade(std::ostream& report);

}  // namespace zentrix::INTERNAL_COORDS

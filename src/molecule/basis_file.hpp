#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "molecule/types.hpp"

// Readers of the basis library on disk: plain text, one block per element between lines of four stars.

namespace zentrix {

enum class DATA_STATUS { ok, no_file, no_element, parse_error, angular_momentum };

/// What was found for one element, with the offending shell where the angular momentum is too high.
struct ELEMENT_BASIS_T {
  std::vector<SHELL_T> shells;  ///< coefficients of normalised primitives as published; atom index not set
  char refused_letter = ' ';
  int refused_l = 0;
};

/// Reads the shells of element z: header line (type, number of primitives, scale factor) and one line per primitive. An SP
/// shell becomes an s and a p shell.
DATA_STATUS read_basis(std::istream& file, int z, ELEMENT_BASIS_T& basis);
DATA_STATUS read_basis_file(const std::string& path, int z, ELEMENT_BASIS_T& basis);

/// Reads the potential of element z: "XX-ECP lmax ncore", then for the local part and each semi-local one a title, the
/// number of terms and lines "n exponent coefficient". The atom index is not set.
DATA_STATUS read_ecp(std::istream& file, int z, ECP_T& ecp);
DATA_STATUS read_ecp_file(const std::string& path, int z, ECP_T& ecp);

}  // namespace zentrix

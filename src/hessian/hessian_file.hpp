#pragma once

#include <array>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "linalg/matrix.hpp"

// The Hessian file: plain text, written after every Hessian and read back instead of computing one (docs/side-files.md).

namespace zentrix::HESSIAN {

inline constexpr int FILE_VERSION = 1;
/// Largest distance (bohr) between an atom of a file and of the run that still counts as the same geometry.
inline constexpr double GEOMETRY_TOLERANCE = 1e-5;

/// What a Hessian belongs to.
struct HESSIAN_IDENTITY_T {
  struct NUCLEUS_T {
    int z = 0;
    std::array<double, 3> position = {};  ///< bohr
  };
  std::string method;
  std::string basis;
  std::string ecp;                  ///< empty: none
  std::string spin = "restricted";  ///< or "unrestricted"
  int charge = 0;
  int multiplicity = 1;
  std::vector<NUCLEUS_T> atoms;
};

struct HESSIAN_FILE_T {
  HESSIAN_IDENTITY_T identity;
  std::optional<double> energy;  ///< hartree
  VECTOR gradient;               ///< 3N, hartree/bohr; empty: none
  MATRIX hessian;                ///< 3N x 3N, hartree/bohr^2
  VECTOR frequencies;            ///< cm^-1, imaginary ones negative; empty: none
  MATRIX modes;                  ///< columns; empty: none
  int unconverged = 0;           ///< SCF runs behind the Hessian that did not converge
};

/// Statuses of the reader. Each comes after the line that explains it.
enum class READ_STATUS : int {
  accepted = 0,
  no_file = 1,
  no_version = 2,
  other_version = 3,
  malformed = 4,
  out_of_order = 5,
  other_size = 6,
  incomplete = 7,
  other_atom_count = 8,
  other_element = 9,
  other_geometry = 10,
  other_method = 11,
  other_basis = 12,
  other_ecp = 13,
  other_spin = 14,
  other_charge = 15,
  other_multiplicity = 16
};

/// The text of the file; `energy` must be there. A missing gradient is written as zeros.
std::string hessian_file_text(const HESSIAN_FILE_T& content);

/// Writes base.hess under a name that is free. Returns the name; empty after a warning when it could not be written.
std::string write_hessian_file(const std::string& base, const HESSIAN_FILE_T& content, std::ostream& report);

/// Reads a file and accepts it when it belongs to the molecule, geometry and method of `current`. `content` is of use only
/// with status `accepted`.
[[nodiscard]] READ_STATUS read_hessian_file(const std::string& name, const HESSIAN_IDENTITY_T& current,
                                            HESSIAN_FILE_T& content, std::ostream& report);

/// The same from a stream; `name` is what the messages call it.
[[nodiscard]] READ_STATUS read_hessian(std::istream& file, const std::string& name, const HESSIAN_IDENTITY_T& current,
                                       HESSIAN_FILE_T& content, std::ostream& report);

}  // namespace zentrix::HESSIAN

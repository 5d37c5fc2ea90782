#pragma once

#include <vector>

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// Components of a shell and the way from bare Cartesian components to the basis functions of a run.
//
// The engine works on bare components x^i y^j z^k (lexicographic: xx, xy, xz, yy, yz, zz) whose shell coefficients normalise
// x^l. Basis functions are linear combinations of them: a diagonal scaling for Cartesian functions (each normalised to
// self-overlap 1), real solid harmonics m = -l .. +l for spherical ones. Densities go in, and J, K and one-electron matrices
// come out, through the same block-diagonal matrix, so no kernel knows which kind a run uses.

namespace zentrix {

/// Powers (i, j, k) of component number n of angular momentum l in lexicographic order.
struct POWERS_T {
  int x = 0;
  int y = 0;
  int z = 0;
};
POWERS_T cartesian_powers(int l, int n);
/// Those of all components of l <= LMAX, from a table that the first call makes.
const std::vector<POWERS_T>& powers_of(int l);
/// Position of x^i y^j z^k inside its shell: (l - i)(l - i + 1)/2 + k.
constexpr int cartesian_index(int y, int z) { return (y + z) * (y + z + 1) / 2 + z; }

/// Basis functions of one shell in bare components, nfunc x n_cartesian(l): rows are functions. Spherical for l <= 4 only
/// (stops the run above).
const MATRIX& shell_functions(int l, bool spherical);

/// First bare Cartesian component of every shell, and the total number at the end (size nshell + 1).
std::vector<int> cartesian_offsets(const MOLECULE_T& molecule);

/// D (n_basis x n_basis, run's functions) -> T^t D T (bare components, as the engine's kernels use it).
MATRIX to_cartesian(const MOLECULE_T& molecule, const MATRIX& functions);
/// X (bare components) -> T X T^t (run's functions).
MATRIX to_functions(const MOLECULE_T& molecule, const MATRIX& cartesian);

}  // namespace zentrix

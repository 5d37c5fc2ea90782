#pragma once

#include <vector>

#include "integrals/families.hpp"
#include "integrals/hermite.hpp"
#include "linalg/matrix.hpp"

// Pairs of primitive families: the charge distributions of the Coulomb engine, and the way from a density over contracted
// shells to their Hermite coefficients and back.

namespace zentrix::INTEGRALS_2E {

struct HERMITE_PAIR_T {
  int a = 0, b = 0;                   ///< families, a >= b
  int order = 0;                      ///< l_max(a) + l_max(b)
  double p = 0.0;                     ///< exponent sum, bohr^-2
  std::array<double, 3> center = {};  ///< P, bohr
  double bound = 0.0;                 ///< largest Coulomb norm of a product of two of its functions, coefficients included
  std::size_t first = 0;              ///< first element in a Hermite vector over all pairs
};

/// Pairs between the families of two atoms. Their products live in one atom block of a matrix, so different ranges can be
/// folded and unfolded by different threads.
struct ATOM_PAIR_RANGE_T {
  std::size_t begin = 0;
  std::size_t end = 0;
};

struct HERMITE_PAIRS_T {
  std::vector<FAMILY_T> families;
  std::vector<HERMITE_PAIR_T> pairs;      ///< ordered by atom pair
  std::vector<ATOM_PAIR_RANGE_T> ranges;  ///< one per atom pair that has any
  std::size_t size = 0;                   ///< length of a Hermite vector over all pairs
};

/// All pairs whose product with the largest one could ever matter. Threaded; the result does not depend on the threads.
HERMITE_PAIRS_T make_hermite_pairs(const MOLECULE_T& molecule);

/// h_t = sum over the functions of each pair of c c' E_t^{ab} D_ab (both orders of a and b included), times
/// sqrt(2) pi^(5/4) / p, for a symmetric density over bare Cartesian components; `hermite` has pairs.size elements.
/// norms[i] is raised to the Coulomb norm of pair i's vector where that is larger.
void fold_density(const HERMITE_PAIRS_T& pairs, const MATRIX& density, double* hermite, std::vector<double>& norms);

/// J_ab = sum over pairs of c c' E_t^{ab} j_t with the same factors: the transpose of the fold.
MATRIX unfold_potential(const HERMITE_PAIRS_T& pairs, const double* hermite, Eigen::Index n_components);

}  // namespace zentrix::INTEGRALS_2E

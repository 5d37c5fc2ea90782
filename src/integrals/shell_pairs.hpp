#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include "constants/limits.hpp"

#include "integrals/kernels/quartet_kernels.hpp"
#include "integrals/kernels/shell_pair.hpp"
#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

// Shell pairs of one geometry with their Schwarz bounds, in lists that the quartet kernels can take eight at a time.

namespace zentrix::INTEGRALS_2E {

using kernels::PRIMITIVE_PAIR_T;
using kernels::SHELL_PAIR_T;

/// Pairs of equal angular momenta, as many contractions and similar numbers of primitives, largest Schwarz bound first.
struct PAIR_LIST_T {
  int la = 0, lb = 0;  ///< or SP_SHELL for a merged shell
  int n_contractions = 1;
  std::vector<SHELL_PAIR_T> pairs;

  int na() const { return kernels::function_count(la); }
  int nb() const { return kernels::function_count(lb); }
  int block_size() const { return na() * nb(); }
  /// True when the vector kernels have this class (the scalar reference serves the others).
  bool vectorised() const { return la <= kernels::KERNEL_LMAX || la == kernels::SP_SHELL; }
};

/// Everything the exchange engine and the store know of a molecule.
struct SHELL_PAIRS_T {
  /// Lists in ascending rank (kernels::bra_before_ket): a quartet's bra list never precedes its ket list, and within one
  /// list the bra never precedes the ket.
  std::vector<PAIR_LIST_T> lists;
  std::vector<PRIMITIVE_PAIR_T> primitives;
  std::vector<double> second;         ///< exponents of the second shells, in the order of the primitives
  std::vector<double> weights;        ///< of merged pairs, SHELL_PAIR_T::weights
  std::vector<SHELL_PAIR_T> members;  ///< of pairs with several contractions
  std::vector<SHELL_T> shells;        ///< a merged shell stands as its first one, an s and p shell with l = SP_SHELL
  std::vector<std::array<double, 3>> centers;  ///< of the shells, bohr
  std::vector<int> first;                      ///< first bare Cartesian component of every shell, and their number
  MATRIX schwarz;                              ///< Q of all shell pairs
  long block_doubles = 0;                      ///< size of an array of component blocks over all pairs
  int max_primitives = 1;                      ///< most primitives of a pair
  int max_l = 0;                               ///< highest angular momentum that the vector kernels meet
  bool has_sp_shells = false;                  ///< the classes are those of kernels::merged_kinds

  int n_shells() const { return static_cast<int>(shells.size()); }
  int n_components() const { return first.back(); }
  /// Most combinations of contractions that a pair has.
  int most_contractions() const {
    int most = 1;
    for (const PAIR_LIST_T& list : lists) most = std::max(most, list.n_contractions);
    return most;
  }
};

/// Primitives of exponents x at a and y at b (bohr^-2, bohr) with the product of their coefficients.
PRIMITIVE_PAIR_T primitive_pair(double x, const std::array<double, 3>& a, double y, const std::array<double, 3>& b,
                                double coefficient);

/// Primitive pairs of two shells, largest |prefactor| first, and the exponents of the second shell in them.
struct PRIMITIVE_PAIRS_T {
  std::vector<PRIMITIVE_PAIR_T> pairs;
  std::vector<double> second;
};
PRIMITIVE_PAIRS_T primitive_pairs(const SHELL_T& a, const std::array<double, 3>& center_a, const SHELL_T& b,
                                  const std::array<double, 3>& center_b);

/// How much larger the integrals of a pair can be than those of s functions with the same prefactors. The factor that the
/// bare product x_A^la x_B^lb adds to the charge of a primitive is at most (s + |PA|)^la (s + |PB|)^lb, with s^l the mean of
/// |x|^l over exp(-p x^2) and l = la + lb (the inequalities of Hoelder and Minkowski): far more than 1 for diffuse functions
/// of high angular momentum. 1 up to the factor that the safety of the cut-offs covers.
double growth(int la, int lb, const SHELL_PAIR_T& pair);

/// Pairs, bounds and lists. Stops the run when a shell is not sound. Pairs are dropped when even their product with the
/// largest bound is below any threshold in use.
SHELL_PAIRS_T make_shell_pairs(const MOLECULE_T& molecule, const kernels::QUARTET_KERNELS_T& kernels, int lanes);

/// Sorts pairs with bounds into the lists of the data, leaving out what never matters.
void fill_lists(SHELL_PAIRS_T& data, std::vector<SHELL_PAIR_T>& candidates);

/// The same pairs with shells of common exponents merged: an s and a p shell as one of four functions, where nothing goes
/// beyond d (there are no such kernels beyond); otherwise contractions of equal angular momentum. No lists when there is
/// nothing to merge. Keeps pointers into `plain`.
SHELL_PAIRS_T merge_shells(const SHELL_PAIRS_T& plain);

/// Norm of every component relative to x^l: bare component times norm is a function of self-overlap 1.
const std::vector<double>& component_norms(int l);

}  // namespace zentrix::INTEGRALS_2E

#pragma once

// Shell-pair data as the kernels read it: plain arrays, no containers.

namespace zentrix::kernels {

/// One primitive pair, exactly one cache line. Eight of them transpose into eight vectors.
struct alignas(64) PRIMITIVE_PAIR_T {
  double exponent = 1.0;      ///< p = a + b, bohr^-2
  double center[3] = {};      ///< P = (a A + b B) / p, bohr
  double prefactor = 0.0;     ///< c_a c_b exp(-a b |A-B|^2 / p) sqrt(2) pi^(5/4) / p
  double from_first[3] = {};  ///< P - A, bohr
};
static_assert(sizeof(PRIMITIVE_PAIR_T) == 64);

/// Two contracted shells (i, j), l_i >= l_j.
struct SHELL_PAIR_T {
  const PRIMITIVE_PAIR_T* primitives = nullptr;  ///< largest |prefactor| first
  /// Pairs with a merged shell: for every primitive pair the factors that the prefactor lacks, one for each combination of
  /// the shells that were merged. Four of them with an s and p shell (unused ones 0), n_contractions of them in general.
  const double* weights = nullptr;
  const double* second = nullptr;  ///< exponent of shell j in every primitive pair (gradients), bohr^-2
  /// Contractions of one angular momentum over the same primitives, merged: the pairs of all combinations, i first.
  const SHELL_PAIR_T* members = nullptr;
  int n_contractions = 1;
  int n_primitives = 0;
  int shell_i = 0, shell_j = 0;
  int first_i = 0, first_j = 0;  ///< first bare Cartesian component of either shell
  double separation[3] = {};     ///< A - B, bohr
  double bound = 0.0;            ///< Q = sqrt(max (ij|ij)) over normalised Cartesian functions
  double growth = 1.0;           ///< how far integrals can exceed what the prefactors tell (INTEGRALS_2E::growth)
  double symmetry = 1.0;         ///< 1/2 when i = j: both orders of the components are visited
  long block = 0;                ///< start of the pair's component block in arrays over pairs
};

/// Angular momenta of a pair class. Classes are ranked by total angular momentum, then by the larger one; a quartet's bra is
/// the pair of higher rank.
inline constexpr int KERNEL_LMAX = 4;  // g functions
inline constexpr int KERNEL_PAIR_CLASSES = (KERNEL_LMAX + 1) * (KERNEL_LMAX + 2) / 2;

/// Position of (la, lb), la >= lb, in the tables of kernels.
constexpr int pair_class(int la, int lb) { return la * (la + 1) / 2 + lb; }
/// True when a pair (la, lb) may be the bra of a ket (lc, ld).
constexpr bool bra_before_ket(int la, int lb, int lc, int ld) { return la + lb != lc + ld ? la + lb > lc + ld : la >= lc; }

// Shells that share their exponents. The s and the p shell of such a set are taken as one *merged* shell with the functions
// s, x, y, z: the primitives, by far the dearest part of a contracted quartet, are then computed once for both.

inline constexpr int SP_SHELL = 6;  ///< in place of an angular momentum; above all of them
constexpr int lowest_l(int kind) { return kind == SP_SHELL ? 0 : kind; }
constexpr int highest_l(int kind) { return kind == SP_SHELL ? 1 : kind; }
constexpr int shells_in(int kind) { return kind == SP_SHELL ? 2 : 1; }
/// Angular momentum of shell n of a kind, and its first function.
constexpr int l_of(int kind, int n) { return kind == SP_SHELL ? n : kind; }
constexpr int first_function(int kind, int n) { return kind == SP_SHELL ? n : 0; }
constexpr int function_count(int kind) { return kind == SP_SHELL ? 4 : (kind + 1) * (kind + 2) / 2; }

/// Pair classes of molecules with merged shells (nothing beyond d): the plain ones, then (sp, s), (p, sp), (sp, sp), (d,
/// sp).
inline constexpr int MERGED_PAIR_CLASSES = 10;
struct KINDS_T {
  int first, second;
};
constexpr KINDS_T merged_kinds(int merged_class) {
  constexpr KINDS_T kinds[MERGED_PAIR_CLASSES] = {
      {0, 0}, {1, 0}, {1, 1}, {2, 0}, {2, 1}, {2, 2}, {SP_SHELL, 0}, {1, SP_SHELL}, {SP_SHELL, SP_SHELL}, {2, SP_SHELL}};
  return kinds[merged_class];
}
constexpr int merged_class(int first, int second) {
  int n = 0;
  while (merged_kinds(n).first != first || merged_kinds(n).second != second) ++n;
  return n;
}
/// Whether (first, second) is the order in which two kinds make a pair.
constexpr bool ordered_kinds(int first, int second) {
  return highest_l(first) != highest_l(second) ? highest_l(first) > highest_l(second) : first <= second;
}
/// Classes in ascending order of work; the order of plain classes is that of bra_before_ket.
constexpr int pair_rank(int first, int second) {
  const int merged = (first == SP_SHELL) + (second == SP_SHELL);
  return 64 * (highest_l(first) + highest_l(second)) + 4 * highest_l(first) + merged;
}

}  // namespace zentrix::kernels

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
  const double* second = nullptr;                ///< exponent of shell j in every primitive pair (gradients), bohr^-2
  int n_primitives = 0;
  int shell_i = 0, shell_j = 0;
  int first_i = 0, first_j = 0;  ///< first bare Cartesian component of either shell
  double separation[3] = {};     ///< A - B, bohr
  double bound = 0.0;            ///< Q = sqrt(max (ij|ij)) over normalised Cartesian functions
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

}  // namespace zentrix::kernels

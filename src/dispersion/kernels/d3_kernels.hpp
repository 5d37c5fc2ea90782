#pragma once

#include <cstddef>

#include "simd/isa.hpp"

// The pair loops of the D3(BJ) correction. Atoms are sorted by element; the group of an element is padded to a multiple of
// MAX_LANES with atoms that take no part (presence 0, weights 0). Every routine works for one atom against all others, so
// that threads share nothing but what they read, and each pair is met from both sides.

namespace zentrix::kernels {

inline constexpr int D3_SLOTS = 7;  ///< reference systems per element

/// The atoms of one element.
struct D3_GROUP_T {
  std::size_t first = 0, end = 0;  ///< range in the arrays, padding included
  double radius = 0.0;             ///< 4/3 of the covalent radius, bohr; 0: no coordination numbers
  double q = 0.0;                  ///< C8 = 3 C6 q_A q_B
  int n_references = 0;            ///< 0: no dispersion
  double reference_cn[D3_SLOTS] = {};
};

struct D3_SYSTEM_T {
  std::size_t n = 0;  ///< padded number of atoms
  int n_groups = 0;
  const D3_GROUP_T* groups = nullptr;
  const int* group_of = nullptr;  ///< per atom
  const double* c6 = nullptr;     ///< reference C6 of groups g and h: [((g n_groups + h) D3_SLOTS + i) D3_SLOTS + j]
  double s6 = 0.0, s8 = 0.0, a1 = 0.0, a2 = 0.0;
  const double* x = nullptr;
  const double* y = nullptr;
  const double* z = nullptr;
  const double* presence = nullptr;  ///< 1 for an atom that counts as a neighbour, 0 for others and padding
  double* coordination = nullptr;    ///< filled by `coordination`
  double* weight = nullptr;          ///< D3_SLOTS arrays of n, filled by `weights`
  double* energy = nullptr;          ///< half of the energy of the atom's pairs, filled by `pairs`
  double* energy_by_cn = nullptr;    ///< derivative with respect to the atom's coordination number, filled by `pairs`
  double* gradient[3] = {};          ///< set by `pairs`, completed by `coordination_gradient`
};

struct D3_KERNELS_T {
  /// Coordination number of atom a.
  void (*coordination)(const D3_SYSTEM_T& system, std::size_t a);
  /// Weights exp(-4 (CN - CN_ref)^2) of the references of all atoms of group g.
  void (*weights)(const D3_SYSTEM_T& system, int g);
  /// Energy of atom a and its derivatives at fixed coordination numbers of the others.
  void (*pairs)(const D3_SYSTEM_T& system, std::size_t a);
  /// What the motion of atom a does to all coordination numbers.
  void (*coordination_gradient)(const D3_SYSTEM_T& system, std::size_t a);
};

}  // namespace zentrix::kernels

ZX_DECLARE_FOR_EACH_ISA(D3_KERNELS_T d3_kernels())

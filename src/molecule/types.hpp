#pragma once

#include <array>
#include <string>
#include <vector>

// The molecule as every later stage sees it: atoms, contracted shells, effective core potentials, electron counts.

namespace zentrix::TYPES {

struct ATOM_T {
  std::string symbol;                   ///< "C"
  int z = 0;                            ///< atomic number
  double charge = 0.0;                  ///< nuclear charge in integrals: z less the core electrons of an ECP; 0 for a ghost
  std::array<double, 3> position = {};  ///< bohr
  bool ghost = false;                   ///< basis functions without charge or electrons
  int fragment = 0;                     ///< fragment of a counterpoise job, from 1; 0 in other jobs
};

/// A contracted shell: all components x^i y^j z^k exp(-alpha r^2), i + j + k = l, or their 2l + 1 real solid harmonics.
struct SHELL_T {
  int atom = 0;  ///< index of the centre in MOLECULE_T::atoms, from 0
  int l = 0;
  int nprim = 0;
  std::vector<double> alpha;  ///< exponents, bohr^-2
  std::vector<double> coeff;  ///< coefficients of the bare primitives for the component x^l, primitive norms and
                              ///< contraction norm included: with them the function x^l has self-overlap 1
  int nfunc = 0;              ///< number of basis functions of the shell in this run
  int first = 0;              ///< its first basis function in this run, from 0
};

/// One term d r^(n-2) exp(-zeta r^2) of an effective core potential.
struct ECP_TERM_T {
  int n = 2;
  double exponent = 0.0;
  double coefficient = 0.0;
};

struct ECP_T {
  int atom = 0;                   ///< index of the centre, from 0
  int n_core = 0;                 ///< core electrons replaced
  int l_max = 0;                  ///< angular momentum of the local part; semi-local projectors are 0 .. l_max - 1
  std::vector<ECP_TERM_T> local;  ///< U_lmax
  std::vector<std::vector<ECP_TERM_T>> semi_local;  ///< U_l - U_lmax for l = 0 .. l_max - 1
};

struct MOLECULE_T {
  std::vector<ATOM_T> atoms;
  std::vector<SHELL_T> shells;
  int n_basis = 0;       ///< basis functions of this run (Cartesian or spherical by the flag below)
  int n_cartesian = 0;   ///< Cartesian functions of the shells
  int n_spherical = 0;   ///< real solid harmonics of the shells
  int n_primitives = 0;  ///< primitive Gaussians, every Cartesian component counted
  bool spherical = false;
  int charge = 0;
  int multiplicity = 1;
  int n_electrons = 0;
  int n_alpha = 0;
  int n_beta = 0;
  bool unrestricted = false;
  std::vector<ECP_T> ecps;
};

}  // namespace zentrix::TYPES

namespace zentrix {
using TYPES::ATOM_T;
using TYPES::ECP_T;
using TYPES::ECP_TERM_T;
using TYPES::MOLECULE_T;
using TYPES::SHELL_T;
}  // namespace zentrix

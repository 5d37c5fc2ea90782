#pragma once

#include <array>
#include <cstdint>

#include "scf/scf.hpp"

// Second-order Moeller-Plesset energies of converged Hartree-Fock states, restricted (one spin channel) or unrestricted
// (two), C. Moeller, M. S. Plesset, Phys. Rev. 46 (1934) 618. With D = e_i + e_j - e_a - e_b, i, j correlated occupied and
// a, b virtual orbitals,
//   closed shell  E_OS = sum (ia|jb)^2/D,  E_SS = sum (ia|jb) [(ia|jb) - (ib|ja)]/D
//   open shell    E_ss = 1/2 sum (ia|jb) [(ia|jb) - (ib|ja)]/D for either spin s,  E_ab = sum (ia|jb)^2/D over both.

namespace zentrix::CORRELATION {

struct MP2_SETTINGS_T {
  int frozen_core = 0;         ///< lowest orbitals (of either spin) left uncorrelated
  int memory_limit_mb = 4096;  ///< of 2^20 bytes: for the integral store and the half-transformed integrals
};
/// -1 in the input stands for the cores of all atoms.
MP2_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input, const MOLECULE_T& molecule);

/// Numbers of orbitals and sizes of what is held in memory. Second entries belong to the beta channel.
struct MP2_DIMENSIONS_T {
  int channels = 1;
  int n_basis = 0;
  int frozen = 0;
  std::array<int, 2> occupied = {}, virtuals = {};
  int ecp_electrons = 0;
  bool stored = false;                ///< integrals come from the store, otherwise they are computed once a batch
  int batches = 1;                    ///< of occupied orbitals
  std::int64_t half_transformed = 0;  ///< bytes of the largest batch
  std::int64_t pair_integrals = 0;    ///< bytes of (ia|jb) of the pairs in work, one a thread
  int correlated(int spin) const { return occupied[static_cast<std::size_t>(spin)] - frozen; }
  /// Orbitals of the channel that take part, none of a channel that has no occupied or no virtual ones.
  bool takes_part(int spin) const {
    return spin < channels && correlated(spin) > 0 && virtuals[static_cast<std::size_t>(spin)] > 0;
  }
};

struct MP2_RESULT_T {
  bool unrestricted = false;
  double opposite_spin = 0.0;            ///< hartree
  std::array<double, 2> same_spin = {};  ///< alpha, beta; of a closed shell both together in the first
  double s_squared = 0.0;                ///< <S^2> to first order in the perturbation; 0 for a closed shell
  double energy() const { return opposite_spin + same_spin[0] + same_spin[1]; }
};

/// What an energy calculation tells while it goes on; this base says nothing.
class MP2_OBSERVER_T {
 public:
  virtual ~MP2_OBSERVER_T() = default;
  virtual void orbitals_counted(const MP2_DIMENSIONS_T&) {}
  virtual void sizes_planned(const MP2_DIMENSIONS_T&) {}    ///< once, with the memory; then a closed shell may stop
  virtual void batches_planned(const MP2_DIMENSIONS_T&) {}  ///< the work begins
  virtual void half_transformation(const MP2_DIMENSIONS_T&, int /*batch*/) {}
  virtual void pair_energies(const MP2_DIMENSIONS_T&, int /*batch*/) {}
  virtual void finished(const MP2_DIMENSIONS_T&, const MP2_RESULT_T&) {}
};

/// The correlation energy on top of `scf` at its geometry. Integrals are read from the geometry's store when it has one and
/// computed otherwise; occupied orbitals are worked off in batches when their half-transformed integrals would take more
/// than the memory limit leaves. Stops the run when there is nothing to correlate with or nothing to correlate.
MP2_RESULT_T mp2_energy(const SCF::GEOMETRY_DATA_T& geometry, const SCF::SCF_RESULT_T& scf, const MP2_SETTINGS_T& settings,
                        MP2_OBSERVER_T& observer);

}  // namespace zentrix::CORRELATION

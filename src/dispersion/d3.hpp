#pragma once

#include <vector>

#include "dispersion/d3_data.hpp"
#include "dispersion/d3_parameters.hpp"
#include "dispersion/kernels/d3_kernels.hpp"
#include "linalg/matrix.hpp"

// Front door of the dispersion subsystem: energy and derivatives of the D3 correction with Becke-Johnson damping for one set
// of atoms. With coordination numbers CN, reference systems i, j of the elements of A and B and R0 = a1 sqrt(C8/C6) + a2,
//   E = -sum_(A<B) s6 C6/(r^6 + R0^6) + s8 C8/(r^8 + R0^8),   C8 = 3 C6 q_A q_B,
//   C6 = sum_ij w_i w_j C6_ij / sum_ij w_i w_j,               w_i = exp(-4 (CN_A - CN_i)^2),
//   CN_A = sum_B 1/(1 + exp(-16 (4/3 (R_A + R_B)/r - 1))).
// S. Grimme, J. Antony, S. Ehrlich, H. Krieg, J. Chem. Phys. 132 (2010) 154104; S. Grimme, S. Ehrlich, L. Goerigk, J.
// Comput. Chem. 32 (2011) 1456. All pairs are summed, there is no cutoff and no three-body term.

namespace zentrix::DISPERSION {

class D3_T {
 public:
  /// Atoms of an element without data (or beyond D3_MAX_Z, or 0 for a ghost) contribute nothing. Throws run_stopped when no
  /// reference data were loaded.
  D3_T(const D3_PARAMETERS_T& parameters, const D3_DATA_T& data, const std::vector<int>& atomic_numbers);

  /// `positions`: 3 x natom values in bohr, atom by atom. hartree.
  double energy(const VECTOR& positions) const;
  /// The same with `gradient`, 3 x natom values in hartree/bohr.
  double energy_and_gradient(const VECTOR& positions, VECTOR& gradient) const;
  /// 3N x 3N second derivatives, hartree/bohr^2: symmetrised central differences of the gradient, 5e-5 bohr either way.
  MATRIX hessian(const VECTOR& positions) const;
  /// Per atom.
  VECTOR coordination_numbers(const VECTOR& positions) const;

 private:
  struct WORK_T;
  void place(const VECTOR& positions, WORK_T& work) const;
  void evaluate(WORK_T& work, bool with_gradient) const;
  double total_energy(const WORK_T& work) const;
  void sort_atoms(const D3_DATA_T& data, const std::vector<int>& atomic_numbers);
  void copy_references(const D3_DATA_T& data);

  D3_PARAMETERS_T parameters_;
  kernels::D3_KERNELS_T kernels_;
  std::size_t n_atoms_ = 0;
  std::vector<int> elements_;  ///< atomic number of each group
  std::vector<kernels::D3_GROUP_T> groups_;
  std::vector<int> group_of_;          ///< per place in the padded arrays
  std::vector<std::size_t> place_of_;  ///< per atom
  std::vector<std::size_t> occupied_;  ///< places that hold an atom, in ascending order
  std::vector<double> c6_;
};

}  // namespace zentrix::DISPERSION

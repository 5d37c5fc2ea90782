#pragma once

#include <cstddef>
#include <vector>

#include "dft/grid.hpp"
#include "dft/kernels/cell_kernels.hpp"
#include "molecule/types.hpp"

// Fuzzy cells: A. D. Becke, J. Chem. Phys. 88 (1988) 2547. Every point of space is shared out among the atoms,
//   w_A = P_A / sum_B P_B,   P_A = prod_B s(nu_AB),   s(nu) = (1 - p(p(p(nu))))/2,   p(nu) = (3 nu - nu^3)/2,
//   nu = mu + a (1 - mu^2),   mu_AB = (r_A - r_B)/R_AB.

namespace zentrix::DFT_GRID {

/// a_ij of a pair with radii R_i, R_j: chi = R_i/R_j (Becke) or its square root (O. Treutler, R. Ahlrichs, J. Chem. Phys.
/// 102 (1995) 346), u = (chi - 1)/(chi + 1), a = u/(u^2 - 1) kept within |a| <= 1/2.
double size_adjustment(SIZE_ADJUSTMENT kind, double radius_i, double radius_j);

/// The cells of one geometry. Atoms in one place share their cell equally. Const and free of shared state: any number of
/// threads may call.
class PARTITION_T {
 public:
  PARTITION_T(const MOLECULE_T& molecule, SIZE_ADJUSTMENT adjustment);

  int n_atoms() const { return static_cast<int>(x_.size()); }

  /// Weights of `owner` at n points (bohr), fastest when neighbours in the list are neighbours in space. Weights below
  /// `negligible` may come back as zero; the others are exact to rounding: no atom is left out of a product.
  void weights(int owner, int n, const double* x, const double* y, const double* z, double negligible, double* weight) const;

  /// gradient[3 C + axis] += sum_p value_p d ln w_owner(p) / d X_C (bohr^-1), the points moving along with their owner; with
  /// value_p = grid weight times integrand this is what the motion of the nuclei does to a sum over points through the
  /// weights. The change of the integrand is not in it. The sum over all atoms is zero.
  void add_gradient(int owner, int n, const double* x, const double* y, const double* z, const double* value,
                    double* gradient) const;

 private:
  kernels::FUZZY_CELLS_T cells() const;

  std::vector<double> x_, y_, z_;
  std::vector<double> inverse_distance_;
  std::vector<double> adjustment_;
  std::vector<int> neighbours_;
  kernels::ISA isa_;
};

}  // namespace zentrix::DFT_GRID

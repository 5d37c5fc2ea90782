#pragma once

#include "simd/isa.hpp"

namespace zentrix::kernels {

/// The fuzzy cells of a molecule as the kernels read them. All arrays belong to the caller.
struct FUZZY_CELLS_T {
  int n_atoms;
  const double *x, *y, *z;         ///< nuclei, bohr
  const double* inverse_distance;  ///< [i * n_atoms + j] 1/R_ij, bohr^-1; 0 for i = j and for atoms in one place
  const double* adjustment;        ///< [i * n_atoms + j] a_ij of nu = mu + a (1 - mu^2)
  const int* neighbours;           ///< [i * n_atoms + k] the k-th nearest atom of atom i, which comes first itself
};

/// One request: points of one atom, neighbours in the list being neighbours in space.
struct CELL_POINTS_T {
  int owner;
  int n;
  const double *x, *y, *z;  ///< bohr
};

/// Doubles of scratch memory per atom, on a cache line.
inline constexpr int CELL_WEIGHTS_SCRATCH = MAX_LANES;
inline constexpr int CELL_GRADIENT_SCRATCH = 8 * MAX_LANES;

}  // namespace zentrix::kernels

ZX_DECLARE_FOR_EACH_ISA(
    /// weight[p] = P_owner / sum_B P_B at each point; weights below `negligible` may come back as zero.
    void cell_weights(const FUZZY_CELLS_T& cells, const CELL_POINTS_T& points, double negligible, double* scratch,
                      double* weight))

ZX_DECLARE_FOR_EACH_ISA(
    /// gradient[3 C + axis] += sum_p value[p] d ln(P_owner / sum_B P_B) / d X_C with points that move along with their
    /// owner.
    void cell_gradient(const FUZZY_CELLS_T& cells, const CELL_POINTS_T& points, const double* value, double* scratch,
                       double* gradient))

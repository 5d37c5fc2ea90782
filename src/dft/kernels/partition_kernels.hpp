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

/// One request: the points of one atom, close together in the order of the list.
struct CELL_POINTS_T {
  int owner;
  int n;
  const double *x, *y, *z;  ///< bohr
  double negligible;        ///< weights below this may come back as zero
};

}  // namespace zentrix::kernels

ZX_DECLARE_FOR_EACH_ISA(
    /// weight[p] = P_owner / sum_B P_B at each point. scratch: MAX_LANES * n_atoms doubles.
    void cell_weights(const FUZZY_CELLS_T& cells, const CELL_POINTS_T& points, double* scratch, double* weight))

#pragma once

#include "integrals/kernels/horizontal.hpp"
#include "integrals/kernels/primitive_quartet.hpp"

// Front of a quartet class: primitives, contraction and bra transfer of one bra pair with LANES ket pairs.

namespace zentrix::kernels::ZX_ISA {

template <int LA, int LB, int LC, int LD>
struct FRONT_OF_CLASS {
  using RECURSION = VERTICAL<LA, LA + LB, LC, LC + LD>;
  static constexpr int E = LA + LB, L = LA + LB + LC + LD;

  static ZX_INLINE void primitive_quartet(const PRIMITIVE_PAIR_T& bra, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial,
                                          vec* work, vec* contracted) {
    for (int m = 0; m <= L; ++m) work[m * RECURSION::NE] = radial.f[m];
    typename RECURSION::FACTORS k;
    set_factors<E, (LC + LD > 1)>(bra, ket, radial.inverse, k);
    RECURSION::run(k, work, contracted);
  }

  /// Small classes keep the contracted sums in registers, and the buffers of the recursion where stores can be left out.
  static constexpr bool SMALL = unroll_tree(E, LC + LD);

  static void run(const BATCH_T& batch, const BOYS_SERVICE_T& boys, double* scratch, double* rows) {
    vec* contracted = reinterpret_cast<vec*>(scratch);
    vec* work = contracted + RECURSION::NC * RECURSION::NF;
    vec sums[SMALL ? RECURSION::NC * RECURSION::NF : 1];
    if constexpr (SMALL) contracted = sums;
    for (int n = 0; n < RECURSION::NC * RECURSION::NF; ++n) contracted[n] = vec{};
    for_each_primitive<L>(
        batch, boys, work + RECURSION::WORK,
        [&](int b, int, const KET_PRIMITIVE_T& ket, const RADIAL_T<L>& radial) __attribute__((always_inline)) {
          const PRIMITIVE_PAIR_T& bra = batch.bra->primitives[b];
          if constexpr (SMALL) {
            vec local[RECURSION::WORK];
            primitive_quartet(bra, ket, radial, local, sums);
          } else {
            primitive_quartet(bra, ket, radial, work, contracted);
          }
        });
    transfer_bra<LA, LB>(batch.bra->separation, RECURSION::NF, row_stride(LC, LD), contracted, RECURSION::NC,
                         reinterpret_cast<vec*>(rows));
  }
};

/// Enters the fronts of bra class (LA, LB) into the table; defined in front_<bra>.cpp, one file each.
template <int LA, int LB>
struct FRONTS_OF_BRA {
  template <int CLASS>
  static void fill(FRONT* row) {
    constexpr int lc = CLASS >= 10 ? 4 : CLASS >= 6 ? 3 : CLASS >= 3 ? 2 : CLASS >= 1 ? 1 : 0;
    constexpr int ld = CLASS - lc * (lc + 1) / 2;
    if constexpr (bra_before_ket(LA, LB, lc, ld)) row[CLASS] = FRONT_OF_CLASS<LA, LB, lc, ld>::run;
    if constexpr (CLASS > 0) fill<CLASS - 1>(row);
  }
};

}  // namespace zentrix::kernels::ZX_ISA

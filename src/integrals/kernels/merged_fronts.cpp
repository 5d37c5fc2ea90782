#include "integrals/kernels/merged_front.hpp"

namespace zentrix::kernels::ZX_ISA {

void fill_merged_fronts(QUARTET_KERNELS_T& kernels) {
  for (int bra = 0; bra < MERGED_PAIR_CLASSES; ++bra) {
    const KINDS_T b = merged_kinds(bra);
    for (int ket = 0; ket < MERGED_PAIR_CLASSES; ++ket) {
      const KINDS_T k = merged_kinds(ket);
      const bool plain = b.first != SP_SHELL && b.second != SP_SHELL && k.first != SP_SHELL && k.second != SP_SHELL;
      if (plain)
        kernels.merged_front[bra][ket] = kernels.front[pair_class(b.first, b.second)][pair_class(k.first, k.second)];
    }
  }
  MERGED_FRONTS_OF_BRA<SP_SHELL, 0>::fill(kernels.merged_front[merged_class(SP_SHELL, 0)]);
  MERGED_FRONTS_OF_BRA<1, SP_SHELL>::fill(kernels.merged_front[merged_class(1, SP_SHELL)]);
  MERGED_FRONTS_OF_BRA<SP_SHELL, SP_SHELL>::fill(kernels.merged_front[merged_class(SP_SHELL, SP_SHELL)]);
  MERGED_FRONTS_OF_BRA<1, 1>::fill(kernels.merged_front[merged_class(1, 1)]);
}

}  // namespace zentrix::kernels::ZX_ISA

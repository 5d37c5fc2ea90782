#pragma once

#include <vector>

#include "integrals/shell_pairs.hpp"
#include "integrals/workspace.hpp"

namespace zentrix::INTEGRALS_2E {

/// Schwarz bounds Q = sqrt(max (ab|ab)) over normalised Cartesian functions (Haeser, Ahlrichs, J. Comput. Chem. 10 (1989)
/// 104), from all primitives: a primitive cut-off would turn small bounds into zero and drop pairs that matter.
class SCHWARZ_WORK {
 public:
  SCHWARZ_WORK(const SHELL_PAIRS_T& data, const kernels::QUARTET_KERNELS_T& kernels, int lanes);
  /// The bound of one pair; `thread` picks the buffers.
  double bound(int thread, const SHELL_PAIR_T& pair);

 private:
  const SHELL_PAIRS_T& data_;
  const kernels::QUARTET_KERNELS_T& kernels_;
  int lanes_;
  kernels::BOYS_SERVICE_T boys_;
  struct BUFFERS_T {
    QUARTET_WORK_T work;
    ALIGNED_DOUBLES block;
    std::vector<double> scalar_block;
  };
  std::vector<BUFFERS_T> buffers_;
};

}  // namespace zentrix::INTEGRALS_2E

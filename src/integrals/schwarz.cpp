#include "integrals/schwarz.hpp"

#include <omp.h>

#include <algorithm>
#include <cmath>

#include "integrals/reference_eri.hpp"

namespace zentrix::INTEGRALS_2E {

SCHWARZ_WORK::SCHWARZ_WORK(const SHELL_PAIRS_T& data, const kernels::QUARTET_KERNELS_T& kernels, int lanes)
    : data_(data), kernels_(kernels), lanes_(lanes), boys_(kernels::boys_service()) {
  const auto n = static_cast<std::size_t>(n_cartesian(data.max_l));
  for (int thread = 0; thread < omp_get_max_threads(); ++thread)
    buffers_.push_back({QUARTET_WORK_T(data.max_l, data.max_primitives, lanes),
                        ALIGNED_DOUBLES(n * n * n * n * static_cast<std::size_t>(lanes)),
                        {}});
}

double SCHWARZ_WORK::bound(int thread, const SHELL_PAIR_T& pair) {
  BUFFERS_T& buffers = buffers_[static_cast<std::size_t>(thread)];
  const SHELL_T &a = data_.shells[static_cast<std::size_t>(pair.shell_i)],
                &b = data_.shells[static_cast<std::size_t>(pair.shell_j)];
  const int na = n_cartesian(a.l), nb = n_cartesian(b.l), nab = na * nb;
  const double* block = nullptr;
  std::size_t stride = 1;
  if (a.l <= kernels::KERNEL_LMAX) {
    kernels::BATCH_T batch;
    batch.bra = &pair;
    std::fill_n(batch.kets, kernels::MAX_LANES, &pair);
    batch.scale[0] = 1.0;
    batch.count = 1;
    const int pair_class = kernels::pair_class(a.l, b.l);
    kernels_.front[pair_class][pair_class](batch, boys_, buffers.work.scratch.data(), buffers.work.rows.data());
    kernels_.store_rows[pair_class](batch, nab, buffers.work.rows.data(), buffers.block.data());
    block = buffers.block.data();
    stride = static_cast<std::size_t>(lanes_);
  } else {
    const CENTERED_SHELL_T x{a, data_.centers[static_cast<std::size_t>(pair.shell_i)]};
    const CENTERED_SHELL_T y{b, data_.centers[static_cast<std::size_t>(pair.shell_j)]};
    compute_eri_contracted(x, y, x, y, buffers.scalar_block);
    block = buffers.scalar_block.data();
  }
  double largest = 0.0;
  for (int m = 0; m < nab; ++m) {
    const double norm =
        component_norms(a.l)[static_cast<std::size_t>(m / nb)] * component_norms(b.l)[static_cast<std::size_t>(m % nb)];
    largest = std::max(largest, std::abs(block[static_cast<std::size_t>(m * nab + m) * stride]) * norm * norm);
  }
  return std::sqrt(largest);
}

}  // namespace zentrix::INTEGRALS_2E

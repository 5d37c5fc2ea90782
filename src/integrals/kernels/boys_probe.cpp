#include "integrals/kernels/boys_probe.hpp"

#include "integrals/kernels/boys_lanes.hpp"

namespace zentrix::kernels::ZX_ISA {

namespace {

template <int M>
void probe(const BOYS_SERVICE_T& service, int n, const double* t, double* f) {
  for (int i = 0; i < n; i += LANES) {
    vec values[M + 1];
    boys_lanes<M>(service, load(t + i), values);
    for (int m = 0; m <= M; ++m) store(f + static_cast<long>(m) * n + i, values[m]);
  }
}

template <int M>
void pick_order(const BOYS_SERVICE_T& service, int m, int n, const double* t, double* f) {
  if (m == M) return probe<M>(service, n, t, f);
  if constexpr (M > 0) pick_order<M - 1>(service, m, n, t, f);
}

}  // namespace

void boys_probe(const BOYS_SERVICE_T& service, int m, int n, const double* t, double* f) {
  pick_order<BOYS_LANES_MMAX>(service, m, n, t, f);
}

}  // namespace zentrix::kernels::ZX_ISA

#include "integrals/scalar_quartet.hpp"

#include "integrals/reference_eri.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

int components(const SHELL_PAIRS_T& data, int shell) { return n_cartesian(data.shells[static_cast<std::size_t>(shell)].l); }

CENTERED_SHELL_T centered(const SHELL_PAIRS_T& data, int shell) {
  return {data.shells[static_cast<std::size_t>(shell)], data.centers[static_cast<std::size_t>(shell)]};
}

}  // namespace

void scalar_block(const SHELL_PAIRS_T& data, const SHELL_PAIR_T& bra, const SHELL_PAIR_T& ket, std::vector<double>& block) {
  compute_eri_contracted(centered(data, bra.shell_i), centered(data, bra.shell_j), centered(data, ket.shell_i),
                         centered(data, ket.shell_j), block);
  const double factor = bra.symmetry * ket.symmetry * (&bra == &ket ? 0.5 : 1.0);
  if (factor != 1.0)
    for (double& value : block) value *= factor;
}

void digest_scalar_exchange(const SHELL_PAIRS_T& data, const SHELL_PAIR_T& bra, const SHELL_PAIR_T& ket, const double* block,
                            const double* dp, double* kp) {
  const int na = components(data, bra.shell_i), nb = components(data, bra.shell_j), nab = na + nb;
  const int nc = components(data, ket.shell_i), nd = components(data, ket.shell_j);
  for (int a = 0; a < na; ++a)
    for (int b = 0; b < nb; ++b)
      for (int c = 0; c < nc; ++c) {
        const long row_c = static_cast<long>(ket.first_i + c) * nab;
        for (int d = 0; d < nd; ++d) {
          const long row_d = static_cast<long>(ket.first_j + d) * nab;
          const double value = *block++;
          kp[row_c + a] += value * dp[row_d + na + b];
          kp[row_c + na + b] += value * dp[row_d + a];
          kp[row_d + a] += value * dp[row_c + na + b];
          kp[row_d + na + b] += value * dp[row_c + a];
        }
      }
}

void digest_scalar_coulomb(const SHELL_PAIRS_T& data, const SHELL_PAIR_T& bra, const SHELL_PAIR_T& ket, const double* block,
                           const double* pair_density, double* pair_coulomb) {
  const int n_bra = components(data, bra.shell_i) * components(data, bra.shell_j);
  const int n_ket = components(data, ket.shell_i) * components(data, ket.shell_j);
  for (int ab = 0; ab < n_bra; ++ab)
    for (int cd = 0; cd < n_ket; ++cd) {
      const double value = *block++;
      pair_coulomb[bra.block + ab] += value * pair_density[ket.block + cd];
      pair_coulomb[ket.block + cd] += value * pair_density[bra.block + ab];
    }
}

}  // namespace zentrix::INTEGRALS_2E

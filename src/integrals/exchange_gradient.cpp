#include <omp.h>

#include <algorithm>
#include <string>

#include "constants/limits.hpp"
#include "integrals/exchange_engine.hpp"
#include "integrals/gradient_2e.hpp"
#include "integrals/reference_eri.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/shell_validation.hpp"
#include "report/stop.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

CENTERED_SHELL_T centered(const SHELL_PAIRS_T& data, int shell) {
  return {data.shells[static_cast<std::size_t>(shell)], data.centers[static_cast<std::size_t>(shell)]};
}

/// Adds one quartet's share: 2 f sum_s (D_ac D_bd + D_ad D_bc) d(ab|cd), f = 1/2 for every coincidence of its pairs.
void add_quartet(const SHELL_PAIRS_T& data, const SHELL_PAIR_T& bra, const SHELL_PAIR_T& ket,
                 std::span<const MATRIX> densities, std::vector<double>& blocks, VECTOR& gradient) {
  const int shell[4] = {bra.shell_i, bra.shell_j, ket.shell_i, ket.shell_j};
  compute_deri_contracted(centered(data, shell[0]), centered(data, shell[1]), centered(data, shell[2]),
                          centered(data, shell[3]), blocks);
  const double factor = 2.0 * bra.symmetry * ket.symmetry * (&bra == &ket ? 0.5 : 1.0);
  int first[4], n[4];
  for (int k = 0; k < 4; ++k) {
    first[k] = data.first[static_cast<std::size_t>(shell[k])];
    n[k] = data.first[static_cast<std::size_t>(shell[k]) + 1] - first[k];
  }
  const std::size_t size = blocks.size() / 12;
  double sums[12] = {};
  std::size_t at = 0;
  for (int a = first[0]; a < first[0] + n[0]; ++a)
    for (int b = first[1]; b < first[1] + n[1]; ++b)
      for (int c = first[2]; c < first[2] + n[2]; ++c)
        for (int d = first[3]; d < first[3] + n[3]; ++d, ++at) {
          double weight = 0.0;
          for (const MATRIX& density : densities) weight += density(a, c) * density(b, d) + density(a, d) * density(b, c);
          for (std::size_t k = 0; k < 12; ++k) sums[k] += weight * blocks[k * size + at];
        }
  for (int k = 0; k < 12; ++k)
    gradient[3 * data.shells[static_cast<std::size_t>(shell[k / 3])].atom + k % 3] += factor * sums[k];
}

}  // namespace

VECTOR exchange_gradient(const MOLECULE_T& molecule, std::span<const MATRIX> densities, double threshold) {
  for (const SHELL_T& shell : molecule.shells) {
    validate_shell("exchange_gradient", shell);
    if (shell.l > LMAX_GRAD)
      throw run_stopped("FATAL [exchange_gradient]: l exceeds LMAX_GRAD = " + std::to_string(LMAX_GRAD));
  }
  const auto n_values = 3 * static_cast<Eigen::Index>(molecule.atoms.size());
  if (densities.empty()) return VECTOR::Zero(n_values);
  const KERNEL_CHOICE_T kernels = choose_kernels(kernels::chosen_isa());
  const SHELL_PAIRS_T data = make_shell_pairs(molecule, *kernels.table, kernels.lanes);
  std::vector<MATRIX> cartesian;
  std::vector<const MATRIX*> pointers;
  for (const MATRIX& density : densities) cartesian.push_back(to_cartesian(molecule, density));
  for (const MATRIX& density : cartesian) pointers.push_back(&density);
  const MATRIX maxima = block_maxima(data, pointers);

  const std::vector<BRA_T> order = bra_order(data);
  const int slots = slot_count(omp_get_max_threads(), static_cast<std::size_t>(n_values));
  std::vector<VECTOR> parts(static_cast<std::size_t>(slots), VECTOR::Zero(n_values));
#pragma omp parallel for schedule(dynamic, 1)
  for (int slot = 0; slot < slots; ++slot) {
    std::vector<double> blocks;
    for (std::size_t n = static_cast<std::size_t>(slot); n < order.size(); n += static_cast<std::size_t>(slots)) {
      const PAIR_LIST_T& list = data.lists[static_cast<std::size_t>(order[n].list)];
      const SHELL_PAIR_T& bra = list.pairs[static_cast<std::size_t>(order[n].index)];
      for (int k = 0; k <= order[n].list; ++k) {
        const PAIR_LIST_T& kets = data.lists[static_cast<std::size_t>(k)];
        for (int index = 0; index < ket_limit(data, order[n], k); ++index) {
          const SHELL_PAIR_T& ket = kets.pairs[static_cast<std::size_t>(index)];
          const double weight = std::max(maxima(bra.shell_i, ket.shell_i) * maxima(bra.shell_j, ket.shell_j),
                                         maxima(bra.shell_i, ket.shell_j) * maxima(bra.shell_j, ket.shell_i));
          if (bra.bound * ket.bound * weight < 0.1 * threshold) continue;
          add_quartet(data, bra, ket, cartesian, blocks, parts[static_cast<std::size_t>(slot)]);
        }
      }
    }
  }
  VECTOR gradient = parts[0];
  for (std::size_t slot = 1; slot < parts.size(); ++slot) gradient += parts[slot];
  return gradient;
}

}  // namespace zentrix::INTEGRALS_2E

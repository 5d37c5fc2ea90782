#include <omp.h>

#include <algorithm>

#include "integrals/exchange_engine.hpp"
#include "integrals/gradient_2e.hpp"
#include "integrals/gradient_bounds.hpp"
#include "integrals/kernels/gradient_kernels.hpp"
#include "integrals/ordered_sum.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/shell_validation.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// Primitive quartets whose product of prefactors, times the density products, lies this far below the threshold are left
/// out.
constexpr double GRADIENT_PRIMITIVE_SAFETY = 1e-4;

/// A ket that meets the bra, with the largest density product of their quartet.
struct KET_T {
  const SHELL_PAIR_T* pair;
  double weight;
};

/// Buffers of one thread.
struct THREAD_T {
  ALIGNED_DOUBLES scratch, rows, panels, forces;
  std::vector<double> weight_i, weight_j;  ///< largest density element between a shell and either shell of the bra
  std::vector<KET_T> kets;

  THREAD_T(const SHELL_PAIRS_T& data, int lanes, int n_densities)
      : scratch(gradient_scratch_doubles(data.max_l, data.max_primitives, lanes, n_densities)),
        rows(row_doubles(data.max_l, lanes)),
        panels(static_cast<std::size_t>(n_densities) * panel_doubles(data)),
        forces(static_cast<std::size_t>(9 * lanes)),
        weight_i(static_cast<std::size_t>(data.n_shells())),
        weight_j(static_cast<std::size_t>(data.n_shells())) {
    std::size_t longest = 0;
    for (const PAIR_LIST_T& list : data.lists) longest = std::max(longest, list.pairs.size());
    kets.reserve(longest);
  }
};

class GRADIENT_BUILD {
 public:
  GRADIENT_BUILD(const SHELL_PAIRS_T& data, kernels::ISA isa, const std::vector<const MATRIX*>& densities, double threshold)
      : data_(data),
        kernels_((*ZX_PICK(isa, gradient_kernels))()),
        lanes_(kernels::lane_count(isa)),
        densities_(densities),
        threshold_(threshold),
        boys_(kernels::boys_service()),
        maxima_(block_maxima(data, densities)),
        derivative_(derivative_bounds(data)),
        panel_(panel_doubles(data)) {
    for (std::size_t l = 0; l < data.lists.size(); ++l) {
      double steepest = 0.0;
      for (std::size_t n = 0; n < derivative_[l].size(); ++n)
        steepest = std::max(steepest, derivative_[l][n] / data.lists[l].pairs[n].bound);
      steepest_.push_back(steepest);
    }
  }

  /// All quartets of one bra.
  void bra(THREAD_T& thread, const BRA_T& at, VECTOR& gradient) const {
    const PAIR_LIST_T& list = data_.lists[static_cast<std::size_t>(at.list)];
    const SHELL_PAIR_T& bra = list.pairs[static_cast<std::size_t>(at.index)];
    double largest_i = 0.0, largest_j = 0.0;
    for (int s = 0; s < data_.n_shells(); ++s) {
      largest_i = std::max(largest_i, thread.weight_i[static_cast<std::size_t>(s)] = maxima_(s, bra.shell_i));
      largest_j = std::max(largest_j, thread.weight_j[static_cast<std::size_t>(s)] = maxima_(s, bra.shell_j));
    }
    bool panels_filled = false;
    for (int k = 0; k <= at.list; ++k) {
      select_kets(thread, at, k, largest_i * largest_j);
      if (thread.kets.empty()) continue;
      if (!panels_filled)
        for (std::size_t n = 0; n < densities_.size(); ++n)
          fill_panel(*densities_[n], bra, list.na(), list.nb(), thread.panels.data() + n * panel_);
      panels_filled = true;
      differentiate(thread, bra, kernels::pair_class(list.la, list.lb), data_.lists[static_cast<std::size_t>(k)], gradient);
    }
  }

 private:
  int atom(int shell) const { return data_.shells[static_cast<std::size_t>(shell)].atom; }

  /// Kets with (G_bra Q_ket + Q_bra G_ket) max |D D| >= threshold, quartets on a single atom left out.
  void select_kets(THREAD_T& thread, const BRA_T& at, int ket_list, double largest) const {
    thread.kets.clear();
    const auto l = static_cast<std::size_t>(ket_list);
    const SHELL_PAIR_T& bra = data_.lists[static_cast<std::size_t>(at.list)].pairs[static_cast<std::size_t>(at.index)];
    const double q = bra.bound, g = derivative_[static_cast<std::size_t>(at.list)][static_cast<std::size_t>(at.index)];
    const bool one_atom = atom(bra.shell_i) == atom(bra.shell_j);
    const double *wi = thread.weight_i.data(), *wj = thread.weight_j.data();
    const int limit = ket_limit(data_, at, ket_list);
    for (int k = 0; k < limit; ++k) {
      const SHELL_PAIR_T& ket = data_.lists[l].pairs[static_cast<std::size_t>(k)];
      if (ket.bound * (g + q * steepest_[l]) * largest < threshold_) break;
      const double weight = std::max(wi[ket.shell_i] * wj[ket.shell_j], wi[ket.shell_j] * wj[ket.shell_i]);
      if ((g * ket.bound + q * derivative_[l][static_cast<std::size_t>(k)]) * weight < threshold_) continue;
      if (one_atom && atom(ket.shell_i) == atom(bra.shell_i) && atom(ket.shell_j) == atom(bra.shell_i)) continue;
      thread.kets.push_back({&ket, weight});
    }
  }

  void differentiate(THREAD_T& thread, const SHELL_PAIR_T& bra, int bra_class, const PAIR_LIST_T& list,
                     VECTOR& gradient) const {
    const auto kernel = kernels_.exchange[bra_class][kernels::pair_class(list.la, list.lb)];
    const kernels::GRADIENT_DENSITIES_T densities{static_cast<int>(densities_.size()), thread.panels.data(),
                                                  static_cast<long>(panel_)};
    const int n_kets = static_cast<int>(thread.kets.size());
    for (int k = 0; k < n_kets; k += lanes_) {
      const int count = std::min(lanes_, n_kets - k);
      const SHELL_PAIR_T* pairs[kernels::MAX_LANES];
      double weight = 0.0;
      for (int lane = 0; lane < count; ++lane) {
        const KET_T& ket = thread.kets[static_cast<std::size_t>(k + lane)];
        pairs[lane] = ket.pair;
        weight = std::max(weight, ket.weight);
      }
      const kernels::BATCH_T batch = make_batch(bra, pairs, count, threshold_ * GRADIENT_PRIMITIVE_SAFETY / weight);
      kernel(batch, boys_, densities, thread.scratch.data(), thread.rows.data(), thread.forces.data());
      add_forces(batch, thread.forces.data(), gradient);
    }
  }

  /// The forces of a batch on the four centres of its quartets.
  void add_forces(const kernels::BATCH_T& batch, const double* forces, VECTOR& gradient) const {
    for (int i = 0; i < 3; ++i) {
      double bra = 0.0, b = 0.0;
      for (int lane = 0; lane < batch.count; ++lane) {
        const SHELL_PAIR_T& ket = *batch.kets[lane];
        const double whole = forces[i * lanes_ + lane], d = forces[(6 + i) * lanes_ + lane];
        bra += whole;
        b += forces[(3 + i) * lanes_ + lane];
        gradient[3 * atom(ket.shell_i) + i] -= whole + d;
        gradient[3 * atom(ket.shell_j) + i] += d;
      }
      gradient[3 * atom(batch.bra->shell_i) + i] += bra - b;
      gradient[3 * atom(batch.bra->shell_j) + i] += b;
    }
  }

  const SHELL_PAIRS_T& data_;
  const kernels::GRADIENT_KERNELS_T& kernels_;
  int lanes_;
  const std::vector<const MATRIX*>& densities_;
  double threshold_;
  kernels::BOYS_SERVICE_T boys_;
  MATRIX maxima_;
  std::vector<std::vector<double>> derivative_;  ///< G of every pair, by list
  std::vector<double> steepest_;                 ///< largest G/Q of every list
  std::size_t panel_;
};

}  // namespace

VECTOR exchange_gradient(const MOLECULE_T& molecule, std::span<const MATRIX> densities, double threshold) {
  for (const SHELL_T& shell : molecule.shells) validate_gradient_shell("exchange_gradient", shell);
  const auto n_values = 3 * static_cast<Eigen::Index>(molecule.atoms.size());
  if (densities.empty()) return VECTOR::Zero(n_values);
  const kernels::ISA isa = kernels::chosen_isa();
  const KERNEL_CHOICE_T quartets = choose_kernels(isa);
  const SHELL_PAIRS_T data = make_shell_pairs(molecule, *quartets.table, quartets.lanes);
  std::vector<MATRIX> cartesian;
  cartesian.reserve(densities.size());
  std::vector<const MATRIX*> pointers;
  pointers.reserve(densities.size());
  for (const MATRIX& density : densities) cartesian.push_back(to_cartesian(molecule, density));
  for (const MATRIX& density : cartesian) pointers.push_back(&density);
  const GRADIENT_BUILD build(data, isa, pointers, threshold);

  const std::vector<BRA_T> order = bra_order(data);
  const int threads = omp_get_max_threads();
  std::vector<THREAD_T> thread_data;
  thread_data.reserve(static_cast<std::size_t>(threads));
  for (int t = 0; t < threads; ++t) thread_data.emplace_back(data, quartets.lanes, static_cast<int>(densities.size()));
  const VECTOR gradient = sum_in_order(order.size(), n_values, [&](std::size_t thread, std::size_t n, VECTOR& part) {
    build.bra(thread_data[thread], order[n], part);
  });
  return 2.0 * gradient;  // a quartet's block stands for eight, the energy for one half
}

}  // namespace zentrix::INTEGRALS_2E

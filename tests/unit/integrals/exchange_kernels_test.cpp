#include <gtest/gtest.h>

#include <algorithm>

#include "integrals/exchange_engine.hpp"
#include "two_electron_samples.hpp"

using namespace zentrix;
using namespace zentrix::INTEGRALS_2E;

namespace {

struct QUARTET_CASE_T {
  std::string name;
  std::array<double, 3> a, b, c, d;
  double tightness;  ///< factor on all exponents
};

/// Prim pairs and the pair record of two shells, kept together.
struct PAIR_T {
  std::vector<PRIMITIVE_PAIR_T> primitives;
  SHELL_PAIR_T pair;
  PAIR_T(const CENTERED_SHELL_T& a, const CENTERED_SHELL_T& b)
      : primitives(primitive_pairs(a.shell, a.center, b.shell, b.center).pairs) {
    pair.primitives = primitives.data();
    pair.n_primitives = static_cast<int>(primitives.size());
    for (int i = 0; i < 3; ++i) pair.separation[i] = a.center[i] - b.center[i];
  }
};

CENTERED_SHELL_T make_shell(int l, std::array<double, 3> center, double tightness, bool contracted, double exponent) {
  if (contracted) return {samples::shell(0, l, {4.1 * tightness, exponent * tightness}, {0.3, 0.8}), center};
  return {samples::shell(0, l, {exponent * tightness}, {1.0}), center};
}

const std::vector<QUARTET_CASE_T> CASES = {
    {"general", {0.0, 0.1, -0.3}, {0.9, -0.4, 0.2}, {-0.7, 1.1, 0.8}, {0.3, 0.5, -1.2}, 1.0},
    {"coincident", {0.2, 0.2, 0.2}, {0.2, 0.2, 0.2}, {0.2, 0.2, 0.2}, {0.2, 0.2, 0.2}, 1.0},
    {"tight", {0.0, 0.0, 0.0}, {0.01, 0.0, 0.02}, {0.0, 0.03, 0.0}, {0.0, 0.0, -0.01}, 4000.0},
    {"diffuse", {0.0, 0.0, 0.0}, {2.0, -1.0, 4.0}, {-3.0, 5.0, 1.0}, {6.0, 0.0, -2.0}, 0.01},
    {"far", {0.0, 0.0, 0.0}, {0.5, 0.3, 0.0}, {9.0, -12.0, 7.0}, {9.6, -12.0, 7.2}, 2.0}};

/// Largest deviation of a class, kets of all cases side by side in the lanes, over the size of its largest integral (or 1).
double largest_deviation(kernels::ISA isa, int la, int lb, int lc, int ld, const kernels::BOYS_SERVICE_T& boys) {
  const KERNEL_CHOICE_T kernels = choose_kernels(isa);
  const bool contracted = la + lb + lc + ld <= 5;
  const int nab = n_cartesian(la) * n_cartesian(lb), ncd = n_cartesian(lc) * n_cartesian(ld);
  QUARTET_WORK_T work(kernels::KERNEL_LMAX, 4, kernels.lanes);
  ALIGNED_DOUBLES block(static_cast<std::size_t>(nab * ncd * kernels.lanes));
  double worst = 0.0;
  for (const QUARTET_CASE_T& quartet : CASES) {
    const CENTERED_SHELL_T a = make_shell(la, quartet.a, quartet.tightness, contracted, 0.7);
    const CENTERED_SHELL_T b = make_shell(lb, quartet.b, quartet.tightness, contracted, 1.3);
    const CENTERED_SHELL_T c = make_shell(lc, quartet.c, quartet.tightness, contracted, 0.5);
    const CENTERED_SHELL_T d = make_shell(ld, quartet.d, quartet.tightness, false, 0.9);
    // The second ket differs, so that a lane taking another lane's data shows.
    const CENTERED_SHELL_T c2 = make_shell(lc, quartet.b, quartet.tightness, false, 1.1);
    const PAIR_T bra(a, b), ket(c, d), ket2(c2, d);
    kernels::BATCH_T batch;
    batch.bra = &bra.pair;
    batch.count = 2;
    std::fill_n(batch.kets, kernels::MAX_LANES, &ket.pair);
    batch.kets[1] = &ket2.pair;
    batch.scale[0] = batch.scale[1] = 1.0;
    const int bra_class = kernels::pair_class(la, lb), ket_class = kernels::pair_class(lc, ld);
    kernels.table->front[bra_class][ket_class](batch, boys, work.scratch.data(), work.rows.data());
    kernels.table->store_rows[ket_class](batch, nab, work.rows.data(), block.data());
    for (int lane = 0; lane < 2; ++lane) {
      std::vector<double> reference;
      compute_eri_contracted(a, b, lane == 0 ? c : c2, d, reference);
      double largest = 1.0, deviation = 0.0;
      for (int n = 0; n < nab * ncd; ++n) {
        largest = std::max(largest, std::abs(reference[static_cast<std::size_t>(n)]));
        deviation = std::max(deviation, std::abs(block[static_cast<std::size_t>(n * kernels.lanes + lane)] -
                                                 reference[static_cast<std::size_t>(n)]));
      }
      worst = std::max(worst, deviation / largest);
    }
  }
  return worst;
}

}  // namespace

// Class by class, every integral: a wrong table entry, factor, lane or row shows here and nowhere else so clearly. Four g
// functions whose widths are small against their distances lose some digits in the horizontal recursion, which adds powers
// of the distance to small numbers.
TEST(EXCHANGE_KERNELS, EVERY_CLASS_AGREES_WITH_THE_SCALAR_REFERENCE) {
  const kernels::BOYS_SERVICE_T boys = kernels::boys_service();
  for (int la = 0; la <= kernels::KERNEL_LMAX; ++la)
    for (int lb = 0; lb <= la; ++lb)
      for (int lc = 0; lc <= kernels::KERNEL_LMAX; ++lc)
        for (int ld = 0; ld <= lc; ++ld) {
          if (!kernels::bra_before_ket(la, lb, lc, ld)) continue;
          for (kernels::ISA isa : samples::available_isas())
            EXPECT_LT(largest_deviation(isa, la, lb, lc, ld, boys), la + lb + lc + ld < 16 ? 1e-12 : 3e-12)
                << kernels::isa_name(isa) << " (" << la << lb << '|' << lc << ld << ')';
        }
}

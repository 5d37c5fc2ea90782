#include <gtest/gtest.h>

#include "integrals/integral_panels.hpp"
#include "integrals/integrals_2e.hpp"
#include "two_electron_samples.hpp"

using namespace zentrix;
using namespace zentrix::INTEGRALS_2E;

namespace {

/// sum over the panels of L_(ab),(cd) u_a u_b v_c v_d.
double contract(const ERI_PANELS& panels, const VECTOR& u, const VECTOR& v) {
  ERI_PANELS::WORK_T work(panels);
  double total = 0.0;
  for (const PANEL_BRA_T& bra : panels.bras()) {
    EXPECT_GE(bra.first_a, bra.first_b);
    panels.bra(bra, work, [&](const ERI_PANEL_T& panel) {
      for (int n = 0; n < panel.n_ab; ++n) {
        const int a = bra.first_a + (panel.first_ab + n) / bra.n_b, b = bra.first_b + (panel.first_ab + n) % bra.n_b;
        for (int c = 0; c < panel.n_c; ++c)
          for (int d = 0; d < panel.n_d; ++d)
            total += (panel.square ? 2.0 : 4.0) * u(a) * u(b) * v(panel.first_c + c) * v(panel.first_d + d) *
                     panel.rectangle(n)[c * panel.row_stride + d];
      }
    });
  }
  return total;
}

// (uu|vv) of two orbitals from the panels, stored or computed, against a Coulomb matrix: every integral must stand in its
// place once, with its symmetry factor.
void expect_every_integral_once(const MOLECULE_T& m, const std::vector<kernels::ISA>& isas) {
  const MATRIX orbitals = samples::random_symmetric(m.n_basis, 11).leftCols(2);
  const MATRIX density = orbitals.col(1) * orbitals.col(1).transpose();
  const JK_RESULT_T jk = JK_BUILDER(m).build(std::span<const MATRIX>(&density, 1), {}, 1e-14);
  const double expected = orbitals.col(0).dot(jk.j[0] * orbitals.col(0));
  for (const kernels::ISA isa : isas) {
    const KERNEL_CHOICE_T kernels = choose_kernels(isa);
    const SHELL_PAIRS_T data = make_shell_pairs(m, *kernels.table, kernels.lanes);
    ERI_STORE_T store(data, kernels, 1e-14);
    store.fill(data, kernels);
    for (const bool stored : {false, true}) {
      const ERI_PANELS panels(m, data, kernels, stored ? &store : nullptr, 1e-14);
      const MATRIX components = panels.coefficients(orbitals);
      ASSERT_EQ(components.rows(), panels.n_components());
      const double found =
          contract(panels, components.col(0), components.col(1)) + contract(panels, components.col(1), components.col(0));
      EXPECT_NEAR(found, expected, 1e-10 * std::abs(expected));
    }
  }
}

}  // namespace

TEST(ERI_PANELS, HOLD_EVERY_INTEGRAL_ONCE) {
  expect_every_integral_once(samples::mixed_molecule(2, false), samples::available_isas());
  expect_every_integral_once(samples::mixed_molecule(4, true), samples::available_isas());
}

// No vector kernel serves them.
TEST(ERI_PANELS, H_SHELLS_COME_FROM_THE_SCALAR_KERNEL) {
  expect_every_integral_once(samples::mixed_molecule(5, false), {kernels::best_isa()});
}

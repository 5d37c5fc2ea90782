#include <gtest/gtest.h>

#include <cstdint>
#include <set>

#include "integrals/eri_store.hpp"
#include "integrals/integrals_2e.hpp"
#include "two_electron_samples.hpp"

using namespace zentrix;
using namespace zentrix::INTEGRALS_2E;

// The announced size is the exact canonical count, and the limit itself still fits.
TEST(ERI_STORE, MODE_DECISION_COUNTS_CANONICAL_QUARTETS_AND_INCLUDES_THE_LIMIT) {
  MOLECULE_T m;  // far-away pairs make quartets that do not survive
  for (int n = 0; n < 5; ++n) {
    m.atoms.push_back(samples::atom(4.0 * n, 0.3 * n, 0.0));
    m.shells.push_back(samples::shell(n, 0, {6.0, 1.1}, {0.4, 0.7}));
    m.shells.push_back(samples::shell(n, n % 3, {0.9}, {1.0}));
  }
  m = samples::finish(std::move(m), false);
  const JK_BUILDER builder(m);
  const MATRIX& q = builder.schwarz();
  std::int64_t quartets = 0, all = 0, integrals = 0;
  const int n = static_cast<int>(m.shells.size());
  const auto size = [&](int s) { return n_cartesian(m.shells[static_cast<std::size_t>(s)].l); };
  for (int i = 0; i < n; ++i)
    for (int j = 0; j <= i; ++j)
      for (int k = 0; k <= i; ++k)
        for (int l = 0; l <= (k == i ? j : k); ++l) {
          ++all;
          if (q(i, j) * q(k, l) < STORE_THRESHOLD) continue;
          ++quartets;
          integrals += size(i) * size(j) * size(k) * size(l);
        }
  const JK_MODE_T mode = builder.decide_mode(4096);
  EXPECT_LT(quartets, all);
  EXPECT_EQ(mode.quartets, quartets);
  EXPECT_EQ(mode.integrals, integrals);
  EXPECT_TRUE(mode.conventional);
}

TEST(ERI_STORE, A_LIMIT_OF_EXACTLY_THE_SIZE_IS_CONVENTIONAL) {
  EXPECT_TRUE(store_fits(131072, 1));
  EXPECT_FALSE(store_fits(131073, 1));
  EXPECT_TRUE(store_fits(std::int64_t{131072} * 2000000, 2000000));  // beyond 32 bits
}

TEST(ERI_STORE, DESCRIPTORS_FIND_EVERY_INTEGRAL) {
  const MOLECULE_T m = samples::mixed_molecule(2, false);
  for (kernels::ISA isa : samples::available_isas()) {
    const KERNEL_CHOICE_T kernels = choose_kernels(isa);
    const SHELL_PAIRS_T data = make_shell_pairs(m, *kernels.table, kernels.lanes);
    ERI_STORE_T store(data, kernels, 1e-12);
    store.fill(data, kernels);
    EXPECT_GE(store.bytes(), 8 * store.integrals());
    std::set<std::size_t> used;  // no integral stands in another's place
    std::vector<double> reference;
    for (const STORE_SEGMENT_T& segment : store.segments())
      for (int ket = 0; ket < segment.kets; ++ket) {
        const QUARTET_INFO_T info = store.quartet(data, segment, ket);
        compute_eri_contracted(samples::centered(m, info.shell[0]), samples::centered(m, info.shell[1]),
                               samples::centered(m, info.shell[2]), samples::centered(m, info.shell[3]), reference);
        for (std::size_t n = 0; n < reference.size(); ++n) {
          const std::size_t at = info.offset + n * info.stride;
          ASSERT_TRUE(used.insert(at).second);
          ASSERT_NEAR(store.values()[at], info.scale * reference[n], 1e-12);
        }
      }
    EXPECT_EQ(static_cast<std::int64_t>(used.size()), store.integrals());
  }
}

#include <gtest/gtest.h>
#include <omp.h>

#include "correlation/half_transformation.hpp"
#include "correlation/mp2.hpp"
#include "report/stop.hpp"
#include "support/reference.hpp"
#include "unit/scf/scf_samples.hpp"

namespace {

using namespace zentrix;
using CORRELATION::MP2_RESULT_T;
using SCF::samples::RUN_T;

/// A converged Hartree-Fock state. `memory_limit_mb` 0: no integrals are stored.
RUN_T hartree_fock(const MOLECULE_T& molecule, int memory_limit_mb = 4096) {
  SCF::samples::RUN_OPTIONS_T options;
  options.settings.energy_tolerance = 1e-10;
  options.settings.density_tolerance = options.settings.gradient_tolerance = 1e-8;
  options.settings.eri_memory_limit_mb = memory_limit_mb;
  RUN_T reference = SCF::samples::run(molecule, options);
  EXPECT_TRUE(reference.scf.converged);
  return reference;
}

MP2_RESULT_T mp2(const RUN_T& reference, int frozen, int memory_limit_mb = 4096) {
  CORRELATION::MP2_OBSERVER_T silent;
  return CORRELATION::mp2_energy(reference.geometry, reference.scf, {frozen, memory_limit_mb}, silent);
}

MP2_RESULT_T mp2_of(const std::string& geometry, const std::string& basis, int frozen,
                    TESTS::SAMPLE_OPTIONS_T options = {}) {
  return mp2(hartree_fock(TESTS::sample_molecule(geometry, basis, options)), frozen);
}

// tests/reference/make_mp2_references.py: closed and open shells, frozen and full cores, s to g functions of either kind.
TEST(MP2, AgreesWithAnIndependentProgram) {
  const nlohmann::json cases = TESTS::reference("mp2");
  ASSERT_GT(cases.size(), 30U);
  int spins = 0;
  for (const auto& entry : cases) {
    SCOPED_TRACE(entry["molecule"].get<std::string>() + " " + entry["basis"].get<std::string>());
    const RUN_T reference = hartree_fock(SCF::samples::molecule_of(entry));
    EXPECT_NEAR(reference.scf.energy.total(), entry["scf"].get<double>(), 1e-8);
    const MP2_RESULT_T result = mp2(reference, entry["frozen"]);
    EXPECT_EQ(result.unrestricted, entry["multiplicity"].get<int>() > 1);
    EXPECT_NEAR(result.energy(), entry["correlation"].get<double>(), 1e-7);
    EXPECT_NEAR(result.same_spin[0] + result.same_spin[1], entry["same_spin"].get<double>(), 1e-7);
    EXPECT_NEAR(result.opposite_spin, entry["opposite_spin"].get<double>(), 1e-7);
    if (!entry.contains("s_squared")) continue;
    EXPECT_NEAR(result.s_squared, entry["s_squared"].get<double>(), 1e-6);
    ++spins;
  }
  EXPECT_GE(spins, 3);
}

// Integrals from the store or computed for every batch, orbitals all at once, some at a time or one by one, any number of
// threads: the same sums, of closed and of open shells.
TEST(MP2, NeitherMemoryNorThreadsChangeTheEnergy) {
  for (const MOLECULE_T& molecule : {TESTS::sample_molecule(TESTS::ammonia, "cc-pVDZ", {0, 1, true}),
                                     TESTS::sample_molecule("O 0 0 0\nH 0 0 0.9697\n", "cc-pVTZ", {0, 2, false})}) {
    const RUN_T stored = hartree_fock(molecule), direct = hartree_fock(molecule, 0);
    ASSERT_TRUE(stored.geometry.jk.has_store());
    ASSERT_FALSE(direct.geometry.jk.has_store());
    const MP2_RESULT_T whole = mp2(stored, 0);
    EXPECT_NEAR(mp2(direct, 0).energy(), whole.energy(), 1e-10);
    for (const int limit_mb : {0, 1}) {
      EXPECT_NEAR(mp2(stored, 0, limit_mb).energy(), whole.energy(), 1e-12);
      EXPECT_NEAR(mp2(direct, 0, limit_mb).energy(), whole.energy(), 1e-10);
      EXPECT_NEAR(mp2(direct, 0, limit_mb).s_squared, whole.s_squared, 1e-9);
    }
    const int threads = omp_get_max_threads();
    for (const int count : {1, 3}) {
      omp_set_num_threads(count);
      EXPECT_NEAR(mp2(stored, 0).energy(), whole.energy(), 1e-12);
      EXPECT_NEAR(mp2(direct, 0, 1).energy(), mp2(direct, 0).energy(), 1e-12);
    }
    omp_set_num_threads(threads);
  }
}

TEST(MP2, BatchesCoverAllOrbitalsWithinTheirBudget) {
  for (const std::int64_t budget : {std::int64_t{0}, std::int64_t{300000}, std::int64_t{1} << 40}) {
    int next = 0;
    for (const CORRELATION::OCCUPIED_BATCH_T& batch : CORRELATION::occupied_batches(21, 30, budget)) {
      EXPECT_EQ(batch.first, next);
      next = batch.end();
      EXPECT_TRUE(batch.count == 1 || CORRELATION::half_transformed_bytes(batch, 30) <= budget);
    }
    EXPECT_EQ(next, 21);
  }
  EXPECT_EQ(CORRELATION::occupied_batches(21, 30, std::int64_t{1} << 40).size(), 1U);
}

TEST(MP2, ChannelsWithoutVirtualOrbitalsAreEmpty) {
  // All five functions of a minimal basis are occupied by alpha electrons of nitrogen, and beta has three left.
  const MP2_RESULT_T nitrogen = mp2_of("N 0 0 0\n", "STO-3G", 0, {0, 4, false});
  EXPECT_EQ(nitrogen.same_spin[0], 0.0);
  EXPECT_EQ(nitrogen.opposite_spin, 0.0);
}

TEST(MP2, StopsWhenThereIsNothingToCorrelate) {
  const auto message = [](const std::string& geometry, const std::string& basis, int frozen, int multiplicity) {
    try {
      mp2_of(geometry, basis, frozen, {0, multiplicity, false});
    } catch (const run_stopped& stop) {
      return std::string(stop.what());
    }
    return std::string("no stop");
  };
  EXPECT_EQ(message("He 0 0 0\n", "STO-3G", 0, 1), "   *** MP2 ERROR: no virtual orbitals");
  EXPECT_EQ(message("H 0 0 0\n", "STO-3G", 0, 2), "no stop");
  EXPECT_EQ(message("Ne 0 0 0\n", "6-31G*", 5, 1), "   *** MP2 ERROR: no correlated occupied orbitals");
  EXPECT_EQ(message("Ne 0 0 0\n", "6-31G*", 7, 1), "   *** MP2 ERROR: no correlated occupied orbitals");
  EXPECT_EQ(message("Li 0 0 0\n", "6-31G*", 2, 2), "   *** UMP2 ERROR: invalid correlated occupation");
  EXPECT_EQ(message("Li 0 0 0\n", "6-31G*", 1, 2), "no stop");
}

}  // namespace

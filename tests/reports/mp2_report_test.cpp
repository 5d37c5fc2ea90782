#include "support/program_run.hpp"

using namespace zentrix;

// Figures of tests/reference/mp2.json.
TEST(Mp2Report, ClosedShell) {
  const PROGRAM_RUN_T run = expect_report(
      "%method mp2\n%basis 6-31G*\n%print_time\n" + water_block,
      {"   Frozen core (auto): 1 orbital(s).  Override with %frozen_core 0 to correlate all.\n", "   SCF converged in ",
       " --- MP2 Correlation Energy ---\n   All valence electrons are correlated\n"
       "   Basis functions: 19  Occupied: 5  Virtual: 14\n   Frozen core: 1  Correlated: 4\n",
       "   Half-transformed integrals: ", "   MO integrals (ia|jb):       ",
       "   Computing and storing AO ERIs...\n   Ket half-transformation...\n   Bra half-transformation...\n"
       "   Evaluating MP2 energy...\n",
       "   MP2 opposite-spin:  ", "   MP2 same-spin:      ", "   MP2 correlation:    ", "   HF energy:          ",
       "   MP2 total energy:   ", " --- Section 7: Output & Properties ---\n",
       "     Nuclear repulsion: ", "     MP2 correlation:   ", "     Total energy:      ", "  MP2 correlation "});
  EXPECT_NEAR(run.number("     MP2 correlation:   "), -0.1861195366, 2e-7);
  EXPECT_NEAR(run.number("     Total energy:      "), -76.0105049953 - 0.1861195366, 3e-7);
}

TEST(Mp2Report, OpenShell) {
  const PROGRAM_RUN_T run = expect_report(
      "%method mp2\n%basis 6-31G*\n%mult 3\n%frozen_core 2\n%geo\nO 0 0 0\nO 0 0 1.2075\n*end\n",
      {"   NOTE: MP2 with unrestricted orbitals runs as UMP2.\n",
       " --- UMP2 Correlation Energy ---\n   All valence electrons are correlated\n   Basis functions:       30\n"
       "   Alpha occupied/virtual: 9 / 21\n   Beta  occupied/virtual: 7 / 23\n"
       "   Frozen core (a/b):     2 / 2\n   Correlated occ (a/b):  7 / 5\n",
       "   Computing and storing AO ERIs...\n", "   Alpha-alpha channel...\n     E(aa) = ",
       "   Beta ket half-transformation...\n   Beta-beta channel...\n     E(bb) = ",
       "   Alpha-beta channel...\n     E(ab) = ", "   UMP2 alpha-alpha:   ", "   UMP2 beta-beta:     ",
       "   UMP2 alpha-beta:    ", "   UMP2 correlation:   ", "   UHF energy:         ", "   UMP2 total energy:  ",
       "   <S^2> (UMP2):       ", "     UMP2 correlation:  ", "     Total energy:      "});
  EXPECT_NEAR(run.number("     UMP2 correlation:  "), -0.3330946870, 2e-7);
}

TEST(Mp2Report, SkippedChannelsAndErrors) {
  const std::string lithium = "%method ump2\n%mult 2\n%geo\nLi 0 0 0\n*end\n";
  expect_report("%basis cc-pVDZ\n" + lithium,
                {"   Alpha-alpha: skipped (< 2 corr. alpha occ)\n", "   Beta channels: skipped (0 corr. occ or vir)\n"});
  expect_report("%frozen_core 0\n" + lithium, {"   Alpha-alpha channel...\n", "   Beta-beta: skipped (< 2 corr. beta occ)\n",
                                               "   Alpha-beta channel...\n"});
  expect_report("%method mp2\n%geo\nH 0 0 0\nH 0 0 0.7414\n*end\n", {"   Frozen core (auto): 0 (no core electrons).\n"});
  expect_stop("%method mp2\n" + helium_block,
              "   MO integrals (ia|jb):       0.0 MB  (pair by pair)\n   *** MP2 ERROR: no virtual orbitals\n");
}

TEST(Mp2Report, DirectRunsWorkInBatches) {
  const std::string input = "%method ump2\n%basis 6-311++G(2d,2p)\n" + water_block;
  const PROGRAM_RUN_T direct = expect_report(
      "%eri_memory_limit_mb 1\n" + input,
      {" batches of occupied orbitals)\n", "   Computing AO ERIs as they are needed (more than the memory limit)...\n",
       "   Batch 1 of ", "   Batch 2 of "});
  EXPECT_FALSE(direct.says("storing AO ERIs"));
}

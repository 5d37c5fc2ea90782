#include "support/program_run.hpp"

using namespace zentrix;

namespace {

// PySCF with the same basis files (tests/reference/make_rhf_references.py), hartree.
constexpr double water_sto3g = -74.9630231629;
constexpr double water_631gs = -76.0105049953;

}  // namespace

TEST(EnergyReport, WalksTheSectionsOfAnEnergyRun) {
  const std::string rule = " =======================================================\n";
  const PROGRAM_RUN_T run = expect_report(
      "%basis 6-31G*\n" + water_block,
      {rule + "                     Z e n t r i x\n          Educational Quantum Chemistry Program\n"
              "                  Version 0.82.1",
       "2026-06-07",
       rule +
           "  HF / DFT / MP2  |  RHF/UHF  |  RKS/UKS  |  ECP\n"
           "  Geometry Optimization  |  Hessian & Frequencies\n" +
           rule,
       " OpenMP enabled: 2 threads\n", " --- Section 1: Input & Setup ---\n Reading input from: run.inp\n",
       " Input parsed successfully.\n", "   Job type:         energy\n", " Setting up method...\n   Functional:       HF\n",
       " Building molecule...\n   Molecule built successfully.\n", "  MOLECULE SUMMARY\n",
       " Initializing precomputed tables...\n",
       rule + "  Section 1 complete. Ready for integral evaluation.\n  Section 1 time: ",
       rule + "\n --- Section 2: One-Electron Integrals ---\n", "     H max |el|  = ",
       rule + "  Section 2 complete. S, T, V, H_core computed.\n  Section 2 time: ", rule + "\n --- Section 3: SCF ---\n",
       "   Nuclear repulsion energy:  ", "   Conventional SCF: ", "   SCF converged in "},
      0, "OMP_NUM_THREADS=2 PROGRAM run.inp more");
  const std::size_t end = run.report.find(" --- Section 7: Output & Properties ---\n");
  ASSERT_NE(end, std::string::npos) << run.report;
  expect_in_order(run.report.substr(end),
                  {"   Final energies:\n     Electronic energy: ", "     Nuclear repulsion: ", "     Total energy:      ",
                   "   Mulliken Population Analysis\n", "   Electric Dipole Moment\n",
                   "   Section 7 time: ", rule + "  Zentrix run completed.\n  Wall time: ", " seconds\n" + rule});
  EXPECT_NEAR(run.number("     Total energy:      "), water_631gs, 1e-7);
  for (const char* unasked : {"Stage   ", "Matrix: ", "Molecular Orbital Output"})
    EXPECT_FALSE(run.says(unasked)) << unasked;
  EXPECT_EQ(run.files, std::vector<std::string>{"run.inp"});
}

TEST(EnergyReport, StoredAndDirectRunsAgree) {
  expect_report("%basis cc-pVDZ\n%spherical\n" + water_block, {"   Spherical basis: 24 functions (Cartesian: 25)\n"});
  const PROGRAM_RUN_T stored =
      expect_report("%basis cc-pVTZ\n" + water_block,
                    {"   Conventional SCF: ", " shell quartets, ", " MB\n     ERI precompute: 2 OpenMP threads\n"}, 0,
                    "OMP_NUM_THREADS=2 PROGRAM run.inp");
  const PROGRAM_RUN_T direct = expect_report("%eri_memory_limit_mb 1\n%basis cc-pVTZ\n" + water_block,
                                             {"   Conventional SCF would need ", " shell quartets / ",
                                              " MB\n   (above the current ERI memory limit of 1 MB).\n"
                                              "   Falling back to DIRECT SCF (ERIs recomputed each iter).\n"
                                              "   Raise %eri_memory_limit_mb to force conventional storage.\n",
                                              "     JK direct: "});
  EXPECT_FALSE(direct.says("ERI precompute"));
  EXPECT_NEAR(direct.number("Total energy:"), stored.number("Total energy:"), 1e-9);
}

TEST(EnergyReport, ThreadsChangeNothingButTheirLine) {
  const std::string input = "%basis cc-pVQZ\n%spherical\n%geo\nF 0 0 0\nH 0 0 0.917\n*end\n";
  const PROGRAM_RUN_T one =
      expect_report(input, {" Serial execution (OpenMP: 1 thread)\n"}, 0, "OMP_NUM_THREADS=1 PROGRAM run.inp");
  const PROGRAM_RUN_T three =
      expect_report(input, {" OpenMP enabled: 3 threads\n"}, 0, "OMP_NUM_THREADS=3 OMP_STACKSIZE=512k PROGRAM run.inp");
  EXPECT_NEAR(one.number("Total energy:"), three.number("Total energy:"), 1e-9);
}

TEST(EnergyReport, UnconvergedRunsFinishWithStatusThree) {
  expect_report("%scf_maxiter 2\n" + water_block,
                {"   *** SCF NOT converged after 2 iter", "   *** Diagnostic: ", " --- Section 7: Output & Properties ---\n",
                 "  Zentrix run completed.\n"},
                3);
}

TEST(EnergyReport, OptionalOutput) {
  const PROGRAM_RUN_T run =
      expect_report("%print_mo\n%print_time\n%boys_cook yes\n" + water_block,
                    {"S (overlap)", "T (kinetic)", "V (nuclear)", "H_core (T+V)", "   Molecular Orbital Output\n",
                     "   Orbital energies:\n", "   MO coefficients (columns = MOs):\n", "   BF ",
                     "  Zentrix run completed.\n", "  Stage                        Calls    Wall(s)     CPU(s)   %Wall\n",
                     "  Input & initialization ", "  1e-integrals (S,T,V) ", "  2e-integrals (J,K) ",
                     "  SCF iterations (*) ", "  Properties & output ", "  Total program ", "  Other / unaccounted ",
                     "  (*) SCF time includes 2e-integrals and DFT XC contributions\n" + std::string(90, '=') + "\n"},
                    0, "ZENTRIX_PRINT_MATRICES=1 PROGRAM run.inp");
  EXPECT_NEAR(run.number("     Total energy:      "), water_sto3g, 1e-7);
  EXPECT_TRUE(run.ends_with("=\n"));
  for (const char* zero : {"-0.000000 ", "-0.000000\n", "-0.00000000"}) EXPECT_FALSE(run.says(zero)) << run.report;
}

TEST(EnergyReport, OpenShellsRunUnrestrictedFromAtomicDensities) {
  expect_report(
      "%basis 6-31G*\n%mult 3\n%geo\nO 0 0 0\nO 0 0 1.2075\n*end\n",
      {"   NOTE: Open-shell system (nalpha /= nbeta).\n         Switching to Unrestricted (UHF/UKS).\n",
       " --- Section 3: SCF ---\n   Building SAD (Superposition of Atomic Densities) initial guess...\n"
       "   SAD atomic UHF: Z=8  nelec=8  nalpha=5  nbeta=3  (mult=3)\n"
       "   SAD guess assembled.  Tr(PaS) rescale=0.900000  Tr(PbS) rescale=1.166667\n"
       "   Initial guess:             SAD (Superposition of Atomic Densities)\n",
       "   UHF: alpha occ = 9,  beta occ = 7\n   UKS occupation: AUTO (MOM for first 5 iters, then strict Aufbau)\n",
       "   Starting UHF SCF iterations...\n", "   <S**2> = 2.03", "   (exact = 2.000000)", "   Beta orbital energies:\n",
       " --- Section 7: Output & Properties ---\n", "     Total energy:           -149.61", "   <S**2> = 2.03"});
}

TEST(EnergyReport, DensityFunctionalsBuildAGridAndCheckIt) {
  expect_report(
      "%method b3lyp5\n%basis 6-31G*\n%print_time\n%xc_deriv num\n" + water_block,
      {"   Functional:       B3LYP5\n   Class:            Hybrid\n   HF exchange:       20.00 %\n",
       "   NOTE: %xc_deriv numerical changes nothing here: ",
       " --- Building DFT integration grid ---\n   Grid               : Gaussian Fine\n",
       "   Angular sizes      : 50 / 86 / 266 / 302 / 266\n",
       " --- Section 3: SCF ---\n   Initial guess:             core Hamiltonian\n",
       "   XC functional:             B3LYP5\n   Initial Fock matrix:       core Hamiltonian\n", "   SCF converged in ",
       "   Final energies:\n     Electronic energy: ", "     XC energy:                -7.52",
       " --- Section 7: Output & Properties ---\n", "     Total energy:            -76.37159",
       "   Grid-quality check (density integration):\n     Integrated N_e:         10.000000",
       "   (exact = 10)\n     Deviation:         ", "  DFT XC (grid integration)"});
}

TEST(EnergyReport, MetaGgaStartsFromAPbeDensity) {
  const std::string input = "%method r2scan\n%basis STO-3G\n%grid 2\n" + water_block;
  expect_report(input, {"   meta-GGA: PBE pre-converge for initial guess\n", "   XC functional:             PBE\n",
                        "   PBE pre-converged, E = ", "   Starting meta-GGA SCF with PBE density...\n",
                        "   Initial guess:             PBE pre-converged density\n"
                        "   Initial Fock matrix:       PBE pre-converged density\n",
                        "   XC functional:             R2SCAN\n   Initial Fock matrix:       previous density\n"});
  EXPECT_FALSE(expect_report("%spin uks\n" + input, {}).says("PBE pre-converge"));
  expect_report("%scf_maxiter 3\n" + input, {"   PBE pre-converge: not fully converged, using best density\n"}, 3);
}

TEST(EnergyReport, GradientJobsEndInSectionSeven) {
  const PROGRAM_RUN_T run = expect_report(
      "%job gradient\n%method pbe\n%basis STO-3G\n%print_time\n%print_grad\n" + water_block,
      {" --- Section 2: One-Electron Integrals ---\n",
       " --- Section 4: Gradient ---\n   Method: fully analytical\n   Running SCF for gradient...\n",
       " --- Building DFT integration grid ---\n", "   Initial Fock matrix:       core Hamiltonian\n",
       "   SCF energy: ", "   Computing fused 1e gradient (S + T + V_nuc)...\n   Fused 1e gradient done.\n",
       "   Computing 2-electron gradient...\n     ERI gradient: ",
       "   Analytical gradient computed.\n   Computing XC gradient (analytical)...\n",
       "\n%print_grad  (Hartree/Bohr)\n   Atom              gX             gY             gZ\n",
       "   Cartesian gradient (Hartree/Bohr):\n     Atom              gX             gY             gZ\n",
       "   Max gradient component: ", "   RMS gradient:           ", " --- Section 7: Output & Properties ---\n",
       "     Total energy:      ", "  Gradient 1e", "  Gradient 2e", "  Gradient DFT"});
  EXPECT_FALSE(run.says("--- Section 3")) << run.report;
  expect_report("%job gradient\n%grad_method semi\n%basis STO-3G\n%spin uhf\n" + water_block,
                {"   Method: semi-analytical (Pulay+FD)\n   Running UHF SCF for gradient...\n", "     Atom 1 done.\n",
                 "     Atom 3 done.\n   Gradient computed.\n"});
}

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/program_run.hpp"

using namespace zentrix;

namespace {

const std::string water_geometry = "%geo\nO 0 0 0.1173\nH 0 0.7572 -0.4692\nH 0 -0.7572 -0.4692\n*end\n";
// PySCF with the same basis files (tests/reference/make_rhf_references.py), hartree.
constexpr double water_sto3g = -74.9630231629;
constexpr double water_631gs = -76.0105049953;

}  // namespace

TEST(EnergyReport, WalksTheSectionsOfAnEnergyRun) {
  const PROGRAM_RUN_T run =
      run_program_in_folder("%basis 6-31G*\n" + water_geometry, "OMP_NUM_THREADS=2 PROGRAM run.inp more");
  ASSERT_EQ(run.status, 0) << run.report;
  const std::string rule = " =======================================================\n";
  expect_in_order(run, {rule + "                     Z e n t r i x\n          Educational Quantum Chemistry Program\n"
                               "                  Version 0.82.1",
                        "2026-06-07",
                        rule + "  HF / DFT / MP2  |  RHF/UHF  |  RKS/UKS  |  ECP\n",
                        "  Geometry Optimization  |  Hessian & Frequencies\n" + rule,
                        " OpenMP enabled: 2 threads\n",
                        " --- Section 1: Input & Setup ---\n Reading input from: run.inp\n",
                        " Input parsed successfully.\n",
                        "   Job type:         energy\n",
                        " Setting up method...\n",
                        "   Functional:       HF\n",
                        " Building molecule...\n",
                        "   Molecule built successfully.\n",
                        "  MOLECULE SUMMARY\n",
                        " Initializing precomputed tables...\n",
                        rule + "  Section 1 complete. Ready for integral evaluation.\n  Section 1 time: ",
                        rule,
                        " --- Section 2: One-Electron Integrals ---\n",
                        "     H max |el|  = ",
                        rule + "  Section 2 complete. S, T, V, H_core computed.\n  Section 2 time: ",
                        rule,
                        " --- Section 3: SCF ---\n",
                        "   Nuclear repulsion energy:  ",
                        "   Initial Fock matrix:       core Hamiltonian\n",
                        "   Conventional SCF: ",
                        "   SCF converged in ",
                        " --- Section 7: Output & Properties ---\n",
                        "   Final energies:\n     Electronic energy: ",
                        "     Nuclear repulsion: ",
                        "     Total energy:      ",
                        "   Mulliken Population Analysis\n",
                        "   Electric Dipole Moment\n",
                        "   Section 7 time: ",
                        rule + "  Zentrix run completed.\n  Wall time: ",
                        " seconds\n" + rule});
  EXPECT_NEAR(run.number("     Total energy:      "), water_631gs, 1e-7);
  EXPECT_FALSE(run.says("Stage   ")) << "a timing profile nobody asked for";
  EXPECT_FALSE(run.says("Matrix: ")) << "matrices nobody asked for";
  EXPECT_FALSE(run.says("Molecular Orbital Output"));
  EXPECT_EQ(run.files, std::vector<std::string>{"run.inp"});
}

TEST(EnergyReport, StoredAndDirectRunsAgree) {
  const PROGRAM_RUN_T spherical = run_program_in_folder("%basis cc-pVDZ\n%spherical\n" + water_geometry);
  const PROGRAM_RUN_T direct = run_program_in_folder("%eri_memory_limit_mb 1\n%basis cc-pVTZ\n" + water_geometry);
  const PROGRAM_RUN_T stored = run_program_in_folder("%basis cc-pVTZ\n" + water_geometry);
  ASSERT_EQ(spherical.status, 0);
  ASSERT_EQ(direct.status, 0);
  EXPECT_TRUE(spherical.says("   Spherical basis: 24 functions (Cartesian: 25)\n"));
  expect_in_order(direct, {"   Conventional SCF would need ", "   (above the current ERI memory limit of 1 MB).\n",
                           "   Falling back to DIRECT SCF (ERIs recomputed each iter).\n",
                           "   Raise %eri_memory_limit_mb to force conventional storage.\n", "     JK direct: "});
  EXPECT_FALSE(direct.says("ERI precompute"));
  EXPECT_TRUE(stored.says("     ERI precompute: "));
  EXPECT_NEAR(direct.number("Total energy:"), stored.number("Total energy:"), 1e-9);
}

TEST(EnergyReport, ThreadsChangeNothingButTheirLine) {
  const std::string input = "%basis cc-pVQZ\n%spherical\n%geo\nF 0 0 0\nH 0 0 0.917\n*end\n";
  const PROGRAM_RUN_T one = run_program_in_folder(input, "OMP_NUM_THREADS=1 PROGRAM run.inp");
  const PROGRAM_RUN_T three = run_program_in_folder(input, "OMP_NUM_THREADS=3 OMP_STACKSIZE=512k PROGRAM run.inp");
  ASSERT_EQ(one.status, 0) << one.report;
  ASSERT_EQ(three.status, 0) << three.report;
  EXPECT_TRUE(one.says(" Serial execution (OpenMP: 1 thread)\n"));
  EXPECT_TRUE(three.says(" OpenMP enabled: 3 threads\n"));
  EXPECT_NEAR(one.number("Total energy:"), three.number("Total energy:"), 1e-9);
}

TEST(EnergyReport, UnconvergedRunsFinishWithStatusThree) {
  const PROGRAM_RUN_T run = run_program_in_folder("%scf_maxiter 2\n" + water_geometry);
  EXPECT_EQ(run.status, 3);
  expect_in_order(run, {"   *** SCF NOT converged after 2 iter",
                        "   *** Diagnostic: ", " --- Section 7: Output & Properties ---\n", "  Zentrix run completed.\n"});
}

TEST(EnergyReport, OptionalOutput) {
  const PROGRAM_RUN_T run = run_program_in_folder("%print_mo\n%print_time\n%boys_cook yes\n" + water_geometry,
                                                  "ZENTRIX_PRINT_MATRICES=1 PROGRAM run.inp");
  ASSERT_EQ(run.status, 0) << run.report;
  EXPECT_NEAR(run.number("     Total energy:      "), water_sto3g, 1e-7);
  expect_in_order(run, {"S (overlap)", "T (kinetic)", "V (nuclear)", "H_core (T+V)", "   Molecular Orbital Output\n",
                        "   Orbital energies:\n", "   MO coefficients (columns = MOs):\n", "   BF ",
                        "  Zentrix run completed.\n", "  Stage                        Calls    Wall(s)     CPU(s)   %Wall\n",
                        "  Input & initialization ", "  1e-integrals (S,T,V) ", "  2e-integrals (J,K) ",
                        "  SCF iterations (*) ", "  Properties & output ", "  Total program ", "  Other / unaccounted ",
                        "  (*) SCF time includes 2e-integrals and DFT XC contributions\n"});
  EXPECT_TRUE(run.ends_with(std::string(90, '=') + "\n"));
  for (const char* zero : {"-0.000000 ", "-0.000000\n", "-0.00000000"}) EXPECT_FALSE(run.says(zero)) << run.report;
  const auto wall = [&](const std::string& label) {
    return std::stod(run.report.substr(run.report.find("\n  " + label) + 3 + 28 + 6, 11));
  };
  // Section 3 builds the geometry's pair data outside the SCF row, so the integral row may reach beyond it by that little.
  const double outermost = wall("Input & init") + wall("1e-integrals") + wall("SCF iter") + wall("Properties");
  EXPECT_NEAR(outermost + wall("Other"), wall("Total program"), 0.05 + wall("2e-integrals")) << run.report;
}

TEST(EnergyReport, OpenShellsRunUnrestrictedFromAtomicDensities) {
  const PROGRAM_RUN_T run = run_program_in_folder("%basis 6-31G*\n%mult 3\n%geo\nO 0 0 0\nO 0 0 1.2075\n*end\n");
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(
      run,
      {"   NOTE: Open-shell system (nalpha /= nbeta).\n         Switching to Unrestricted (UHF/UKS).\n",
       " --- Section 3: SCF ---\n   Building SAD (Superposition of Atomic Densities) initial guess...\n",
       "   SAD atomic UHF: Z=8  nelec=8  nalpha=5  nbeta=3  (mult=3)\n",
       "   SAD guess assembled.  Tr(PaS) rescale=0.900000  Tr(PbS) rescale=1.166667\n",
       "   Initial guess:             SAD (Superposition of Atomic Densities)\n", "   UHF: alpha occ = 9,  beta occ = 7\n",
       "   UKS occupation: AUTO (MOM for first 5 iters, then strict Aufbau)\n", "   Starting UHF SCF iterations...\n",
       "   <S**2> = 2.03", "   (exact = 2.000000)", "   Beta orbital energies:\n",
       " --- Section 7: Output & Properties ---\n", "     Total energy:           -149.61", "   <S**2> = 2.03"});
}

TEST(EnergyReport, DensityFunctionalsBuildAGridAndCheckIt) {
  const PROGRAM_RUN_T run =
      run_program_in_folder("%method b3lyp5\n%basis 6-31G*\n%print_time\n%xc_deriv num\n" + water_geometry);
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(
      run, {"   Functional:       B3LYP5\n   Class:            Hybrid\n   HF exchange:       20.00 %\n",
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
  const std::string input = "%method r2scan\n%basis STO-3G\n%grid 2\n" + water_geometry;
  const PROGRAM_RUN_T run = run_program_in_folder(input);
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(run, {"   meta-GGA: PBE pre-converge for initial guess\n", "   XC functional:             PBE\n",
                        "   PBE pre-converged, E = ", "   Starting meta-GGA SCF with PBE density...\n",
                        "   Initial guess:             PBE pre-converged density\n"
                        "   Initial Fock matrix:       PBE pre-converged density\n",
                        "   XC functional:             R2SCAN\n   Initial Fock matrix:       previous density\n"});
  const PROGRAM_RUN_T open = run_program_in_folder("%spin uks\n" + input);
  ASSERT_EQ(open.status, 0) << open.report;
  EXPECT_FALSE(open.says("PBE pre-converge")) << open.report;
  const PROGRAM_RUN_T short_run = run_program_in_folder("%scf_maxiter 3\n" + input);
  EXPECT_EQ(short_run.status, 3);
  EXPECT_TRUE(short_run.says("   PBE pre-converge: not fully converged, using best density\n")) << short_run.report;
}

TEST(EnergyReport, GradientJobsEndInSectionSeven) {
  const PROGRAM_RUN_T run =
      run_program_in_folder("%job gradient\n%method pbe\n%basis STO-3G\n%print_time\n%print_grad\n" + water_geometry);
  ASSERT_EQ(run.status, 0) << run.report;
  expect_in_order(run,
                  {" --- Section 2: One-Electron Integrals ---\n",
                   " --- Section 4: Gradient ---\n   Method: fully analytical\n   Running SCF for gradient...\n",
                   " --- Building DFT integration grid ---\n", "   Initial Fock matrix:       core Hamiltonian\n",
                   "   SCF energy: ", "   Computing fused 1e gradient (S + T + V_nuc)...\n   Fused 1e gradient done.\n",
                   "   Computing 2-electron gradient...\n     ERI gradient: ",
                   "   Analytical gradient computed.\n   Computing XC gradient (analytical)...\n",
                   "   %print_grad  (Hartree/Bohr)\n   Atom              gX             gY             gZ\n",
                   "   Cartesian gradient (Hartree/Bohr):\n     Atom              gX             gY             gZ\n",
                   "   Max gradient component: ", "   RMS gradient:           ", " --- Section 7: Output & Properties ---\n",
                   "     Total energy:      ", "  Gradient 1e", "  Gradient 2e", "  Gradient DFT"});
  EXPECT_FALSE(run.says("--- Section 3")) << run.report;
  const PROGRAM_RUN_T open =
      run_program_in_folder("%job gradient\n%grad_method semi\n%basis STO-3G\n%spin uhf\n" + water_geometry);
  ASSERT_EQ(open.status, 0) << open.report;
  expect_in_order(open, {"   Method: semi-analytical (Pulay+FD)\n   Running UHF SCF for gradient...\n",
                         "     Atom 1 done.\n", "     Atom 3 done.\n   Gradient computed.\n"});
}

#include "dft/xc_integrator.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>

#include "dft/basis_on_grid.hpp"
#include "dft/grid_batches.hpp"
#include "dft/xc_gradient.hpp"
#include "report/stop.hpp"
#include "support/differences.hpp"
#include "support/grids.hpp"
#include "support/instruction_sets.hpp"
#include "support/molecules.hpp"
#include "xc_samples.hpp"

// Basis functions at grid points and the integration of the exchange-correlation energy and potential.

namespace {

using namespace zentrix;
using namespace zentrix::DFT;

using samples::method;
using TESTS::grid_of;

/// A density matrix of a few positive occupations with random orbitals, the same for every call with one seed.
MATRIX random_density(Eigen::Index n, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(-0.4, 0.4);
  MATRIX orbitals(n, 4);
  for (Eigen::Index i = 0; i < orbitals.size(); ++i) orbitals(i) = uniform(generator);
  return orbitals * orbitals.transpose();
}

TEST(BASIS_ON_GRID, FunctionsAreNormalised) {
  for (const bool spherical : {false, true}) {
    const MOLECULE_T atom = TESTS::sample_molecule("Ne 0.1 -0.2 0.3\n", "cc-pVQZ", {0, 1, spherical});
    const auto grid = grid_of(atom, 6);
    for (Eigen::Index f = 0; f < atom.n_basis; ++f) {
      MATRIX density = MATRIX::Zero(atom.n_basis, atom.n_basis);
      density(f, f) = 1.0;
      EXPECT_NEAR(integrate_density(atom, grid, density), 1.0, 2e-6) << f;
    }
  }
}

/// All ten arrays of one batch of eight points, shifted by `step` along `axis`.
std::vector<double> shifted_values(const MOLECULE_T& molecule, GRID_BATCHES_T batches, int axis, double step) {
  std::vector<double>& coordinate = axis == 0 ? batches.x : axis == 1 ? batches.y : batches.z;
  for (double& value : coordinate) value += step;
  const BASIS_ON_GRID_T basis(molecule, batches, 2);
  ALIGNED_VECTOR scratch;
  const double* values = basis.values(0, scratch);
  return {values, values + basis.size_of(0)};
}

TEST(BASIS_ON_GRID, DerivativesAgreeWithDifferencesInEveryInstructionSet) {
  const MOLECULE_T molecule = TESTS::sample_molecule("O 0.1 -0.2 0.3\nH 0.4 0.8 0.1\n", "cc-pVQZ", {-1, 1, true});
  GRID_BATCHES_T batches;
  GRID_BATCH_T batch;
  batch.points = 8;
  for (std::size_t s = 0; s < molecule.shells.size(); ++s) batch.shells.push_back(static_cast<int>(s));
  for (int f = 0; f < molecule.n_basis; ++f) batch.functions.push_back(f);
  batches.batches = {batch};
  for (int p = 0; p < 8; ++p) {
    batches.x.push_back(0.3 * p - 1.0);
    batches.y.push_back(0.7 - 0.2 * p);
    batches.z.push_back(0.11 * p * p - 0.9);
    batches.weight.push_back(1.0);
  }
  const std::size_t block = batch.functions.size() * 8;
  const double h = 1e-4;
  constexpr int second[3][3] = {{4, 5, 6}, {5, 7, 8}, {6, 8, 9}};
  std::vector<double> first_set;
  for (kernels::ISA isa : TESTS::available_isas()) {
    const TESTS::ISA_GUARD guard(isa);
    const std::vector<double> here = shifted_values(molecule, batches, 0, 0.0);
    if (first_set.empty()) first_set = here;
    for (std::size_t i = 0; i < here.size(); ++i) EXPECT_NEAR(here[i], first_set[i], 1e-12 * (1.0 + std::abs(here[i])));
    for (int axis = 0; axis < 3; ++axis) {
      const std::vector<double> plus = shifted_values(molecule, batches, axis, h);
      const std::vector<double> minus = shifted_values(molecule, batches, axis, -h);
      for (int q = 0; q < 4; ++q) {
        const std::size_t expected = static_cast<std::size_t>(q == 0 ? 1 + axis : second[q - 1][axis]) * block;
        for (std::size_t i = 0; i < block; ++i) {
          const std::size_t at = static_cast<std::size_t>(q) * block + i;
          const double slope = (plus[at] - minus[at]) / (2.0 * h);
          EXPECT_NEAR(here[expected + i], slope, 1e-6 * (1.0 + std::abs(slope)) + 3e-5 * std::abs(here[at]));
        }
      }
    }
  }
}

TEST(XC_INTEGRATOR, PotentialIsTheDerivativeOfTheEnergy) {
  const MOLECULE_T molecule = TESTS::sample_molecule(TESTS::water, "6-31G*");
  const auto grid = grid_of(molecule, 2);
  for (const char* name : {"SVWN", "PBE", "BLYP", "R2SCAN"}) {
    SCOPED_TRACE(name);
    for (const int channels : {1, 2}) {
      const XC_INTEGRATOR_T integrator(molecule, grid, method(name), channels);
      std::vector<MATRIX> densities, directions;
      for (unsigned s = 0; s < static_cast<unsigned>(channels); ++s) {
        densities.push_back(random_density(molecule.n_basis, 7U + 10U * s));
        directions.push_back(0.1 *
                             (random_density(molecule.n_basis, 70U + 10U * s) - random_density(molecule.n_basis, 80U + s)));
      }
      const auto energy_at = [&](double step) {
        std::vector<MATRIX> there = densities;
        for (std::size_t s = 0; s < there.size(); ++s) there[s] += step * directions[s];
        return integrator.integrate(there).energy;
      };
      const XC_RESULT_T here = integrator.integrate(densities);
      double expected = 0.0;
      for (std::size_t s = 0; s < densities.size(); ++s) {
        EXPECT_NEAR((here.potentials[s] - here.potentials[s].transpose()).norm(), 0.0, 1e-12);
        expected += here.potentials[s].cwiseProduct(directions[s]).sum();
      }
      EXPECT_NEAR(TESTS::derivative(energy_at, 1e-4), expected, 2e-5 * std::abs(expected) + 1e-7) << channels;
    }
  }
}

TEST(XC_INTEGRATOR, KeptAndRecomputedValuesAgree) {
  const MOLECULE_T molecule = TESTS::sample_molecule(TESTS::water, "cc-pVTZ", {0, 1, true});
  const auto grid = grid_of(molecule, 2);
  const std::vector<MATRIX> density = {random_density(molecule.n_basis, 3U)};
  for (const char* name : {"SVWN3", "BP86", "R2SCAN"}) {
    SCOPED_TRACE(name);
    XC_INTEGRATOR_T integrator(molecule, grid, method(name), 1);
    const XC_RESULT_T recomputed = integrator.integrate(density);
    integrator.keep_values(3'000'000);  // some of the batches only
    const XC_RESULT_T kept = integrator.integrate(density);
    EXPECT_EQ(kept.energy, recomputed.energy);
    EXPECT_EQ(kept.potentials[0], recomputed.potentials[0]);
    EXPECT_NEAR(integrate_density(molecule, grid, density[0]), kept.electrons, 1e-10);
  }
}

TEST(XC_GRADIENT, IsTheDerivativeOfTheEnergyAtFixedDensity) {
  for (const int level : {2, 6}) {
    const MOLECULE_T molecule =
        TESTS::sample_molecule("O 0.1 0.0 0.1173\nH 0.0 0.7572 -0.4692\nLi 0.2 -1.3 -0.4\n", "6-31G*", {0, 1, level == 6});
    const std::vector<MATRIX> spins = {0.3 * random_density(molecule.n_basis, 21U),
                                       0.3 * random_density(molecule.n_basis, 22U)};
    for (const char* name : {"SVWN", "PBE", "R2SCAN"}) {
      for (const int channels : {1, 2}) {
        SCOPED_TRACE(std::string(name) + " level " + std::to_string(level) + " channels " + std::to_string(channels));
        const std::span<const MATRIX> densities(spins.data(), static_cast<std::size_t>(channels));
        const VECTOR gradient = xc_gradient(molecule, grid_of(molecule, level), method(name), densities);
        ASSERT_EQ(gradient.size(), 9);
        EXPECT_LT(gradient.reshaped(3, 3).rowwise().sum().cwiseAbs().maxCoeff(), 1e-9);
        for (const std::size_t k : {2U, 4U, 6U}) {
          const auto energy_at = [&](double step) {
            MOLECULE_T moved = molecule;
            moved.atoms[k / 3].position[k % 3] += step;
            return XC_INTEGRATOR_T(moved, grid_of(moved, level), method(name), channels).integrate(densities).energy;
          };
          const double slope = TESTS::derivative(energy_at, 1e-3);
          EXPECT_NEAR(gradient(static_cast<Eigen::Index>(k)), slope, 5e-6 * std::max(1.0, std::abs(slope))) << k;
        }
      }
    }
  }
}

TEST(XC_INTEGRATOR, DensitiesThatMakeNoSenseStopTheRun) {
  const MOLECULE_T molecule = TESTS::sample_molecule(TESTS::hydrogen_fluoride, "6-31G");
  const XC_INTEGRATOR_T integrator(molecule, grid_of(molecule, 1), method("PBE"), 1);
  MATRIX density = MATRIX::Zero(molecule.n_basis, molecule.n_basis);
  EXPECT_EQ(integrator.integrate(std::span<const MATRIX>(&density, 1)).energy, 0.0);  // empty space is fine
  density(0, 0) = std::numeric_limits<double>::quiet_NaN();
  EXPECT_THROW((void)integrator.integrate(std::span<const MATRIX>(&density, 1)), run_stopped);
  density(0, 0) = 1e300;
  EXPECT_THROW((void)integrator.integrate(std::span<const MATRIX>(&density, 1)), run_stopped);
}

TEST(GRID_BATCHES, HoldEveryPointOnceAndEveryShellThatReachesIt) {
  const MOLECULE_T molecule = TESTS::sample_molecule("O 0 0 0\nH 0 0 0.96\nLi 0 0 14\n", "6-31G*", {0, 1, false});
  const auto grid = grid_of(molecule, 2);
  const GRID_BATCHES_T batches = make_batches(molecule, grid, 1e-12);
  std::multiset<double> weights;
  bool all_in_one = true;
  for (const GRID_BATCH_T& batch : batches.batches) {
    EXPECT_LE(batch.points, MAX_BATCH_POINTS);
    EXPECT_EQ(batch.points % 8, 0U);
    for (std::size_t p = batch.first; p < batch.first + batch.points; ++p)
      if (batches.weight[p] != 0.0) weights.insert(batches.weight[p]);
    all_in_one = all_in_one && batch.shells.size() == molecule.shells.size();
  }
  EXPECT_EQ(weights, std::multiset<double>(grid.weight.begin(), grid.weight.end()));
  EXPECT_FALSE(all_in_one);  // two molecules so far apart share no batch near the nuclei
  // Beyond its extent a contracted shell is below the cut-off, just inside it is not.
  const SHELL_T& shell = molecule.shells[0];
  const auto value = [&](double r) {
    double sum = 0.0;
    for (std::size_t i = 0; i < shell.alpha.size(); ++i) sum += shell.coeff[i] * std::exp(-shell.alpha[i] * r * r);
    return std::abs(sum);
  };
  const double extent = shell_extent(shell, 1e-12);
  EXPECT_LT(value(extent), 1e-12);
  EXPECT_GT(value(0.9 * extent), 1e-12);
}

}  // namespace

#include "gradients/scf_gradient.hpp"

#include <omp.h>

#include <cmath>
#include <sstream>

#include "dft/xc_gradient.hpp"
#include "integrals/gradient_2e.hpp"
#include "molecule/molecule.hpp"
#include "report/timing.hpp"

namespace zentrix::GRADIENTS {
namespace {

constexpr double displacement = 1e-5;  // bohr

CARTESIAN_T zero_gradient(const MOLECULE_T& molecule) {
  return CARTESIAN_T::Zero(3 * static_cast<Eigen::Index>(molecule.atoms.size()));
}

CARTESIAN_T two_electron_gradient(const SCF::GEOMETRY_DATA_T& geometry, double exchange, const SCF::SCF_RESULT_T& scf) {
  const STAGE_TIMER timer(STAGE::gradient_2e);
  CARTESIAN_T gradient = INTEGRALS_2E::coulomb_gradient(geometry.molecule, scf.total_density());
  if (exchange != 0.0) {
    gradient -= exchange / scf.occupation * INTEGRALS_2E::exchange_gradient(geometry.molecule, scf.densities());
  }
  return gradient;
}

}  // namespace

MATRIX energy_weighted_density(const SCF::SCF_RESULT_T& scf) {
  MATRIX weighted = MATRIX::Zero(scf.channels[0].density.rows(), scf.channels[0].density.cols());
  for (const SCF::SPIN_CHANNEL_T& channel : scf.channels) {
    const auto occupied = channel.orbitals.leftCols(channel.n_occupied);
    const VECTOR energies = scf.occupation * channel.energies.head(channel.n_occupied).cwiseProduct(channel.occupations);
    weighted += occupied * energies.asDiagonal() * occupied.transpose();
  }
  return weighted;
}

CARTESIAN_T nuclear_repulsion_gradient(const MOLECULE_T& molecule) {
  CARTESIAN_T gradient = zero_gradient(molecule);
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    for (std::size_t b = 0; b < a; ++b) {
      const ATOM_T& first = molecule.atoms[a];
      const ATOM_T& second = molecule.atoms[b];
      const double charges = first.charge * second.charge;
      if (charges == 0.0) continue;
      double square = 0.0;
      for (std::size_t k = 0; k < 3; ++k) square += std::pow(first.position[k] - second.position[k], 2);
      const double factor = -charges / (square * std::sqrt(square));
      for (std::size_t k = 0; k < 3; ++k) {
        const double force = factor * (first.position[k] - second.position[k]);
        gradient(static_cast<Eigen::Index>(3 * a + k)) += force;
        gradient(static_cast<Eigen::Index>(3 * b + k)) -= force;
      }
    }
  }
  return gradient;
}

SCF_GRADIENT_T scf_gradient(const SCF::GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                            const SCF::SCF_RESULT_T& scf, GRADIENT_OBSERVER_T& observer) {
  const MOLECULE_T& molecule = geometry.molecule;
  const bool unrestricted = scf.unrestricted();
  SCF_GRADIENT_T gradient;
  observer.nuclear_begins(unrestricted);
  gradient.nuclear = nuclear_repulsion_gradient(molecule);
  {
    const STAGE_TIMER timer(STAGE::gradient_1e);
    observer.one_electron_begins();
    gradient.one_electron = INTEGRALS_1E::one_electron_gradient(molecule, scf.total_density(), energy_weighted_density(scf));
    observer.one_electron_ends();
  }
  const auto n_shells = static_cast<int>(molecule.shells.size());
  observer.two_electron_begins(unrestricted, omp_get_max_threads(), n_shells * (n_shells + 1) / 2);
  gradient.two_electron = two_electron_gradient(geometry, functional.hf_exchange, scf);
  observer.integrals_done(unrestricted);
  gradient.xc = zero_gradient(molecule);
  if (!functional.is_hartree_fock()) {
    const STAGE_TIMER timer(STAGE::gradient_dft);
    observer.xc_begins(unrestricted);
    gradient.xc = DFT::xc_gradient(molecule, geometry.grid, functional, scf.densities());
  }
  return gradient;
}

namespace {

/// E_nuc and the energy of fixed density matrices at a displaced geometry, without the overlap term.
double fixed_density_energy(const MOLECULE_T& molecule, const DFT_GRID::MOLECULAR_GRID_T& reference_grid,
                            const DFT::FUNCTIONAL_T& functional, const SCF::SPIN_MATRICES_T& densities) {
  SCF::GEOMETRY_DATA_T geometry(molecule, INTEGRALS_1E::one_electron_matrices(molecule));
  std::ostringstream quiet;
  if (!functional.is_hartree_fock()) geometry.grid = DFT_GRID::build_grid(molecule, reference_grid.level, quiet);
  SCF::SPIN_MATRICES_T fock(densities.size(), MATRIX::Zero(molecule.n_basis, molecule.n_basis));
  SCF::ENERGY_PARTS_T energy;
  energy.nuclear = geometry.nuclear_repulsion;
  for (const auto& term : SCF::energy_terms(geometry, functional, 0)) term->add(densities, fock, energy);
  return energy.total();
}

}  // namespace

CARTESIAN_T semi_analytical_gradient(const SCF::GEOMETRY_DATA_T& geometry, const DFT::FUNCTIONAL_T& functional,
                                     const SCF::SCF_RESULT_T& scf, GRADIENT_OBSERVER_T& observer) {
  // Nearly all of the time goes into two-electron energies; without a stage it would be unaccounted for.
  const STAGE_TIMER timer(STAGE::gradient_2e);
  const MOLECULE_T& molecule = geometry.molecule;
  const SCF::SPIN_MATRICES_T densities = scf.densities();
  const MATRIX none = MATRIX::Zero(molecule.n_basis, molecule.n_basis);
  CARTESIAN_T gradient = INTEGRALS_1E::one_electron_gradient(molecule, none, energy_weighted_density(scf));
  const CARTESIAN_T here = positions_of(molecule);
  for (Eigen::Index k = 0; k < here.size(); ++k) {
    double difference = 0.0;
    for (const double sign : {1.0, -1.0}) {
      CARTESIAN_T there = here;
      there(k) += sign * displacement;
      difference += sign * fixed_density_energy(moved(molecule, there), geometry.grid, functional, densities);
    }
    gradient(k) += difference / (2.0 * displacement);
    if (k % 3 == 2) observer.atom_done(static_cast<int>(k / 3) + 1);
  }
  observer.semi_analytical_done();
  return gradient;
}

}  // namespace zentrix::GRADIENTS

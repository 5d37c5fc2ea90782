#include "correlation/mp2.hpp"

#include <omp.h>

#include <algorithm>
#include <vector>

#include "correlation/half_transformation.hpp"
#include "correlation/pair_energy.hpp"
#include "molecule/molecule.hpp"
#include "report/stop.hpp"

namespace zentrix::CORRELATION {
namespace {

/// The half-transformed integrals get what the store leaves of the limit, at least this part of it.
constexpr int smallest_share = 4;

MP2_DIMENSIONS_T dimensions_of(const SCF::GEOMETRY_DATA_T& geometry, const SCF::SCF_RESULT_T& scf, int frozen) {
  MP2_DIMENSIONS_T sizes;
  sizes.channels = static_cast<int>(scf.channels.size());
  sizes.n_basis = geometry.molecule.n_basis;
  sizes.frozen = frozen;
  for (std::size_t s = 0; s < scf.channels.size(); ++s) {
    sizes.occupied[s] = scf.channels[s].n_occupied;
    sizes.virtuals[s] = static_cast<int>(scf.channels[s].orbitals.cols()) - scf.channels[s].n_occupied;
  }
  for (const ECP_T& ecp : geometry.molecule.ecps) sizes.ecp_electrons += ecp.n_core;
  return sizes;
}

double largest_coefficient(const SCF::SCF_RESULT_T& scf) {
  double largest = 0.0;
  for (const SCF::SPIN_CHANNEL_T& channel : scf.channels)
    largest = std::max(largest, channel.orbitals.cwiseAbs().maxCoeff());
  return largest;
}

/// A closed shell tells its memory first, zero where there is nothing to do.
void check_closed_shell(const MP2_DIMENSIONS_T& sizes) {
  if (sizes.virtuals[0] == 0) throw run_stopped("   *** MP2 ERROR: no virtual orbitals");
  if (sizes.correlated(0) <= 0) throw run_stopped("   *** MP2 ERROR: no correlated occupied orbitals");
}

void check_open_shell(const MP2_DIMENSIONS_T& sizes) {
  if (std::max(sizes.virtuals[0], sizes.virtuals[1]) == 0) throw run_stopped("   *** UMP2 ERROR: no virtual orbitals");
  if (sizes.correlated(0) <= 0 || sizes.correlated(1) < 0)
    throw run_stopped("   *** UMP2 ERROR: invalid correlated occupation");
}

/// Plans the batches and fills in what the report says about memory: nothing when no orbital takes part.
std::vector<OCCUPIED_BATCH_T> plan(const INTEGRALS_2E::ERI_PANELS& panels, std::int64_t store_bytes, int n_occupied,
                                   int limit_mb, MP2_DIMENSIONS_T& sizes) {
  const std::int64_t limit = static_cast<std::int64_t>(limit_mb) * 1024 * 1024;
  std::vector<OCCUPIED_BATCH_T> batches =
      occupied_batches(n_occupied, panels.n_components(), std::max(limit - store_bytes, limit / smallest_share));
  sizes.stored = panels.stored();
  if (batches.empty()) return batches;
  sizes.batches = static_cast<int>(batches.size());
  for (const OCCUPIED_BATCH_T& batch : batches)
    sizes.half_transformed = std::max(sizes.half_transformed, half_transformed_bytes(batch, panels.n_components()));
  const std::int64_t widest = std::max(sizes.virtuals[0], sizes.virtuals[1]);
  sizes.pair_integrals = 8 * widest * widest * omp_get_max_threads();
  return batches;
}

void add_pair(const PAIR_ENERGY_T& pair, const CORRELATED_ORBITAL_T& i, const CORRELATED_ORBITAL_T& j, bool same,
              MP2_RESULT_T& result) {
  if (!result.unrestricted) {
    const double weight = same ? 1.0 : 2.0;
    result.opposite_spin += weight * pair.direct;
    result.same_spin[0] += weight * (pair.direct - pair.exchange);
  } else if (i.spin == j.spin) {
    result.same_spin[static_cast<std::size_t>(i.spin)] += pair.direct - pair.exchange;
  } else {
    result.opposite_spin += pair.direct;
    result.s_squared -= 2.0 * pair.spin_overlap;
  }
}

/// All pairs j <= i of a batch, threaded; their energies are added up in a fixed order.
void add_batch(const HALF_TRANSFORMED_T& integrals, const PAIR_ORBITALS_T& orbitals, const OCCUPIED_BATCH_T& batch,
               MP2_RESULT_T& result) {
  std::vector<std::array<int, 2>> pairs;
  for (int i = batch.first; i < batch.end(); ++i)
    for (int j = 0; j <= i; ++j) pairs.push_back({i, j});
  std::vector<PAIR_ENERGY_T> energies(pairs.size());
#pragma omp parallel
  {
    PAIR_WORK_T work;
#pragma omp for schedule(dynamic, 1)
    for (std::size_t n = 0; n < pairs.size(); ++n) {
      integrals.pair(pairs[n][0], pairs[n][1], work.k);
      energies[n] = pair_energy(orbitals, pairs[n][0], pairs[n][1], work);
    }
  }
  for (std::size_t n = 0; n < pairs.size(); ++n)
    add_pair(energies[n], orbitals.occupied[static_cast<std::size_t>(pairs[n][0])],
             orbitals.occupied[static_cast<std::size_t>(pairs[n][1])], pairs[n][0] == pairs[n][1], result);
}

}  // namespace

MP2_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input, const MOLECULE_T& molecule) {
  // An ion or a high spin state may lack the electrons of a core.
  const int automatic =
      std::min(automatic_frozen_core(molecule), molecule.unrestricted ? molecule.n_beta : molecule.n_alpha);
  return {input.frozen_core < 0 ? automatic : input.frozen_core, input.eri_memory_limit_mb};
}

MP2_RESULT_T mp2_energy(const SCF::GEOMETRY_DATA_T& geometry, const SCF::SCF_RESULT_T& scf, const MP2_SETTINGS_T& settings,
                        MP2_OBSERVER_T& observer) {
  MP2_DIMENSIONS_T sizes = dimensions_of(geometry, scf, settings.frozen_core);
  MP2_RESULT_T result;
  result.unrestricted = scf.unrestricted();
  result.s_squared = scf.s_squared;
  observer.orbitals_counted(sizes);
  if (result.unrestricted) check_open_shell(sizes);
  const INTEGRALS_2E::ERI_PANELS panels = geometry.jk.integral_panels(largest_coefficient(scf));
  const PAIR_ORBITALS_T orbitals = pair_orbitals(panels, scf, geometry.one_electron.s, sizes);
  const auto batches =
      plan(panels, geometry.jk.store_bytes(), static_cast<int>(orbitals.occupied.size()), settings.memory_limit_mb, sizes);
  observer.sizes_planned(sizes);
  if (!result.unrestricted) check_closed_shell(sizes);
  observer.batches_planned(sizes);
  for (std::size_t n = 0; n < batches.size(); ++n) {
    observer.half_transformation(sizes, static_cast<int>(n));
    const HALF_TRANSFORMED_T integrals(panels, orbitals.occupied_coefficients, batches[n]);
    observer.pair_energies(sizes, static_cast<int>(n));
    add_batch(integrals, orbitals, batches[n], result);
  }
  observer.finished(sizes, result);
  return result;
}

}  // namespace zentrix::CORRELATION

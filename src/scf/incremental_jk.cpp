#include "scf/incremental_jk.hpp"

namespace zentrix::SCF {
namespace {

/// Builds from changes between two full ones; each neglects what a full build neglects.
constexpr int most_increments = 8;
/// A change of more than this part of the density (Frobenius norms) saves nothing worth its rounding.
constexpr double largest_change = 0.5;

}  // namespace

bool INCREMENTAL_JK_T::change_is_small(const SPIN_MATRICES_T& densities) const {
  if (last_densities_.size() != densities.size()) return false;
  double change = 0.0;
  double whole = 0.0;
  for (std::size_t s = 0; s < densities.size(); ++s) {
    change += (densities[s] - last_densities_[s]).squaredNorm();
    whole += densities[s].squaredNorm();
  }
  return change < largest_change * largest_change * whole;
}

INTEGRALS_2E::JK_RESULT_T INCREMENTAL_JK_T::build_for(const SPIN_MATRICES_T& densities, bool exchange) const {
  const std::span<const MATRIX> channels(densities), none;
  if (densities.size() == 1) return jk_.build(channels, exchange ? channels : none);
  MATRIX total = densities[0];
  for (std::size_t s = 1; s < densities.size(); ++s) total += densities[s];
  return jk_.build(std::span<const MATRIX>(&total, 1), exchange ? channels : none);
}

const INTEGRALS_2E::JK_RESULT_T& INCREMENTAL_JK_T::build(const SPIN_MATRICES_T& densities, bool exchange) {
  if (jk_.has_store() || increments_ >= most_increments || !change_is_small(densities)) {
    last_ = build_for(densities, exchange);
    increments_ = 0;
  } else {
    SPIN_MATRICES_T changes = densities;
    for (std::size_t s = 0; s < changes.size(); ++s) changes[s] -= last_densities_[s];
    const INTEGRALS_2E::JK_RESULT_T change = build_for(changes, exchange);
    last_.j[0] += change.j[0];
    for (std::size_t s = 0; s < last_.k.size(); ++s) last_.k[s] += change.k[s];
    ++increments_;
  }
  if (!jk_.has_store()) last_densities_ = densities;
  return last_;
}

}  // namespace zentrix::SCF

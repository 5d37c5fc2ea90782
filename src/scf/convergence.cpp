#include "scf/convergence.hpp"

#include <cmath>

namespace zentrix::SCF {
namespace {

/// An energy change this large just before a converged one is worth a word.
constexpr double jump = 1e-3;

}  // namespace

bool CONVERGENCE_T::test(const SCF_ROW_T& row, const SCF_SETTINGS_T& settings, SCF_OBSERVER_T& observer) {
  const bool energy = std::abs(row.energy_change) < settings.energy_tolerance;
  const bool density = row.density_change < settings.density_tolerance;
  const bool gradient = row.gradient < settings.gradient_tolerance;
  const bool late_enough = row.iteration > settings.min_iterations;
  consecutive_ = energy && density && gradient && late_enough ? consecutive_ + 1 : 0;
  if (consecutive_ >= settings.n_converged) return true;
  if (energy && !(density && gradient)) observer.energy_only_convergence(row);
  if (energy && std::abs(previous_change_) > jump && late_enough) observer.energy_jump(row, previous_change_);
  previous_change_ = row.energy_change;
  return false;
}

}  // namespace zentrix::SCF

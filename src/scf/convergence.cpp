#include "scf/convergence.hpp"

#include <cmath>

namespace zentrix::SCF {
namespace {

/// An energy change this large just before a converged one is worth a word.
constexpr double jump = 1e-3;
/// The soft test allows this many times the energy tolerance.
constexpr double soft_factor = 100.0;

/// With damping d the density goes only 1 - d of the way that its orbitals ask for; the whole way is what is judged.
SCF_ROW_T without_damping(SCF_ROW_T row, double damping) {
  row.energy_change /= 1.0 - damping;
  row.density_change /= 1.0 - damping;
  return row;
}

}  // namespace

bool CONVERGENCE_T::hard(const SCF_ROW_T& row, const SCF_SETTINGS_T& settings) {
  const bool all = std::abs(row.energy_change) < settings.energy_tolerance &&
                   row.density_change < settings.density_tolerance && row.gradient < settings.gradient_tolerance;
  consecutive_ = all && row.iteration > settings.min_iterations ? consecutive_ + 1 : 0;
  return consecutive_ >= settings.n_converged;
}

bool CONVERGENCE_T::soft(const SCF_ROW_T& row, const SCF_SETTINGS_T& settings) {
  const bool settled = std::abs(row.energy_change) < soft_factor * settings.energy_tolerance &&
                       row.gradient < settings.gradient_tolerance && row.iteration > settings.min_iterations;
  soft_consecutive_ = settled ? soft_consecutive_ + 1 : 0;
  return soft_consecutive_ >= SOFT_ITERATIONS;
}

bool CONVERGENCE_T::test(const SCF_ROW_T& row, const SCF_SETTINGS_T& settings, SCF_OBSERVER_T& observer) {
  const SCF_ROW_T whole = without_damping(row, settings.damping);
  if (hard(whole, settings)) return true;
  if (soft_end_ && soft(whole, settings)) {
    observer.soft_convergence(row);
    return true;
  }
  const bool energy = std::abs(whole.energy_change) < settings.energy_tolerance;
  const bool others = whole.density_change < settings.density_tolerance && row.gradient < settings.gradient_tolerance;
  if (energy && !others) observer.energy_only_convergence(row);
  if (energy && std::abs(previous_change_) > jump && row.iteration > settings.min_iterations) {
    observer.energy_jump(row, previous_change_);
  }
  previous_change_ = row.energy_change;
  return false;
}

}  // namespace zentrix::SCF

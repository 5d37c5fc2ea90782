#include "scf/scf.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "linalg/lapack.hpp"
#include "report/stop.hpp"
#include "report/timing.hpp"
#include "scf/convergence.hpp"
#include "scf/diis.hpp"
#include "scf/occupation.hpp"
#include "scf/scf_observer.hpp"

namespace zentrix::SCF {
namespace {

using INPUT_PARSER::LEVEL_SHIFT;

constexpr double small_overlap = 1e-8;
/// The guard against oscillation acts with more stored entries than this, once |g| is below its tolerance, when max(dP)
/// grows by more than this factor. Further away a large step is no harm: along the flat directions of open d shells a fresh
/// start of DIIS undoes ten iterations each time.
constexpr int oscillation_entries = 4;
constexpr double oscillation_rise = 5.0;
/// A run is led downhill wholly above the upper and not at all below the lower value of |g| (of one channel): a poor start
/// at first, later any that has not come near a stationary point. A singlet whose spin symmetry was broken by hand is led
/// like a late one from the start, because DIIS by itself finds the way back to the symmetric saddle.
struct DESCENT_T {
  double none, all;
};
constexpr DESCENT_T early_descent = {1.5, 15.0}, late_descent = {1e-3, 2e-2};
constexpr int late_after = 20;

/// X = S^(-1/2) = U s^(-1/2) U^T (P.-O. Loewdin, J. Chem. Phys. 18 (1950) 365); nothing is discarded.
MATRIX orthogonaliser(const MATRIX& overlap, SCF_OBSERVER_T& observer) {
  VECTOR values;
  MATRIX vectors;
  if (const int info = symmetric_eigen(overlap, values, vectors); info != 0) {
    throw run_stopped(fmt::format(" *** ERROR dsyev (S^-1/2): info={}", info));
  }
  // What rounding leaves of a zero.
  const double noise = static_cast<double>(values.size()) * std::numeric_limits<double>::epsilon() * values.maxCoeff();
  for (Eigen::Index i = 0; i < values.size(); ++i) {
    if (values(i) < small_overlap) observer.small_overlap_eigenvalue(static_cast<int>(i) + 1, values(i));
    if (!(values(i) > noise)) {
      throw run_stopped(fmt::format(
          " *** ERROR: S eigenvalue {} is {:.3e}: the basis set is linearly dependent at this geometry.", i + 1, values(i)));
    }
  }
  return vectors * values.cwiseSqrt().cwiseInverse().asDiagonal() * vectors.transpose();
}

/// Eigenvectors of F in the orthogonal basis, transformed back.
void diagonalise(const MATRIX& fock, const MATRIX& x, SPIN_CHANNEL_T& channel) {
  MATRIX transformed = x.transpose() * (fock * x);
  if (const int info = symmetric_eigen(transformed, channel.energies, transformed); info != 0) {
    throw run_stopped(fmt::format(" *** ERROR dsyev (Fock): info={}", info));
  }
  channel.orbitals.noalias() = x * transformed;
}

MATRIX density_of(const SPIN_CHANNEL_T& channel, double occupation) {
  const MATRIX weighted =
      channel.orbitals.leftCols(channel.n_occupied) * (occupation * channel.occupations).cwiseSqrt().asDiagonal();
  return weighted * weighted.transpose();
}

/// F D S - S D F of one channel, the gradient of the energy with respect to orbital rotations up to a factor. D keeps its
/// occupation factor, so a closed shell shows the norm of the usual restricted density.
MATRIX commutator(const MATRIX& fock, const MATRIX& density, const MATRIX& overlap) {
  const MATRIX fps = fock * (density * overlap);
  return fps - fps.transpose();
}

/// The level shift of a run: off, fixed, or waiting to be switched on.
struct SHIFT_STATE_T {
  bool active = false;
  double value = 0.0;
};

SHIFT_STATE_T initial_shift(const SCF_SETTINGS_T& settings) {
  const bool fixed = settings.level_shift_mode == LEVEL_SHIFT::fixed && settings.level_shift != 0.0;
  return {fixed, fixed ? settings.level_shift : 0.0};
}

/// State of one run of the loop.
class LOOP_T {
 public:
  LOOP_T(GEOMETRY_DATA_T& geometry, const std::vector<std::unique_ptr<FOCK_TERM_T>>& terms, const SCF_SETTINGS_T& settings,
         SCF_OBSERVER_T& observer)
      : geometry_(geometry),
        terms_(terms),
        settings_(settings),
        observer_(observer),
        diis_(settings.diis_condition_max),
        shift_(initial_shift(settings)) {}

  SCF_RESULT_T run(const SCF_START_T& start) {
    set_up(start);
    SCF_ROW_T row;
    double previous_energy = 9.99e9;  // there is none: the first change is too large to pass for convergence
    double previous_density_change = 0.0;
    CONVERGENCE_T convergence(result_.channels.size() == 2);
    for (int iteration = 1; iteration <= settings_.max_iterations && !result_.converged; ++iteration) {
      row = iterate(iteration);
      row.energy_change = row.energy - previous_energy;
      previous_energy = row.energy;
      observer_.row(row);
      guard_against_oscillation(row, previous_density_change);
      previous_density_change = row.density_change;
      result_.iterations = iteration;
      result_.converged = convergence.test(row, settings_, observer_);
    }
    if (settings_.damping > 0.0) {  // the damped density served the iterations; the result is that of the orbitals
      for (SPIN_CHANNEL_T& channel : result_.channels) channel.density = density_of(channel, result_.occupation);
    }
    result_.s_squared = spin_squared(result_.channels, geometry_.one_electron.s);
    observer_.finished(result_, settings_, row);
    return std::move(result_);
  }

 private:
  void set_up(const SCF_START_T& start) {
    observer_.started(geometry_, start);
    x_ = orthogonaliser(geometry_.one_electron.s, observer_);
    prepare_integrals();
    const MOLECULE_T& molecule = geometry_.molecule;
    result_.occupation = molecule.unrestricted ? 1.0 : 2.0;
    result_.channels.resize(molecule.unrestricted ? 2 : 1);
    result_.channels[0].n_occupied = molecule.n_alpha;
    if (molecule.unrestricted) result_.channels[1].n_occupied = molecule.n_beta;
    observer_.table_begins(settings_, result_.channels);
    if (starts_mixed(molecule, settings_, start)) descent_ = late_descent;
    rule_ = make_occupation_rule(molecule, settings_, start, geometry_.one_electron.s, observer_);
    for (std::size_t s = 0; s < result_.channels.size(); ++s) {
      SPIN_CHANNEL_T& channel = result_.channels[s];
      if (start.densities.empty()) {
        diagonalise(geometry_.one_electron.h_core, x_, channel);
        static_cast<void>(rule_->occupy(0, s, channel));
        channel.density = density_of(channel, result_.occupation);
      } else {
        channel.density = start.densities[s];
      }
    }
  }

  void prepare_integrals() {
    const STAGE_TIMER timer(STAGE::integrals_2e);
    const INTEGRALS_2E::JK_MODE_T mode = geometry_.jk.decide_mode(settings_.eri_memory_limit_mb);
    const bool wanted =
        std::any_of(terms_.begin(), terms_.end(), [](const auto& term) { return term->wants_stored_integrals(); });
    observer_.integral_mode(mode, geometry_.molecule.unrestricted ? 2 : 1, wanted);
    if (mode.conventional && wanted && !geometry_.jk.has_store()) geometry_.jk.fill_store();
  }

  /// One iteration: Fock matrices and energy of the current densities, acceleration, new orbitals and densities.
  SCF_ROW_T iterate(int iteration) {
    SCF_ROW_T row;
    row.iteration = iteration;
    activate_shift(iteration);
    const std::size_t n_channels = result_.channels.size();
    const auto n = geometry_.one_electron.s.rows();
    SPIN_MATRICES_T densities;
    for (SPIN_CHANNEL_T& channel : result_.channels) densities.push_back(std::move(channel.density));
    SPIN_MATRICES_T fock(n_channels, MATRIX::Zero(n, n));
    result_.energy = {};
    result_.energy.nuclear = geometry_.nuclear_repulsion;
    for (const auto& term : terms_) term->add(densities, fock, result_.energy);
    row.energy = result_.energy.total();

    SPIN_MATRICES_T errors;
    for (std::size_t s = 0; s < n_channels; ++s) {
      errors.push_back(commutator(fock[s], densities[s], geometry_.one_electron.s));
      row.gradient += errors[s].squaredNorm();
    }
    row.gradient = std::sqrt(row.gradient);
    if (settings_.diis) row.extrapolated = accelerate(row, densities, errors, fock);

    for (std::size_t s = 0; s < n_channels; ++s) {
      SPIN_CHANNEL_T& channel = result_.channels[s];
      if (shift_.active) shift_virtuals(densities[s], fock[s]);
      diagonalise(fock[s], x_, channel);
      if (rule_->occupy(iteration, s, channel)) diis_.reset();
      if (shift_.active) remove_shift(channel);
      channel.density = density_of(channel, result_.occupation);
      if (settings_.damping > 0.0) {
        channel.density = (1.0 - settings_.damping) * channel.density + settings_.damping * densities[s];
      }
      row.density_change = std::max(row.density_change, (channel.density - densities[s]).cwiseAbs().maxCoeff());
    }
    return row;
  }

  void activate_shift(int iteration) {
    if (settings_.level_shift_mode != LEVEL_SHIFT::automatic || shift_.active || iteration <= AUTOMATIC_SHIFT_AFTER) return;
    shift_ = {true, AUTOMATIC_SHIFT};
    observer_.level_shift_activated();
  }

  bool accelerate(const SCF_ROW_T& row, const SPIN_MATRICES_T& densities, const SPIN_MATRICES_T& errors,
                  SPIN_MATRICES_T& fock) {
    diis_.push(fock, densities, errors);
    const double share = descent_share(row);
    SPIN_MATRICES_T descending;
    if (share > 0.0) descending = fock;
    const bool interpolated = share > 0.0 && diis_.interpolate(descending);
    const DIIS_T::OUTCOME_T outcome = diis_.extrapolate(fock);
    if (outcome.pruned > 0) observer_.pruned(outcome.pruned, outcome.ratio, static_cast<int>(fock.size()));
    if (interpolated) {
      for (std::size_t s = 0; s < fock.size(); ++s) fock[s] = share * descending[s] + (1.0 - share) * fock[s];
    }
    return outcome.extrapolated;
  }

  /// Weight of the energy-directed interpolation beside DIIS, which extrapolates well only near a stationary point.
  double descent_share(const SCF_ROW_T& row) const {
    const DESCENT_T& descent = row.iteration > late_after ? late_descent : descent_;
    // Two channels with half the density each have a norm smaller by sqrt 2 than the one of the same closed shell.
    const double gradient = row.gradient * std::sqrt(static_cast<double>(result_.channels.size()));
    return std::clamp((gradient - descent.none) / (descent.all - descent.none), 0.0, 1.0);
  }

  /// Near convergence a sudden rise of the density change means that old entries of the history mislead the extrapolation.
  void guard_against_oscillation(const SCF_ROW_T& row, double previous_density_change) {
    if (result_.channels.size() < 2 || !row.extrapolated || diis_.size() <= oscillation_entries) return;
    const bool near = row.gradient < settings_.gradient_tolerance;
    const bool rise = row.density_change > oscillation_rise * std::max(previous_density_change, settings_.density_tolerance);
    if (!near || !rise) return;
    diis_.reset();
    observer_.oscillation_reset(row, previous_density_change);
  }

  /// F + b (S - S P S) with P the projector on the occupied space raises the virtual orbitals by b (V. R. Saunders, I. H.
  /// Hillier, Int. J. Quantum Chem. 7 (1973) 699).
  void shift_virtuals(const MATRIX& density, MATRIX& fock) const {
    const MATRIX& s = geometry_.one_electron.s;
    fock += shift_.value * (s - s * (density * s) / result_.occupation);
  }

  /// The orbitals are those of the shifted matrix; at convergence the virtual energies are too high by the shift exactly.
  void remove_shift(SPIN_CHANNEL_T& channel) const {
    channel.energies.tail(channel.energies.size() - channel.n_occupied).array() -= shift_.value;
  }

  GEOMETRY_DATA_T& geometry_;
  const std::vector<std::unique_ptr<FOCK_TERM_T>>& terms_;
  const SCF_SETTINGS_T& settings_;
  SCF_OBSERVER_T& observer_;
  DIIS_T diis_;
  SHIFT_STATE_T shift_;
  DESCENT_T descent_ = early_descent;
  std::unique_ptr<OCCUPATION_RULE_T> rule_;
  MATRIX x_;
  SCF_RESULT_T result_;
};

}  // namespace

SPIN_MATRICES_T SCF_RESULT_T::densities() const {
  SPIN_MATRICES_T result;
  for (const SPIN_CHANNEL_T& channel : channels) result.push_back(channel.density);
  return result;
}

MATRIX SCF_RESULT_T::total_density() const {
  MATRIX total = channels[0].density;
  for (std::size_t s = 1; s < channels.size(); ++s) total += channels[s].density;
  return total;
}

double spin_squared(const std::vector<SPIN_CHANNEL_T>& channels, const MATRIX& overlap) {
  if (channels.size() < 2) return 0.0;
  const auto occupied = [](const SPIN_CHANNEL_T& channel) { return channel.orbitals.leftCols(channel.n_occupied); };
  const MATRIX between = occupied(channels[0]).transpose() * (overlap * occupied(channels[1]));
  return exact_spin_squared(channels) + channels[1].n_occupied - between.squaredNorm();
}

double exact_spin_squared(const std::vector<SPIN_CHANNEL_T>& channels) {
  if (channels.size() < 2) return 0.0;
  const double spin = 0.5 * (channels[0].n_occupied - channels[1].n_occupied);
  return spin * (spin + 1.0);
}

SCF_SETTINGS_T settings_from(const INPUT_PARSER::INPUT_DATA_T& input) {
  SCF_SETTINGS_T settings;
  settings.max_iterations = input.scf_maxiter;
  settings.energy_tolerance = input.scf_etol;
  settings.density_tolerance = input.scf_ptol;
  settings.gradient_tolerance = input.scf_gtol;
  settings.diis = input.scf_converger == "DIIS";
  settings.diis_condition_max = input.scf_diis_cond_max;
  settings.level_shift_mode = input.level_shift_mode;
  settings.level_shift = input.level_shift;
  settings.damping = input.damping;
  settings.min_iterations = input.scf_min_iter;
  settings.n_converged = input.scf_n_converged;
  settings.occupation = input.occupation;
  settings.eri_memory_limit_mb = input.eri_memory_limit_mb;
  return settings;
}

SCF_RESULT_T run_scf(GEOMETRY_DATA_T& geometry, const std::vector<std::unique_ptr<FOCK_TERM_T>>& terms,
                     const SCF_SETTINGS_T& settings, const SCF_START_T& start, SCF_OBSERVER_T& observer) {
  const STAGE_TIMER timer(STAGE::scf);
  return LOOP_T(geometry, terms, settings, observer).run(start);
}

}  // namespace zentrix::SCF

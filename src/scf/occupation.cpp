#include "scf/occupation.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace zentrix::SCF {
namespace {

using INPUT_PARSER::OCCUPATION;

/// Orbitals this close in energy, hartree, are degenerate but for rounding.
constexpr double degenerate = 1e-8;
/// Weights of functions in degenerate orbitals that differ by less than this part are equal but for rounding.
constexpr double equal_weight = 1e-6;

/// A newly occupied orbital whose part inside the previous occupied space is shorter than this has come in by a swap.
constexpr double swap_overlap = 0.5;
/// A spin whose orbitals still swap after so many mixings is not helped by another: the run would go in circles.
constexpr int most_mixings = 3;

void fill_lowest(SPIN_CHANNEL_T& channel) { channel.occupations = VECTOR::Ones(channel.n_occupied); }

/// Moves the columns `leading` (ascending) to the front and keeps the order of the others.
void bring_forward(const std::vector<Eigen::Index>& leading, SPIN_CHANNEL_T& channel) {
  std::vector<Eigen::Index> order = leading;
  for (Eigen::Index j = 0; j < channel.energies.size(); ++j)
    if (!std::binary_search(leading.begin(), leading.end(), j)) order.push_back(j);
  channel.orbitals = MATRIX(channel.orbitals(Eigen::all, order));
  channel.energies = VECTOR(channel.energies(order));
}

/// HOMO and LUMO become (HOMO + LUMO)/sqrt 2 and (LUMO - HOMO)/sqrt 2.
bool mix_frontier(SPIN_CHANNEL_T& channel) {
  const Eigen::Index lumo = channel.n_occupied;
  if (lumo == 0 || lumo >= channel.orbitals.cols()) return false;
  const VECTOR occupied = channel.orbitals.col(lumo - 1);
  const VECTOR empty = channel.orbitals.col(lumo);
  channel.orbitals.col(lumo - 1) = std::sqrt(0.5) * (occupied + empty);
  channel.orbitals.col(lumo) = std::sqrt(0.5) * (empty - occupied);
  return true;
}

/// The function that weighs most in the columns from `first` on; of equal ones the last, or the first.
Eigen::Index heaviest_function(const MATRIX& orbitals, Eigen::Index first, Eigen::Index count, bool take_last) {
  const VECTOR weights = orbitals.middleCols(first, count).rowwise().squaredNorm();
  const double enough = (1.0 - equal_weight) * weights.maxCoeff();
  Eigen::Index function = take_last ? weights.size() - 1 : 0;
  while (weights(function) < enough) function += take_last ? -1 : 1;
  return function;
}

/// Turns degenerate orbitals among themselves so that the first has all the weight of the function that weighs most in
/// them, the second that of the next one, and so on; those coefficients become positive.
void turn_to_functions(Eigen::Index first, Eigen::Index count, bool take_last, MATRIX& orbitals) {
  for (Eigen::Index left = count; left > 0; --left, ++first) {
    auto columns = orbitals.middleCols(first, left);
    const Eigen::Index function = heaviest_function(orbitals, first, left, take_last);
    // The mirror image that takes the function's row to (norm, 0, 0, ...).
    VECTOR mirror = columns.row(function);
    mirror(0) += std::copysign(mirror.norm(), mirror(0));
    mirror.normalize();
    const VECTOR along = columns * mirror;
    columns -= 2.0 * along * mirror.transpose();
    if (columns(function, 0) < 0.0) columns.col(0) *= -1.0;
  }
}

/// Columns [first, end) of the orbitals that are degenerate with the last occupied and the first empty one; none when these
/// two differ.
struct DEGENERATE_SHELL_T {
  Eigen::Index first = 0;
  Eigen::Index end = 0;
  Eigen::Index size() const { return end - first; }
};
DEGENERATE_SHELL_T open_shell_of(const SPIN_CHANNEL_T& channel) {
  const Eigen::Index lumo = channel.n_occupied;
  const VECTOR& e = channel.energies;
  if (lumo == 0 || lumo >= e.size() || e(lumo) - e(lumo - 1) > degenerate) return {};
  DEGENERATE_SHELL_T shell{lumo - 1, lumo + 1};
  while (shell.first > 0 && e(shell.first) - e(shell.first - 1) < degenerate) --shell.first;
  while (shell.end < e.size() && e(shell.end) - e(shell.end - 1) < degenerate) ++shell.end;
  return shell;
}

/// Where the last occupied and the first empty orbital are degenerate, rounding would choose the orbitals that are filled,
/// and the result would depend on the number of threads. The energy on a grid depends a little (1e-6 hartree) on how the
/// open shell of an atom lies in it: an arbitrary direction is not stationary, and the way to a stationary one is so flat
/// that runs do not reach it. So orbitals are turned to the axes, where the functions lie, and the first of them is filled.
/// True: there was such a shell.
bool align_open_shell(bool take_last, SPIN_CHANNEL_T& channel) {
  const DEGENERATE_SHELL_T shell = open_shell_of(channel);
  if (shell.size() == 0) return false;
  turn_to_functions(shell.first, shell.size(), take_last, channel.orbitals);
  return true;
}

/// Fills a degenerate open shell evenly, so that the density has the symmetry of the nuclei. True: there was such a shell.
bool spread_over_open_shell(SPIN_CHANNEL_T& channel) {
  const DEGENERATE_SHELL_T shell = open_shell_of(channel);
  if (shell.size() == 0) return false;
  const auto electrons = static_cast<double>(channel.n_occupied - shell.first);
  channel.n_occupied = static_cast<int>(shell.end);
  channel.occupations = VECTOR::Ones(shell.end);
  channel.occupations.tail(shell.size()).setConstant(electrons / static_cast<double>(shell.size()));
  return true;
}

class LOWEST_T : public OCCUPATION_RULE_T {
 public:
  explicit LOWEST_T(int pairs) : pairs_(pairs) {}

  /// A pair of electrons in two degenerate orbitals takes both alike: two equal atoms far apart must not become ions. In the
  /// guess, whose order of orbitals means little, the whole shell is filled evenly: a choice among its orbitals would break
  /// a symmetry that the run may never find back to.
  bool occupy(int iteration, std::size_t /*spin*/, SPIN_CHANNEL_T& channel) override {
    channel.n_occupied = pairs_;
    if (iteration == 0 && spread_over_open_shell(channel)) return false;
    if (align_open_shell(true, channel)) mix_frontier(channel);
    fill_lowest(channel);
    return false;
  }

 private:
  int pairs_;
};

/// Unrestricted runs: lowest orbitals or those that overlap most with the previous occupied ones (A. T. B. Gilbert, N. A.
/// Besley, P. M. W. Gill, J. Phys. Chem. A 112 (2008) 13164), by the user's setting.
class CONTROLLED_T : public OCCUPATION_RULE_T {
 public:
  /// `followed`: densities whose orbitals are followed from the start; may be empty.
  CONTROLLED_T(OCCUPATION mode, std::array<int, 2> electrons, bool mix_start, int first_reference,
               const SPIN_MATRICES_T& followed, const MATRIX& overlap, SCF_OBSERVER_T& observer)
      : mode_(mode),
        electrons_(electrons),
        mix_start_(mix_start),
        first_reference_{first_reference, first_reference},
        overlap_(overlap),
        observer_(observer) {
    for (std::size_t spin = 0; spin < followed.size(); ++spin) space_[spin] = overlap * followed[spin] * overlap;
  }

  bool occupy(int iteration, std::size_t spin, SPIN_CHANNEL_T& channel) override {
    channel.n_occupied = electrons_[spin];
    // As in a restricted run: a choice in the guess breaks a symmetry that a level shift never gives back.
    if (iteration == 0 && spread_over_open_shell(channel)) return false;
    bool restart = false;
    // The spins start from opposite ends: in a singlet with two degenerate orbitals each gets its own, the lower state.
    const bool aligned = align_open_shell(spin == 0, channel);
    if (space_[spin].size() > 0 && channel.n_occupied > 0) {
      const bool follow = mode_ == OCCUPATION::mom || (mode_ == OCCUPATION::automatic && iteration <= MOM_ITERATIONS);
      const MATRIX& c = channel.orbitals;
      const VECTOR projection = c.cwiseProduct(space_[spin] * c).colwise().sum().cwiseMax(0.0).cwiseSqrt();
      if (follow) {
        follow_overlap(projection, spin, channel);
      } else {
        restart = check_swap(projection, spin, channel);
        if (restart) first_reference_[spin] = iteration + MOM_ITERATIONS;
      }
    }
    if (mix_start_ && !aligned && iteration == 1 && spin == 1 && mix_frontier(channel)) {
      observer_.starting_orbitals_mixed();
      restart = true;  // the entry of the symmetric guess, whose error may be zero, would bring the symmetry back
    }
    fill_lowest(channel);
    if (iteration < first_reference_[spin]) {
      space_[spin].resize(0, 0);
    } else {
      const MATRIX occupied = overlap_ * channel.orbitals.leftCols(channel.n_occupied);
      space_[spin] = occupied * occupied.transpose();
    }
    return restart;
  }

 private:
  void follow_overlap(const VECTOR& projection, std::size_t spin, SPIN_CHANNEL_T& channel) {
    std::vector<Eigen::Index> order(static_cast<std::size_t>(projection.size()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](Eigen::Index i, Eigen::Index j) { return projection(i) > projection(j); });
    order.resize(static_cast<std::size_t>(channel.n_occupied));
    std::sort(order.begin(), order.end());
    const auto moved = std::count_if(order.begin(), order.end(), [&](Eigen::Index j) { return j >= channel.n_occupied; });
    if (moved == 0) return;
    observer_.overlap_reordered(static_cast<int>(moved), spin);
    bring_forward(order, channel);
  }

  bool check_swap(const VECTOR& projection, std::size_t spin, SPIN_CHANNEL_T& channel) {
    const double smallest = projection.head(channel.n_occupied).minCoeff();
    if (smallest >= swap_overlap) return false;
    if (mode_ != OCCUPATION::mix || mixings_[spin] == most_mixings) {
      observer_.swap_followed(spin, smallest);
      return false;
    }
    if (!mix_frontier(channel)) return false;
    ++mixings_[spin];
    observer_.swap_mixed();
    return true;
  }

  OCCUPATION mode_;
  std::array<int, 2> electrons_;
  bool mix_start_;
  std::array<int, 2> first_reference_;  ///< the first iteration whose orbitals are worth following
  const MATRIX& overlap_;
  SCF_OBSERVER_T& observer_;
  std::array<int, 2> mixings_ = {};  ///< at swaps
  std::array<MATRIX, 2> space_;      ///< S D S of each spin, D of the occupied orbitals to be followed
};

/// An atom in spherical functions: every angular momentum fills its own shells, all 2l + 1 components alike, so that the
/// density stays spherical.
class ATOMIC_T : public OCCUPATION_RULE_T {
 public:
  ATOMIC_T(const MOLECULE_T& molecule, const std::vector<SHELL_FILLING_T>& filling) : filling_(filling) {
    for (const SHELL_T& shell : molecule.shells)
      momentum_.insert(momentum_.end(), static_cast<std::size_t>(shell.nfunc), shell.l);
  }

  bool occupy(int /*iteration*/, std::size_t spin, SPIN_CHANNEL_T& channel) override {
    std::vector<Eigen::Index> leading;
    std::vector<double> fractions;
    std::vector<int> seen(filling_[spin].size(), 0);
    for (Eigen::Index j = 0; j < channel.orbitals.cols(); ++j) {
      const auto l = static_cast<std::size_t>(momentum_of(channel.orbitals.col(j)));
      if (l >= filling_[spin].size()) continue;
      const auto shell = static_cast<std::size_t>(seen[l]++) / (2 * l + 1);
      if (shell >= filling_[spin][l].size()) continue;
      leading.push_back(j);
      fractions.push_back(filling_[spin][l][shell]);
    }
    bring_forward(leading, channel);
    channel.n_occupied = static_cast<int>(leading.size());
    channel.occupations = Eigen::Map<const VECTOR>(fractions.data(), static_cast<Eigen::Index>(fractions.size()));
    return false;
  }

 private:
  /// Angular momentum that carries most of an orbital.
  int momentum_of(const VECTOR& orbital) const {
    std::array<double, 8> weight = {};
    for (Eigen::Index i = 0; i < orbital.size(); ++i)
      weight[static_cast<std::size_t>(momentum_[static_cast<std::size_t>(i)])] += orbital(i) * orbital(i);
    return static_cast<int>(std::max_element(weight.begin(), weight.end()) - weight.begin());
  }

  const std::vector<SHELL_FILLING_T>& filling_;
  std::vector<int> momentum_;  ///< of every basis function
};

}  // namespace

bool starts_mixed(const MOLECULE_T& molecule, const SCF_SETTINGS_T& settings, const SCF_START_T& start) {
  return molecule.unrestricted && settings.occupation == OCCUPATION::mix && molecule.n_alpha == molecule.n_beta &&
         !start.from_converged_run;
}

std::unique_ptr<OCCUPATION_RULE_T> make_occupation_rule(const MOLECULE_T& molecule, const SCF_SETTINGS_T& settings,
                                                        const SCF_START_T& start, const MATRIX& overlap,
                                                        SCF_OBSERVER_T& observer) {
  if (!settings.atomic_filling.empty()) return std::make_unique<ATOMIC_T>(molecule, settings.atomic_filling);
  if (!molecule.unrestricted) return std::make_unique<LOWEST_T>(molecule.n_alpha);
  // The orbitals of a guess and of its first Fock matrix may be ordered wrongly: holding on to them would lead to an excited
  // state; what becomes of mixed ones takes some iterations to show. Those of a finished run are to be followed from the
  // start.
  const bool mixed = starts_mixed(molecule, settings, start);
  const int first_reference = start.from_converged_run ? 1 : mixed ? 1 + MOM_ITERATIONS : 2;
  const bool follow = settings.occupation == OCCUPATION::mom && start.from_converged_run;
  return std::make_unique<CONTROLLED_T>(settings.occupation, std::array{molecule.n_alpha, molecule.n_beta}, mixed,
                                        first_reference, follow ? start.densities : SPIN_MATRICES_T{}, overlap, observer);
}

}  // namespace zentrix::SCF

#include "scf/guess.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "molecule/cartesian.hpp"
#include "molecule/molecule.hpp"
#include "report/stop.hpp"
#include "scf/atomic_states.hpp"
#include "scf/scf_observer.hpp"

namespace zentrix::SCF {
namespace {

using INPUT_PARSER::GUESS;

/// Indices into MOLECULE_T::shells of the shells of one atom.
std::vector<std::size_t> shells_of(const MOLECULE_T& molecule, std::size_t atom) {
  std::vector<std::size_t> shells;
  for (std::size_t s = 0; s < molecule.shells.size(); ++s)
    if (molecule.shells[s].atom == static_cast<int>(atom)) shells.push_back(s);
  return shells;
}

bool same_shells(const MOLECULE_T& molecule, std::size_t first, std::size_t second) {
  const std::vector<std::size_t> a = shells_of(molecule, first);
  const std::vector<std::size_t> b = shells_of(molecule, second);
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const SHELL_T& one = molecule.shells[a[i]];
    const SHELL_T& other = molecule.shells[b[i]];
    if (one.l != other.l || one.alpha != other.alpha || one.coeff != other.coeff) return false;
  }
  return true;
}

/// The atom by itself, in spherical functions so that every orbital has one angular momentum.
MOLECULE_T isolated_atom(const MOLECULE_T& molecule, std::size_t atom, const ATOMIC_STATE_T& state) {
  MOLECULE_T alone;
  alone.atoms = {molecule.atoms[atom]};
  for (const std::size_t s : shells_of(molecule, atom)) {
    alone.shells.push_back(molecule.shells[s]);
    alone.shells.back().atom = 0;
  }
  for (const ECP_T& ecp : molecule.ecps) {
    if (ecp.atom != static_cast<int>(atom)) continue;
    alone.ecps.push_back(ecp);
    alone.ecps.back().atom = 0;
  }
  alone.spherical = true;
  alone.unrestricted = true;
  alone.n_alpha = state.n_alpha;
  alone.n_beta = state.n_beta;
  alone.n_electrons = state.n_alpha + state.n_beta;
  alone.multiplicity = state.multiplicity();
  count_basis_functions(alone);
  return alone;
}

/// Whether the basis has a shell for everything that is occupied.
bool basis_holds(const MOLECULE_T& atom, const ATOMIC_STATE_T& state) {
  for (std::size_t l = 0; l < state.filling[0].size(); ++l) {
    const auto available = std::count_if(atom.shells.begin(), atom.shells.end(),
                                         [&](const SHELL_T& shell) { return shell.l == static_cast<int>(l); });
    if (available < static_cast<std::ptrdiff_t>(state.filling[0][l].size())) return false;
  }
  return true;
}

/// From the atom's spherical functions to the functions of the run.
MATRIX to_run_functions(const MOLECULE_T& atom, const MATRIX& density, bool spherical) {
  if (spherical) return density;
  MATRIX cartesian = to_cartesian(atom, density);
  VECTOR scale(cartesian.rows());
  Eigen::Index i = 0;
  for (const SHELL_T& shell : atom.shells)
    for (Eigen::Index c = 0; c < shell_functions(shell.l, false).rows(); ++c)
      scale(i++) = shell_functions(shell.l, false)(c, c);
  return scale.cwiseInverse().asDiagonal() * cartesian * scale.cwiseInverse().asDiagonal();
}

int core_electrons(const MOLECULE_T& molecule, std::size_t atom) {
  for (const ECP_T& ecp : molecule.ecps)
    if (ecp.atom == static_cast<int>(atom)) return ecp.n_core;
  return 0;
}

/// Alpha and beta density of one atom in the functions of the run; nothing when the atom cannot be computed.
std::optional<std::array<MATRIX, 2>> atomic_densities(const MOLECULE_T& molecule, std::size_t atom, int memory_limit_mb,
                                                      GUESS_OBSERVER_T& observer) {
  const int z = molecule.atoms[atom].z;
  const int n_core = core_electrons(molecule, atom);
  const ATOMIC_STATE_T state = atomic_ground_state(z, n_core);
  const MOLECULE_T alone = isolated_atom(molecule, atom, state);
  observer.atom_starts({z, alone.n_electrons, state.n_alpha, state.n_beta, alone.multiplicity, n_core});
  if (alone.n_electrons != z - n_core || !basis_holds(alone, state)) return std::nullopt;

  SCF_SETTINGS_T settings;
  settings.energy_tolerance = 1e-7;
  settings.density_tolerance = 1e-5;
  settings.max_iterations = 50;
  settings.eri_memory_limit_mb = memory_limit_mb;
  settings.atomic_filling.assign(state.filling.begin(), state.filling.end());
  GEOMETRY_DATA_T geometry(alone, INTEGRALS_1E::one_electron_matrices(alone));
  SCF_OBSERVER_T silent;
  SCF_RESULT_T result;
  try {
    result = run_scf(geometry, hartree_fock_terms(geometry), settings, {}, silent);
  } catch (const run_stopped&) {  // a guess never stops a run
    return std::nullopt;
  }
  if (!result.converged) observer.atom_not_converged(z);
  std::array<MATRIX, 2> densities;
  for (std::size_t s = 0; s < 2; ++s) {
    if (!result.channels[s].density.allFinite()) return std::nullopt;
    densities[s] = to_run_functions(alone, result.channels[s].density, molecule.spherical);
  }
  return densities;
}

/// Adds an atom's block, shell by shell, to the matrix of the molecule.
void place(const MOLECULE_T& molecule, std::size_t atom, const MATRIX& block, MATRIX& whole) {
  std::vector<Eigen::Index> functions;
  for (const std::size_t s : shells_of(molecule, atom))
    for (int i = 0; i < molecule.shells[s].nfunc; ++i) functions.push_back(molecule.shells[s].first + i);
  whole(functions, functions) += block;
}

/// Scales a spin density to the electron count; one without electrons takes the shape of the other first.
double rescale(int electrons, const MATRIX& other, const MATRIX& overlap, MATRIX& density) {
  double trace = density.cwiseProduct(overlap).sum();
  if (trace <= 0.0 && electrons > 0) {
    density = other;
    trace = density.cwiseProduct(overlap).sum();
  }
  const double factor = trace > 0.0 ? electrons / trace : 0.0;
  density *= factor;
  return factor;
}

}  // namespace

bool superposition_of_atoms(const MOLECULE_T& molecule, const MATRIX& overlap, int memory_limit_mb, MATRIX& alpha,
                            MATRIX& beta, GUESS_OBSERVER_T& observer) {
  alpha = MATRIX::Zero(molecule.n_basis, molecule.n_basis);
  beta = alpha;
  std::map<int, std::size_t> first_of;  // element -> its first real atom
  std::map<int, std::array<MATRIX, 2>> densities;
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    if (molecule.atoms[a].ghost) continue;
    const int z = molecule.atoms[a].z;
    const auto [known, is_new] = first_of.emplace(z, a);
    if (is_new) {
      const auto atomic = atomic_densities(molecule, a, memory_limit_mb, observer);
      if (!atomic) {
        observer.atom_failed(z);
        return false;
      }
      densities[z] = *atomic;
    } else if (!same_shells(molecule, known->second, a)) {
      observer.shell_mismatch(z);
      return false;
    }
    place(molecule, a, densities[z][0], alpha);
    place(molecule, a, densities[z][1], beta);
  }
  const MATRIX whole_alpha = alpha;
  const double alpha_factor = rescale(molecule.n_alpha, beta, overlap, alpha);
  const double beta_factor = rescale(molecule.n_beta, whole_alpha, overlap, beta);
  observer.assembled(alpha_factor, beta_factor);
  return true;
}

SCF_START_T initial_guess(const MOLECULE_T& molecule, const MATRIX& overlap, GUESS wish, int memory_limit_mb,
                          GUESS_OBSERVER_T& observer) {
  SCF_START_T start;
  const bool sad = wish == GUESS::sad || (wish == GUESS::automatic && molecule.unrestricted);
  if (!sad) return start;
  observer.building_sad();
  MATRIX alpha;
  MATRIX beta;
  if (!superposition_of_atoms(molecule, overlap, memory_limit_mb, alpha, beta, observer)) {
    observer.sad_unavailable();
    return start;
  }
  start.guess_name = "SAD (Superposition of Atomic Densities)";
  if (molecule.unrestricted) {
    start.densities = {std::move(alpha), std::move(beta)};
  } else {
    start.densities = {alpha + beta};
  }
  return start;
}

}  // namespace zentrix::SCF

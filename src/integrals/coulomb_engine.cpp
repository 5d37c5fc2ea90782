#include "integrals/coulomb_engine.hpp"

#include "integrals/coulomb_walk.hpp"
#include "molecule/cartesian.hpp"
#include "molecule/shell_validation.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// Many neglected interactions add up in one element of J, so single ones are held to this share of the threshold. The sum
/// is then at most some forty thresholds (caffeine, C20H42; docs/methods-coulomb.md).
constexpr double NEGLECT_SHARE = 0.2;

}  // namespace

struct COULOMB_ENGINE::IMPLEMENTATION {
  HERMITE_PAIRS_T pairs;
  Eigen::Index n_components = 0;
  kernels::ISA isa = kernels::chosen_isa();
};

COULOMB_ENGINE::COULOMB_ENGINE(const MOLECULE_T& molecule) : implementation_(std::make_unique<IMPLEMENTATION>()) {
  for (const SHELL_T& shell : molecule.shells) validate_shell("coulomb_engine", shell);
  implementation_->pairs = make_hermite_pairs(molecule);
  implementation_->n_components = cartesian_offsets(molecule).back();
}

COULOMB_ENGINE::~COULOMB_ENGINE() = default;
COULOMB_ENGINE::COULOMB_ENGINE(COULOMB_ENGINE&&) noexcept = default;
COULOMB_ENGINE& COULOMB_ENGINE::operator=(COULOMB_ENGINE&&) noexcept = default;

std::vector<MATRIX> COULOMB_ENGINE::build(std::span<const MATRIX> densities, double threshold) const {
  const HERMITE_PAIRS_T& pairs = implementation_->pairs;
  const int n_densities = static_cast<int>(densities.size());
  if (n_densities == 0) return {};

  ALIGNED_VECTOR hermite(n_densities * pairs.size);
  std::vector<double> norms(pairs.pairs.size(), 0.0);
  for (int d = 0; d < n_densities; ++d) fold_density(pairs, densities[d], hermite.data() + d * pairs.size, norms);

  const COULOMB_KEYS_T keys = make_keys(pairs, norms, NEGLECT_SHARE * threshold);
  const ALIGNED_VECTOR potential = hermite_potential(pairs, hermite, keys, n_densities, implementation_->isa);
  std::vector<MATRIX> result;
  result.reserve(densities.size());
  for (int d = 0; d < n_densities; ++d)
    result.push_back(unfold_potential(pairs, potential.data() + d * pairs.size, implementation_->n_components));
  return result;
}

}  // namespace zentrix::INTEGRALS_2E

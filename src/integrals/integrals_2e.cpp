#include "integrals/integrals_2e.hpp"

#include <omp.h>

#include <algorithm>

#include "integrals/coulomb_engine.hpp"
#include "integrals/eri_store.hpp"
#include "integrals/integral_panels.hpp"
#include "molecule/cartesian.hpp"

namespace zentrix::INTEGRALS_2E {

namespace {

/// What the way between the run's functions and bare components needs of a molecule.
MOLECULE_T without_atoms(const MOLECULE_T& molecule) {
  MOLECULE_T copy;
  copy.shells = molecule.shells;
  copy.n_basis = molecule.n_basis;
  copy.n_cartesian = molecule.n_cartesian;
  copy.n_spherical = molecule.n_spherical;
  copy.spherical = molecule.spherical;
  return copy;
}

double largest_element(std::span<const MATRIX> matrices) {
  double largest = 0.0;
  for (const MATRIX& matrix : matrices) largest = std::max(largest, matrix.cwiseAbs().maxCoeff());
  return largest;
}

}  // namespace

struct JK_BUILDER::IMPLEMENTATION {
  MOLECULE_T functions;  ///< shells alone
  KERNEL_CHOICE_T kernels;
  SHELL_PAIRS_T pairs;
  SHELL_PAIRS_T merged_pairs;  ///< for direct exchange; without lists when there is nothing to merge
  COULOMB_ENGINE coulomb;
  std::unique_ptr<ERI_STORE_T> store;

  explicit IMPLEMENTATION(const MOLECULE_T& molecule)
      : functions(without_atoms(molecule)),
        kernels(choose_kernels(kernels::chosen_isa())),
        pairs(make_shell_pairs(molecule, *kernels.table, kernels.lanes)),
        merged_pairs(merge_shells(pairs)),
        coulomb(molecule) {}

  std::vector<MATRIX> cartesian(std::span<const MATRIX> densities) const {
    std::vector<MATRIX> result;
    for (const MATRIX& density : densities) result.push_back(to_cartesian(functions, density));
    return result;
  }
};

JK_BUILDER::JK_BUILDER(const MOLECULE_T& molecule) : implementation_(std::make_unique<IMPLEMENTATION>(molecule)) {}
JK_BUILDER::~JK_BUILDER() = default;
JK_BUILDER::JK_BUILDER(JK_BUILDER&&) noexcept = default;
JK_BUILDER& JK_BUILDER::operator=(JK_BUILDER&&) noexcept = default;

JK_MODE_T JK_BUILDER::decide_mode(int limit_mb) const {
  const STORE_SIZE_T size = count_integrals(implementation_->pairs, STORE_THRESHOLD);
  JK_MODE_T mode;
  mode.quartets = size.quartets;
  mode.integrals = size.integrals;
  mode.limit_mb = limit_mb;
  mode.threads = omp_get_max_threads();
  mode.conventional = store_fits(mode.integrals, limit_mb);
  return mode;
}

void JK_BUILDER::fill_store() {
  auto store = std::make_unique<ERI_STORE_T>(implementation_->pairs, implementation_->kernels, STORE_THRESHOLD);
  store->fill(implementation_->pairs, implementation_->kernels);
  implementation_->store = std::move(store);
}

void JK_BUILDER::drop_store() { implementation_->store.reset(); }

bool JK_BUILDER::has_store() const { return implementation_->store != nullptr; }

std::int64_t JK_BUILDER::store_bytes() const { return has_store() ? implementation_->store->bytes() : 0; }

JK_RESULT_T JK_BUILDER::build(std::span<const MATRIX> for_j, std::span<const MATRIX> for_k, double threshold) const {
  const IMPLEMENTATION& engine = *implementation_;
  JK_RESULT_T result;
  if (engine.store && std::max(largest_element(for_j), largest_element(for_k)) <= LARGEST_STORED_DENSITY) {
    engine.store->contract(engine.pairs, engine.kernels, engine.cartesian(for_j), engine.cartesian(for_k), result.j,
                           result.k);
  } else {
    if (!for_j.empty()) result.j = engine.coulomb.build(engine.cartesian(for_j), threshold);
    const std::vector<MATRIX> k_densities = engine.cartesian(for_k);
    std::vector<const MATRIX*> pointers;
    pointers.reserve(k_densities.size());
    for (const MATRIX& density : k_densities) pointers.push_back(&density);
    const SHELL_PAIRS_T& pairs = engine.merged_pairs.lists.empty() ? engine.pairs : engine.merged_pairs;
    result.k = exchange_direct(pairs, engine.kernels, pointers, threshold);
  }
  for (MATRIX& matrix : result.j) matrix = to_functions(engine.functions, matrix);
  for (MATRIX& matrix : result.k) matrix = to_functions(engine.functions, matrix);
  return result;
}

ERI_PANELS JK_BUILDER::integral_panels(double largest_coefficient) const {
  constexpr double harmless = 30.0,
                   lowest = 1e-15;  // pairs that could only matter below the latter are dropped from the start
  const IMPLEMENTATION& engine = *implementation_;
  const double excess = std::max(1.0, largest_coefficient / harmless);
  const double threshold = std::max(lowest, STORE_THRESHOLD / (excess * excess));
  return {engine.functions, engine.pairs, engine.kernels, excess > 1.0 ? nullptr : engine.store.get(), threshold};
}

const MATRIX& JK_BUILDER::schwarz() const { return implementation_->pairs.schwarz; }

}  // namespace zentrix::INTEGRALS_2E

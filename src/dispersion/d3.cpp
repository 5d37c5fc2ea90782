#include "dispersion/d3.hpp"

#include <map>
#include <utility>

#include "report/stop.hpp"
#include "simd/aligned_vector.hpp"

namespace zentrix::DISPERSION {
namespace {

constexpr double displacement = 5e-5;  // bohr
/// Below this many atoms a parallel region costs more than it saves.
constexpr std::size_t worth_threads = 40;
constexpr std::size_t block_size = static_cast<std::size_t>(D3_MAX_REFERENCES) * D3_MAX_REFERENCES;
static_assert(D3_MAX_REFERENCES == kernels::D3_SLOTS);

kernels::D3_KERNELS_T chosen_kernels() { return ZX_PICK(kernels::chosen_isa(), d3_kernels)(); }

}  // namespace

/// The arrays of one geometry behind the kernels' view of them.
struct D3_T::WORK_T {
  ALIGNED_VECTOR memory;
  kernels::D3_SYSTEM_T system;
  double* x[3];
};

D3_T::D3_T(const D3_PARAMETERS_T& parameters, const D3_DATA_T& data, const std::vector<int>& atomic_numbers)
    : parameters_(parameters), kernels_(chosen_kernels()), n_atoms_(atomic_numbers.size()) {
  if (data.n_entries() == 0) throw run_stopped(" *** ERROR: D3 reference database not loaded");
  sort_atoms(data, atomic_numbers);
  copy_references(data);
}

void D3_T::sort_atoms(const D3_DATA_T& data, const std::vector<int>& atomic_numbers) {
  std::map<int, std::vector<std::size_t>> atoms_of;
  for (std::size_t a = 0; a < n_atoms_; ++a) {
    const int z = atomic_numbers[a];
    atoms_of[z >= 1 && z <= D3_MAX_Z ? z : 0].push_back(a);
  }
  place_of_.resize(n_atoms_);
  for (const auto& [z, atoms] : atoms_of) {
    const D3_ELEMENT_T& element = data.element(z);  // element 0 has no data
    kernels::D3_GROUP_T group;
    group.first = group_of_.size();
    group.radius = 4.0 / 3.0 * element.radius;
    group.q = element.q;
    group.n_references = element.n_references;
    for (int i = 0; i < D3_MAX_REFERENCES; ++i) group.reference_cn[i] = element.reference_cn[static_cast<std::size_t>(i)];
    for (const std::size_t a : atoms) {
      place_of_[a] = group_of_.size();
      occupied_.push_back(group_of_.size());
      group_of_.push_back(static_cast<int>(groups_.size()));
    }
    while (group_of_.size() % kernels::MAX_LANES != 0) group_of_.push_back(static_cast<int>(groups_.size()));
    group.end = group_of_.size();
    groups_.push_back(group);
    elements_.push_back(z);
  }
}

void D3_T::copy_references(const D3_DATA_T& data) {
  c6_.reserve(elements_.size() * elements_.size() * block_size);
  for (const int a : elements_)
    for (const int b : elements_)
      for (int i = 0; i < D3_MAX_REFERENCES; ++i)
        for (int j = 0; j < D3_MAX_REFERENCES; ++j) c6_.push_back(data.reference_c6(a, b, i, j));
}

void D3_T::place(const VECTOR& positions, WORK_T& work) const {
  const std::size_t n = group_of_.size();
  if (work.memory.empty()) {
    constexpr std::size_t arrays = 3 + 1 + 1 + D3_MAX_REFERENCES + 1 + 1 + 3;
    work.memory.assign(arrays * n, 0.0);
    double* next = work.memory.data();
    const auto take = [&next, n](std::size_t count = 1) { return std::exchange(next, next + count * n); };
    for (double*& axis : work.x) axis = take();
    double* presence = take();
    for (const std::size_t p : occupied_) presence[p] = 1.0;
    kernels::D3_SYSTEM_T& s = work.system;
    s = {n, static_cast<int>(groups_.size()), groups_.data(), group_of_.data(), c6_.data()};
    s.s6 = parameters_.s6, s.s8 = parameters_.s8, s.a1 = parameters_.a1, s.a2 = parameters_.a2;
    s.x = work.x[0], s.y = work.x[1], s.z = work.x[2];
    s.presence = presence;
    s.coordination = take();
    s.weight = take(D3_MAX_REFERENCES);
    s.energy = take();
    s.energy_by_cn = take();
    for (double*& axis : s.gradient) axis = take();
  }
  for (std::size_t a = 0; a < n_atoms_; ++a)
    for (std::size_t k = 0; k < 3; ++k) work.x[k][place_of_[a]] = positions(static_cast<Eigen::Index>(3 * a + k));
}

/// The phases need all results of the one before: coordination numbers, weights, pairs, and the chain rule back.
void D3_T::evaluate(WORK_T& work, bool with_gradient) const {
  const kernels::D3_SYSTEM_T& system = work.system;
  const std::size_t n = occupied_.size();
#pragma omp parallel if (n >= worth_threads)
  {
#pragma omp for schedule(static)
    for (std::size_t i = 0; i < n; ++i) kernels_.coordination(system, occupied_[i]);
#pragma omp for schedule(static)
    for (int g = 0; g < system.n_groups; ++g) kernels_.weights(system, g);
#pragma omp for schedule(static)
    for (std::size_t i = 0; i < n; ++i) kernels_.pairs(system, occupied_[i]);
    if (with_gradient) {
#pragma omp for schedule(static)
      for (std::size_t i = 0; i < n; ++i) kernels_.coordination_gradient(system, occupied_[i]);
    }
  }
}

/// In the order of the places: the same digits for every number of threads.
double D3_T::total_energy(const WORK_T& work) const {
  double energy = 0.0;
  for (const std::size_t p : occupied_) energy += work.system.energy[p];
  return energy;
}

double D3_T::energy(const VECTOR& positions) const {
  WORK_T work;
  place(positions, work);
  evaluate(work, false);
  return total_energy(work);
}

double D3_T::energy_and_gradient(const VECTOR& positions, VECTOR& gradient) const {
  WORK_T work;
  place(positions, work);
  evaluate(work, true);
  gradient.resize(static_cast<Eigen::Index>(3 * n_atoms_));
  for (std::size_t a = 0; a < n_atoms_; ++a)
    for (std::size_t k = 0; k < 3; ++k)
      gradient(static_cast<Eigen::Index>(3 * a + k)) = work.system.gradient[k][place_of_[a]];
  return total_energy(work);
}

MATRIX D3_T::hessian(const VECTOR& positions) const {
  MATRIX hessian(positions.size(), positions.size());
  VECTOR there = positions;
  VECTOR forward;
  VECTOR backward;
  for (Eigen::Index k = 0; k < positions.size(); ++k) {
    there(k) = positions(k) + displacement;
    energy_and_gradient(there, forward);
    there(k) = positions(k) - displacement;
    energy_and_gradient(there, backward);
    there(k) = positions(k);
    hessian.col(k) = (forward - backward) / (2.0 * displacement);
  }
  return 0.5 * (hessian + hessian.transpose());
}

VECTOR D3_T::coordination_numbers(const VECTOR& positions) const {
  WORK_T work;
  place(positions, work);
  evaluate(work, false);
  VECTOR numbers(static_cast<Eigen::Index>(n_atoms_));
  for (std::size_t a = 0; a < n_atoms_; ++a) numbers(static_cast<Eigen::Index>(a)) = work.system.coordination[place_of_[a]];
  return numbers;
}

}  // namespace zentrix::DISPERSION

#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "gradients/energy_surface.hpp"
#include "unit/geometry/samples.hpp"

namespace zentrix::TESTS {

inline MOLECULE_T bare_molecule(const STRUCTURE_T& structure) {
  MOLECULE_T molecule;
  for (const int z : structure.z) molecule.atoms.emplace_back().z = z;
  for (ATOM_T& atom : molecule.atoms) atom.symbol = element_symbol(atom.z);
  return GRADIENTS::moved(molecule, structure.x);
}

/// A sum of Morse functions of all distances, deep and stiff for near neighbours, shallow for others, with minima off the
/// distances of the reference structure: anharmonic, strained, and with an exact gradient.
class PAIR_SURFACE_T : public GRADIENTS::ENERGY_SURFACE_T {
 public:
  /// Starts at `start`; `reference` sets the distances.
  PAIR_SURFACE_T(const STRUCTURE_T& reference, const VECTOR& start) : molecule_(bare_molecule({reference.z, start})) {
    const auto n = static_cast<Eigen::Index>(reference.z.size());
    for (Eigen::Index i = 0; i < n; ++i) {
      for (Eigen::Index j = i + 1; j < n; ++j) {
        const double r = (reference.x.segment<3>(3 * i) - reference.x.segment<3>(3 * j)).norm();
        const double strain = 0.01 * std::sin(3.0 * static_cast<double>(i) + 7.0 * static_cast<double>(j));
        const double depth = r < 3.2 ? 0.15 : r < 5.0 ? 0.04 : 0.006;
        pairs_.push_back({i, j, r * (1.0 + strain), depth, r < 3.2 ? 1.1 : 0.7});
      }
    }
  }
  const MOLECULE_T& molecule() const override { return molecule_; }
  GRADIENTS::SURFACE_POINT_T energy(const VECTOR& x) override { return energy_and_gradient(x); }
  GRADIENTS::SURFACE_POINT_T energy_and_gradient(const VECTOR& x) override {
    ++evaluations;
    GRADIENTS::SURFACE_POINT_T point;
    point.converged = evaluations != failing_evaluation;
    point.gradient = VECTOR::Zero(x.size());
    for (const PAIR_T& p : pairs_) {
      const Eigen::Vector3d d = x.segment<3>(3 * p.i) - x.segment<3>(3 * p.j);
      const double r = d.norm();
      const double e = std::exp(-p.a * (r - p.r0));
      point.energy += p.depth * (1.0 - e) * (1.0 - e);
      const Eigen::Vector3d slope = 2.0 * p.depth * (1.0 - e) * p.a * e / r * d;
      point.gradient.segment<3>(3 * p.i) += slope;
      point.gradient.segment<3>(3 * p.j) -= slope;
    }
    return point;
  }

  int evaluations = 0;
  int failing_evaluation = 0;

 private:
  struct PAIR_T {
    Eigen::Index i, j;
    double r0, depth, a;
  };
  MOLECULE_T molecule_;
  std::vector<PAIR_T> pairs_;
};

}  // namespace zentrix::TESTS

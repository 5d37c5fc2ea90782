#pragma once

#include <string>

#include "gradients/energy_surface.hpp"

namespace zentrix::GRADIENTS {

/// A part of the energy that depends on the positions of the nuclei only, such as empirical dispersion. An energy surface
/// adds its terms to every energy and gradient, so that all jobs that move atoms have them.
class NUCLEAR_TERM_T {
 public:
  virtual ~NUCLEAR_TERM_T() = default;
  /// As the progress of a gradient names it ("D3 dispersion").
  virtual std::string name() const = 0;
  /// As the list of final energies names it ("Dispersion (D3)").
  virtual std::string energy_label() const = 0;
  /// `positions`: bohr. hartree.
  [[nodiscard]] virtual double energy(const CARTESIAN_T& positions) const = 0;
  /// The energy, with its gradient in hartree/bohr.
  [[nodiscard]] virtual double energy_and_gradient(const CARTESIAN_T& positions, CARTESIAN_T& gradient) const = 0;
  /// Second derivatives, 3N x 3N, hartree/bohr^2.
  [[nodiscard]] virtual MATRIX hessian(const CARTESIAN_T& positions) const = 0;
};

}  // namespace zentrix::GRADIENTS

#pragma once

#include <iosfwd>

#include "gradients/scf_surface.hpp"

namespace zentrix::GRADIENTS {

/// The surface of MP2 and UMP2 energies: that of Hartree-Fock with the correlation energy on top.
class MP2_SURFACE_T : public SCF_SURFACE_T {
 public:
  using SCF_SURFACE_T::SCF_SURFACE_T;
  SURFACE_POINT_T energy(const CARTESIAN_T& positions) override;
  /// Not available: stops the run.
  SURFACE_POINT_T energy_and_gradient(const CARTESIAN_T& positions) override;
};

}  // namespace zentrix::GRADIENTS

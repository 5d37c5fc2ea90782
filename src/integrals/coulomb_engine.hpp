#pragma once

#include <memory>
#include <span>
#include <vector>

#include "linalg/matrix.hpp"
#include "molecule/types.hpp"

namespace zentrix::INTEGRALS_2E {

/// Direct Coulomb builds by Hermite Gaussians (McMurchie, Davidson, J. Comput. Phys. 26 (1978) 218): the density is folded
/// into Hermite functions of primitive pairs, multiplied by R_(t+u), and unfolded once at the end. Works on families of
/// shells that share a centre and exponents; knows nothing of the exchange engine and screens for itself. Equal input and
/// equal thread count give bit-identical results. Stops the run when a shell is not sound.
///
/// A gradient takes the same pairs, lists and kernels with the bra order one higher: docs/methods-coulomb.md.
class COULOMB_ENGINE {
 public:
  explicit COULOMB_ENGINE(const MOLECULE_T& molecule);
  ~COULOMB_ENGINE();
  COULOMB_ENGINE(COULOMB_ENGINE&&) noexcept;
  COULOMB_ENGINE& operator=(COULOMB_ENGINE&&) noexcept;

  /// J of every density over bare Cartesian components (see molecule/cartesian.hpp); symmetric in, symmetric out.
  [[nodiscard]] std::vector<MATRIX> build(std::span<const MATRIX> densities, double threshold) const;

 private:
  struct IMPLEMENTATION;
  std::unique_ptr<IMPLEMENTATION> implementation_;
};

}  // namespace zentrix::INTEGRALS_2E

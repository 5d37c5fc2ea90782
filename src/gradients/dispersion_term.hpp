#pragma once

#include <string>
#include <utility>

#include "dispersion/d3.hpp"
#include "gradients/nuclear_term.hpp"

namespace zentrix::GRADIENTS {

/// The D3 correction as a term of an energy surface.
class D3_TERM_T : public NUCLEAR_TERM_T {
 public:
  explicit D3_TERM_T(DISPERSION::D3_T d3) : d3_(std::move(d3)) {}

  std::string name() const override { return "D3 dispersion"; }
  std::string energy_label() const override { return "Dispersion (D3)"; }
  double energy(const CARTESIAN_T& positions) const override { return d3_.energy(positions); }
  double energy_and_gradient(const CARTESIAN_T& positions, CARTESIAN_T& gradient) const override {
    return d3_.energy_and_gradient(positions, gradient);
  }
  MATRIX hessian(const CARTESIAN_T& positions) const override { return d3_.hessian(positions); }

 private:
  DISPERSION::D3_T d3_;
};

}  // namespace zentrix::GRADIENTS

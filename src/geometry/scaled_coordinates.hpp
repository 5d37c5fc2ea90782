#pragma once

#include "geometry/coordinate_system.hpp"

namespace zentrix::OPTIMIZER {

/// Another system's coordinates times the square roots of their weights, so that lengths of steps and overlaps of modes
/// count the six or nine dihedrals around one bond as the one motion that they are.
class SCALED_SYSTEM_T : public COORDINATE_SYSTEM_T {
 public:
  explicit SCALED_SYSTEM_T(COORDINATE_SYSTEM_T& system) : system_(system), scale_(system.weights().cwiseSqrt()) {}
  VECTOR values(const VECTOR& positions) const override { return system_.values(positions); }
  VECTOR difference(const VECTOR& a, const VECTOR& b) const override {
    return scale_.cwiseProduct(system_.difference(a, b));
  }
  MATRIX b_matrix(const VECTOR& positions) const override { return scale_.asDiagonal() * system_.b_matrix(positions); }
  bool curved() const override { return system_.curved(); }
  VECTOR displaced(const VECTOR& positions, const VECTOR& dq) const override {
    return system_.displaced(positions, unscaled_step(dq));
  }
  VECTOR weights() const override { return VECTOR::Ones(scale_.size()); }
  bool suits(const VECTOR& positions) const override { return system_.suits(positions); }
  bool remade_for(const VECTOR& positions) override {
    const bool remade = system_.remade_for(positions);
    if (remade) scale_ = system_.weights().cwiseSqrt();
    return remade;
  }
  /// What a step and a gradient in these coordinates are in those of the system.
  VECTOR unscaled_step(const VECTOR& dq) const { return dq.cwiseQuotient(scale_); }
  VECTOR unscaled_gradient(const VECTOR& gradient) const { return gradient.cwiseProduct(scale_); }

 private:
  COORDINATE_SYSTEM_T& system_;
  VECTOR scale_;
};

}  // namespace zentrix::OPTIMIZER

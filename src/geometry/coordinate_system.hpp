#pragma once

#include <memory>
#include <vector>

#include "geometry/internal_coords.hpp"
#include "input/input_data.hpp"
#include "linalg/matrix.hpp"

// The coordinates a minimiser works in. It sees values, their differences, B and the way back, and is one loop for redundant
// internal and for Cartesian coordinates.

namespace zentrix::OPTIMIZER {

/// A coordinate to be held.
struct HELD_T {
  Eigen::Index index = 0;
  double target = 0.0;
};

class COORDINATE_SYSTEM_T {
 public:
  virtual ~COORDINATE_SYSTEM_T() = default;
  virtual VECTOR values(const VECTOR& positions) const = 0;
  virtual VECTOR difference(const VECTOR& a, const VECTOR& b) const = 0;
  /// Derivatives of the values with respect to the positions, clear of rigid motions.
  virtual MATRIX b_matrix(const VECTOR& positions) const = 0;
  /// Whether the values have second derivatives.
  virtual bool curved() const { return true; }
  /// Positions after the coordinates have changed by dq.
  virtual VECTOR displaced(const VECTOR& positions, const VECTOR& dq) const = 0;
  /// What a change of a coordinate counts in the length of a step.
  virtual VECTOR weights() const = 0;
  virtual std::vector<HELD_T> held() const { return {}; }
  /// Whether the coordinates can describe the geometry: false where an angle became linear or ceased to be, or a
  /// centre planar.
  virtual bool suits(const VECTOR& /*positions*/) const { return true; }
  /// Makes the coordinates anew when the geometry has left their range; true when it did.
  virtual bool remade_for(const VECTOR&) { return false; }
};

/// Redundant internal coordinates, some of them frozen.
class INTERNAL_SYSTEM_T : public COORDINATE_SYSTEM_T {
 public:
  /// `set` as generated with `links`, with `constraints` applied to it; these carry their targets.
  INTERNAL_SYSTEM_T(std::vector<int> z, INTERNAL_COORDS::COORDINATE_SET_T set,
                    std::vector<INTERNAL_COORDS::CONSTRAINT_T> constraints,
                    INTERNAL_COORDS::FRAGMENT_LINKS links = INTERNAL_COORDS::FRAGMENT_LINKS::nearest);
  VECTOR values(const VECTOR& positions) const override;
  VECTOR difference(const VECTOR& a, const VECTOR& b) const override;
  MATRIX b_matrix(const VECTOR& positions) const override;
  VECTOR displaced(const VECTOR& positions, const VECTOR& dq) const override;
  /// Where an optimisation may start from.
  MATRIX model_hessian(const VECTOR& positions, INPUT_PARSER::MODEL_HESSIAN model) const;
  /// The dihedrals around one bond turn together, so they count as one.
  VECTOR weights() const override;
  std::vector<HELD_T> held() const override;
  bool suits(const VECTOR& positions) const override;
  bool remade_for(const VECTOR& positions) override;

 private:
  std::vector<int> z_;
  INTERNAL_COORDS::COORDINATE_SET_T set_;
  std::vector<INTERNAL_COORDS::CONSTRAINT_T> constraints_;
  INTERNAL_COORDS::FRAGMENT_LINKS links_;
};

/// Cartesian coordinates without translations and rotations.
class CARTESIAN_SYSTEM_T : public COORDINATE_SYSTEM_T {
 public:
  explicit CARTESIAN_SYSTEM_T(std::vector<int> z) : z_(std::move(z)) {}
  VECTOR values(const VECTOR& positions) const override { return positions; }
  VECTOR difference(const VECTOR& a, const VECTOR& b) const override { return a - b; }
  MATRIX b_matrix(const VECTOR& positions) const override;
  bool curved() const override { return false; }
  VECTOR displaced(const VECTOR& positions, const VECTOR& dq) const override { return positions + dq; }
  /// Where an optimisation may start from.
  MATRIX model_hessian(const VECTOR& positions, INPUT_PARSER::MODEL_HESSIAN model) const;
  VECTOR weights() const override { return VECTOR::Ones(3 * static_cast<Eigen::Index>(z_.size())); }

 private:
  std::vector<int> z_;
};

}  // namespace zentrix::OPTIMIZER

#pragma once

#include <chrono>
#include <iosfwd>

#include "gradients/energy_surface.hpp"
#include "input/input_data.hpp"

// The Cartesian Hessian by central differences of gradients.

namespace zentrix::HESSIAN {

/// Displacement of every coordinate to both sides, bohr.
inline constexpr double DIFFERENCE_STEP = 0.005;

struct NUMERICAL_HESSIAN_T {
  MATRIX hessian;       ///< 3N x 3N, hartree/bohr^2, symmetric
  double energy = 0.0;  ///< of the reference, hartree
  VECTOR gradient;      ///< of the reference, 3N, hartree/bohr
  int unconverged = 0;  ///< evaluations whose SCF did not converge; their gradients were used all the same
};

/// What the computation tells while it goes on; silent by itself.
class HESSIAN_OBSERVER_T {
 public:
  virtual ~HESSIAN_OBSERVER_T() = default;
  virtual void begins(int /*dimension*/) {}
  virtual void reference_begins() {}
  virtual void reference_ends(double /*energy*/) {}
  virtual void coordinate_done(int /*number*/, int /*dimension*/) {}
  virtual void complete() {}
};

/// The observer that writes the progress, every line at once.
class HESSIAN_PRINTER_T : public HESSIAN_OBSERVER_T {
 public:
  explicit HESSIAN_PRINTER_T(std::ostream& report) : report_(report) {}
  void begins(int dimension) override;
  void reference_begins() override;
  void reference_ends(double energy) override;
  void coordinate_done(int number, int dimension) override;
  void complete() override;

 private:
  std::ostream& report_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Gradients at +h and -h of all 3N coordinates around the geometry of the surface's molecule, with the start of the surface
/// held at the reference. The precise Boys mode holds for the whole computation.
NUMERICAL_HESSIAN_T numerical_hessian(GRADIENTS::ENERGY_SURFACE_T& surface, HESSIAN_OBSERVER_T& observer);

/// The settings with SCF tolerances that gradients to be differenced need: an error of the orbitals enters the Hessian
/// divided by 2 h. Tighter ones of the user stay. A run ends as soon as they are met.
INPUT_PARSER::INPUT_DATA_T settings_for_differences(const INPUT_PARSER::INPUT_DATA_T& input);

/// A warning when SCF runs behind a numerical Hessian of so many coordinates did not converge.
void print_unconverged(int unconverged, Eigen::Index dimension, std::ostream& report);
/// A note when the largest gradient component exceeds `limit` (hartree/bohr): frequencies belong to stationary points.
void print_stationarity(const VECTOR& gradient, double limit, std::ostream& report);

}  // namespace zentrix::HESSIAN

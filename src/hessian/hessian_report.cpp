#include <fmt/ostream.h>

#include "hessian/numerical_hessian.hpp"

namespace zentrix::HESSIAN {

void HESSIAN_PRINTER_T::begins(int dimension) {
  start_ = std::chrono::steady_clock::now();
  fmt::print(report_, "   Computing numerical Hessian (gradient FD)...\n");
  fmt::print(report_, "   Hessian dimension:      {}\n", dimension);
  fmt::print(report_, "   Gradient evaluations:   {}\n", 2 * dimension);
  fmt::print(report_, "   Displacement (bohr):    {}\n", DIFFERENCE_STEP);
}

void HESSIAN_PRINTER_T::reference_begins() {
  fmt::print(report_, "   Running reference SCF...\n");
  report_.flush();
}

void HESSIAN_PRINTER_T::reference_ends(double energy) {
  fmt::print(report_, "   Reference energy: {:20.10f}\n", energy);
  report_.flush();
}

void HESSIAN_PRINTER_T::coordinate_done(int number, int dimension) {
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
  fmt::print(report_, "     coord {}/{} done ({:.1f} s total)\n", number, dimension, elapsed.count());
  report_.flush();
}

void HESSIAN_PRINTER_T::complete() { fmt::print(report_, "     Numerical Hessian complete.\n"); }

void print_unconverged(int unconverged, Eigen::Index dimension, std::ostream& report) {
  if (unconverged == 0) return;
  fmt::print(report, "   *** WARNING: {} of the {} SCF runs did not converge; their gradients were used as they are.\n",
             unconverged, 2 * dimension + 1);
}

void print_stationarity(const VECTOR& gradient, double limit, std::ostream& report) {
  const double largest = gradient.size() == 0 ? 0.0 : gradient.cwiseAbs().maxCoeff();
  if (largest <= limit) return;
  fmt::print(report, "   NOTE: the largest gradient component is {:.2e} hartree/bohr.\n", largest);
  fmt::print(report, "         Harmonic frequencies are meaningful at stationary points only.\n");
}

}  // namespace zentrix::HESSIAN

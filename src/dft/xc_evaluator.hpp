#pragma once

#include <vector>

#include "dft/functional_catalogue.hpp"
#include "dft/kernels/xc_kernels.hpp"

// Exchange-correlation energy density and its derivatives at a batch of points.

namespace zentrix::DFT {

/// Weighted sum of the components of one functional, for one spin channel (closed shell, totals) or two.
///
/// The variables of a point, in the order of all arrays:
///   closed shell   rho;  with gradient rho, sigma;  with tau rho, sigma, tau
///                  (total density, |grad rho|^2, total kinetic-energy density)
///   open shell     rho_a, rho_b;  with gradient + sigma_aa, sigma_ab, sigma_bb;  with tau + tau_a, tau_b
/// with tau_s = 1/2 sum_i |grad phi_i|^2 over the occupied orbitals of spin s. Units: bohr and hartree. Array v of a batch
/// starts at v * stride; points beyond n are not touched. The closed-shell result equals the open-shell one at
/// rho_a = rho_b = rho/2, sigma_aa = sigma_ab = sigma_bb = sigma/4, tau_a = tau_b = tau/2.
///
/// Finite for all finite input: a point whose density is negligible yields zeros, negative densities count as zero, and
/// gradients and tau are kept inside their physical bounds. Const and free of shared state: any number of threads may call.
class XC_EVALUATOR_T {
 public:
  /// Components without a kernel contribute nothing. Chooses the instruction set (kernels::chosen_isa).
  XC_EVALUATOR_T(const FUNCTIONAL_T& functional, int channels);

  int channels() const { return channels_; }
  /// 1, 2 or 3 for a closed shell; 2, 5 or 7 for an open one.
  int variables() const { return variables_; }

  /// energy[p]: energy per volume; first[v * stride + p]: its derivative with respect to variable v.
  void evaluate(int n, int stride, const double* values, double* energy, double* first) const;

  /// The same and all second derivatives, packed by rows of the lower triangle: array v(v+1)/2 + w for w <= v.
  void evaluate_second(int n, int stride, const double* values, double* energy, double* first, double* second) const;

  /// What evaluate_second gives, with the second derivatives by central differences of the first ones, for comparison
  /// (%xc_deriv numerical): good to four digits or more inside the bounds, to two at vanishing gradients and at the lower
  /// bound of tau, from which points are moved inwards by 5e-6 of it. Derivatives along the variables of a missing spin are
  /// 0.
  void evaluate_second_numerically(int n, int stride, const double* values, double* energy, double* first,
                                   double* second) const;

 private:
  struct TERM_T {
    kernels::XC_KERNEL first_order, second_order;
    double weight;
  };
  std::vector<TERM_T> terms_;
  int channels_ = 1;
  int variables_ = 1;
};

}  // namespace zentrix::DFT

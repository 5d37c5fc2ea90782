#pragma once

#include "dft/xc_component.hpp"
#include "simd/isa.hpp"

// The exchange-correlation kernels behind plain function pointers.

namespace zentrix::kernels {

/// Points of one call, in the variables and layout of DFT::XC_EVALUATOR_T.
struct XC_BATCH_T {
  int n = 0;
  long stride = 0;
  const double* values = nullptr;
  double* energy = nullptr;
  double* first = nullptr;
  double* second = nullptr;  ///< not touched by kernels of order 1
};

/// Adds weight times the energy per volume and its derivatives.
using XC_KERNEL = void (*)(const XC_BATCH_T& batch, double weight);

/// The kernels of one component: [0] energy and first derivatives, [1] second derivatives as well.
struct XC_KERNELS_T {
  XC_KERNEL closed_shell[2] = {nullptr, nullptr};
  XC_KERNEL open_shell[2] = {nullptr, nullptr};
};

/// Total densities below this count as zero, and spin densities below its half in exchange. An exponential tail beyond it
/// holds less than 1e-10 electrons around a molecule of 10^5 bohr^2 and so less than 1e-11 hartree.
inline constexpr double NEGLIGIBLE_DENSITY = 1e-15;
/// In correlation a spin density below this fraction of the total counts as zero: the state is fully polarised.
inline constexpr double NEGLIGIBLE_FRACTION = 2.3e-16;
/// Densities are cut here, 10^14 times that at a heavy nucleus.
inline constexpr double LARGEST_DENSITY = 1e20;
/// Bounds of the dimensionless |grad rho|^2 / rho^(8/3) and tau / rho^(5/3). A density that decays by exp(-2 k r) has
/// (2k)^2 rho^(-2/3) there, 4e14 at the negligible density with k = 100.
inline constexpr double LARGEST_REDUCED_GRADIENT = 1e20;
inline constexpr double LARGEST_REDUCED_TAU = 1e20;

}  // namespace zentrix::kernels

// Every component with kernels, named as in DFT::XC_COMPONENT. Each has a file of its name.
#define ZX_XC_COMPONENTS(ROW) \
  ROW(slater_x)               \
  ROW(b88_x)                  \
  ROW(pbe_x)                  \
  ROW(vwn5_c)                 \
  ROW(lyp_c)                  \
  ROW(pbe_c)                  \
  ROW(vwn3_c)                 \
  ROW(p86_c)                  \
  ROW(pw91_c)                 \
  ROW(r2scan_x)               \
  ROW(r2scan_c)

#define ZX_DECLARE_COMPONENT(name) XC_KERNELS_T name();
ZX_DECLARE_FOR_EACH_ISA(ZX_XC_COMPONENTS(ZX_DECLARE_COMPONENT))
#undef ZX_DECLARE_COMPONENT

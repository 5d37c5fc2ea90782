#include "dft/xc_evaluator.hpp"

#include <algorithm>

namespace zentrix::DFT {
namespace {

kernels::XC_KERNELS_T kernels_of(XC_COMPONENT id, [[maybe_unused]] kernels::ISA isa) {
  switch (id) {
#define ZX_CASE(name)      \
  case XC_COMPONENT::name: \
    return ZX_PICK(isa, name)();
    ZX_XC_COMPONENTS(ZX_CASE)
#undef ZX_CASE
  }
  return {};
}

void clear(double* arrays, int count, int n, int stride) {
  for (int i = 0; i < count; ++i) std::fill_n(arrays + static_cast<long>(i) * stride, n, 0.0);
}

}  // namespace

XC_EVALUATOR_T::XC_EVALUATOR_T(const FUNCTIONAL_T& functional, int channels) : channels_(channels) {
  const int ingredients = functional.needs_tau ? 3 : functional.needs_gradient ? 2 : 1;
  constexpr int open_shell_variables[4] = {0, 2, 5, 7};
  variables_ = channels == 1 ? ingredients : open_shell_variables[ingredients];
  const kernels::ISA isa = kernels::chosen_isa();
  for (const WEIGHTED_COMPONENT_T& component : functional.components) {
    const kernels::XC_KERNELS_T all = kernels_of(component.id, isa);
    const kernels::XC_KERNEL* kernel = channels == 1 ? all.closed_shell : all.open_shell;
    if (kernel[0] != nullptr) terms_.push_back({kernel[0], kernel[1], component.weight});
  }
}

void XC_EVALUATOR_T::evaluate(int n, int stride, const double* values, double* energy, double* first) const {
  clear(energy, 1, n, stride);
  clear(first, variables_, n, stride);
  const kernels::XC_BATCH_T batch{n, stride, values, energy, first, nullptr};
  for (const TERM_T& term : terms_) term.first_order(batch, term.weight);
}

void XC_EVALUATOR_T::evaluate_second(int n, int stride, const double* values, double* energy, double* first,
                                     double* second) const {
  clear(energy, 1, n, stride);
  clear(first, variables_, n, stride);
  clear(second, variables_ * (variables_ + 1) / 2, n, stride);
  const kernels::XC_BATCH_T batch{n, stride, values, energy, first, second};
  for (const TERM_T& term : terms_) term.second_order(batch, term.weight);
}

}  // namespace zentrix::DFT

#pragma once

#include <string>

#include "scf/scf.hpp"

namespace zentrix::GRADIENTS {

/// What the computation of a gradient tells while it goes on; silent by itself (gradient_report.hpp has the printing one).
class GRADIENT_OBSERVER_T {
 public:
  virtual ~GRADIENT_OBSERVER_T() = default;
  virtual void scf_begins(bool /*unrestricted*/) {}
  virtual void scf_ends(const SCF::SCF_RESULT_T&) {}
  virtual void nuclear_begins(bool /*unrestricted*/) {}
  virtual void one_electron_begins() {}
  virtual void one_electron_ends() {}
  virtual void two_electron_begins(bool /*unrestricted*/, int /*threads*/, int /*bra_pairs*/) {}
  virtual void integrals_done(bool /*unrestricted*/) {}
  virtual void xc_begins(bool /*unrestricted*/) {}
  virtual void nuclear_term_begins(const std::string& /*name*/) {}
  virtual void atom_done(int /*number*/) {}
  virtual void semi_analytical_done() {}
};

}  // namespace zentrix::GRADIENTS

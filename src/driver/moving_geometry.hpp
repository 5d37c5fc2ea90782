#pragma once

#include <string>
#include <utility>
#include <vector>

#include "driver/run_state.hpp"
#include "geometry/positions_report.hpp"
#include "gradients/scf_surface.hpp"

// What every section that moves the atoms of the run does with their geometry.

namespace zentrix {

/// Keeps a geometry in hand, so that an interruption prints it. `positions`: bohr.
void keep_for_interruption(const std::vector<std::string>& symbols, const VECTOR& positions);

/// A printer of moving structures that keeps their geometry in hand as well.
template <typename PRINTER>
class KEEPS_GEOMETRY_T : public PRINTER {
 public:
  template <typename... ARGS>
  explicit KEEPS_GEOMETRY_T(const MOLECULE_T& molecule, ARGS&&... args)
      : PRINTER(molecule, std::forward<ARGS>(args)...), symbols_(INTERNAL_COORDS::symbols_of(molecule)) {}
  void evaluating(int step, const VECTOR& positions) override {
    keep_for_interruption(symbols_, positions);
    PRINTER::evaluating(step, positions);
  }

 private:
  std::vector<std::string> symbols_;
};

/// Leaves the run at the last geometry of the surface, with its SCF. `positions`: bohr.
void settle(RUN_T& run, GRADIENTS::SCF_SURFACE_T& surface, const VECTOR& positions);

}  // namespace zentrix

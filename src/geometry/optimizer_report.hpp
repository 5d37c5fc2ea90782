#pragma once

#include <iosfwd>
#include <utility>
#include <vector>

#include "geometry/optimizer.hpp"

namespace zentrix::OPTIMIZER {

/// The observer that writes the report of an optimisation: coordinates, thresholds, every geometry before it is computed (so
/// that an interrupted run can be taken up by hand), the table of steps, the final geometry.
class OPTIMIZER_PRINTER_T : public OPTIMIZER_OBSERVER_T {
 public:
  /// `zmatrix`: of the input; empty when it was Cartesian.
  OPTIMIZER_PRINTER_T(const MOLECULE_T& molecule, std::vector<INPUT_PARSER::ZMATRIX_ROW_T> zmatrix, std::ostream& report);
  void cartesian_forced() override;
  void too_few_coordinates() override;
  void bonds_truncated() override;
  void coordinates_made(const INTERNAL_COORDS::COORDINATE_SET_T& set) override;
  void constraints_matched(const std::vector<INTERNAL_COORDS::CONSTRAINT_MATCH_T>& matches,
                           const INTERNAL_COORDS::COORDINATE_SET_T& set) override;
  void refused(REFUSAL reason) override;
  void started(bool internal, INPUT_PARSER::MODEL_HESSIAN model, const THRESHOLDS_T& thresholds) override;
  void evaluating(int step, const VECTOR& positions) override;
  void evaluated(const STEP_ROW_T& row) override;
  void step_rejected(int step, double rise) override;
  void coordinates_remade() override;
  void scf_failed(int step) override;
  void finished(const OPTIMIZATION_T& result) override;

 private:
  void print_geometry(const VECTOR& positions) const;
  void print_zmatrix(const VECTOR& positions) const;

  std::vector<std::string> symbols_;
  std::vector<INPUT_PARSER::ZMATRIX_ROW_T> zmatrix_;
  std::ostream& report_;
};

}  // namespace zentrix::OPTIMIZER

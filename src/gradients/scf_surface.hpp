#pragma once

#include <iosfwd>
#include <memory>
#include <utility>
#include <vector>

#include "dft/functional_catalogue.hpp"
#include "gradients/energy_surface.hpp"
#include "gradients/gradient_observer.hpp"
#include "gradients/nuclear_term.hpp"
#include "input/input_data.hpp"
#include "scf/scf.hpp"

namespace zentrix::GRADIENTS {

/// The surface of Hartree-Fock and Kohn-Sham energies, restricted or unrestricted, by the settings of the input, plus the
/// terms that were added to it.
class SCF_SURFACE_T : public ENERGY_SURFACE_T {
 public:
  /// `report`: where the SCF tables and the progress of the gradient go; null for a silent surface. All references must
  /// outlive the surface.
  SCF_SURFACE_T(const INPUT_PARSER::INPUT_DATA_T& input, const DFT::FUNCTIONAL_T& functional, const MOLECULE_T& molecule,
                std::ostream* report);

  /// Adds a term to every energy and gradient from now on; it must outlive the surface.
  void add_term(const NUCLEAR_TERM_T& term) { terms_.push_back(&term); }

  const MOLECULE_T& molecule() const override { return molecule_; }
  SURFACE_POINT_T energy(const CARTESIAN_T& positions) override;
  SURFACE_POINT_T energy_and_gradient(const CARTESIAN_T& positions) override;
  /// Two evaluations in a row at opposite displacements are told from their positions: the second one starts from the
  /// densities that the first one's change predicts, 2 D_0 - D.
  void hold_start() override;

  /// State and geometry of the last evaluation; null before the first one.
  const SCF::SCF_RESULT_T& last_scf() const { return scf_; }
  const SCF::GEOMETRY_DATA_T& last_geometry() const { return *geometry_; }
  /// Densities of the last converged evaluation (one per spin channel; none before it), and their replacement: where the
  /// next evaluation starts from.
  const SCF::SPIN_MATRICES_T& converged_densities() const { return previous_densities_; }
  void start_from(const SCF::SPIN_MATRICES_T& densities) { previous_densities_ = densities; }
  std::unique_ptr<SCF::GEOMETRY_DATA_T> take_geometry() { return std::move(geometry_); }

 protected:
  const INPUT_PARSER::INPUT_DATA_T& input() const { return input_; }
  std::ostream* report() const { return report_; }

 private:
  void run_scf(const CARTESIAN_T& positions);
  SCF::SPIN_MATRICES_T starting_densities(const CARTESIAN_T& positions) const;
  void add_terms(const CARTESIAN_T& positions, GRADIENT_OBSERVER_T& observer, SURFACE_POINT_T& point) const;

  const INPUT_PARSER::INPUT_DATA_T& input_;
  const DFT::FUNCTIONAL_T& functional_;
  const MOLECULE_T& molecule_;
  std::ostream* report_;
  std::vector<const NUCLEAR_TERM_T*> terms_;
  std::unique_ptr<SCF::GEOMETRY_DATA_T> geometry_;
  SCF::SCF_RESULT_T scf_;
  CARTESIAN_T positions_;                    ///< of the last evaluation
  SCF::SPIN_MATRICES_T previous_densities_;  ///< of the last converged evaluation
  bool start_held_ = false;                  ///< they stay what they are
  CARTESIAN_T held_positions_;               ///< where they belong
};

}  // namespace zentrix::GRADIENTS

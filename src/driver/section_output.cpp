#include <fmt/ostream.h>

#include "dft/xc_integrator.hpp"
#include "driver/driver_report.hpp"
#include "driver/interrupts.hpp"
#include "driver/sections.hpp"
#include "hessian/molden.hpp"
#include "properties/properties.hpp"
#include "report/layout.hpp"
#include "report/side_files.hpp"
#include "report/timing.hpp"
#include "scf/scf_report.hpp"

namespace zentrix {
namespace {

/// How well the grid integrates the density that the run ended with.
void check_grid(const RUN_T& run, std::ostream& report) {
  const SCF::GEOMETRY_DATA_T& geometry = *run.geometry;
  const double electrons = DFT::integrate_density(geometry.molecule, geometry.grid, run.scf.total_density());
  print_grid_quality(electrons, geometry.molecule.n_electrons, report);
}

/// Energies of the nuclear terms at the geometry the run ended with.
std::vector<std::pair<std::string, double>> nuclear_energies(const RUN_T& run) {
  const GRADIENTS::CARTESIAN_T positions = GRADIENTS::positions_of(run.geometry->molecule);
  std::vector<std::pair<std::string, double>> parts;
  for (const auto& term : run.nuclear_terms) parts.emplace_back(term->energy_label(), term->energy(positions));
  return parts;
}

void print_properties(const RUN_T& run, std::ostream& report) {
  const MATRIX density = run.scf.total_density();
  const MOLECULE_T& molecule = run.geometry->molecule;
  PROPERTIES::print_populations(molecule, PROPERTIES::mulliken(molecule, density, run.geometry->one_electron.s), report);
  PROPERTIES::print_dipole(PROPERTIES::dipole_moment(molecule, density), report);
  if (run.input.print_mo) PROPERTIES::print_orbitals(molecule, run.scf, report);
  if (run.input.export_mo) MOLDEN::export_orbitals(output_base_name(run.input_file), molecule, run.scf, report);
}

}  // namespace

int section_output(RUN_T& run, std::ostream& report) {
  set_run_phase("Section 7 (output and properties)");
  print_section_heading("7", "Output & Properties", report);
  {
    const STAGE_TIMER timer(STAGE::properties);
    if (run.optimized) fmt::print(report, "   Reusing SCF from last optimization step.\n");
    print_final_energies(run, nuclear_energies(run), report);
    if (!run.functional.is_hartree_fock()) check_grid(run, report);
    if (run.scf.unrestricted()) SCF::print_spin(run.scf, report);
    print_properties(run, report);
  }
  fmt::print(report, "   Section 7 time: {:.2f} s\n", timer_wall(STAGE::properties));
  return 0;
}

}  // namespace zentrix

#include "driver/run_hessian.hpp"

#include <fmt/ostream.h>

#include <sstream>

#include "driver/method_surface.hpp"
#include "hessian/molden.hpp"
#include "hessian/numerical_hessian.hpp"
#include "hessian/thermochemistry.hpp"
#include "hessian/vibration_report.hpp"
#include "report/side_files.hpp"

namespace zentrix {
namespace {

/// Name of the core potentials in use, empty where there are none. Those found by themselves are called after the basis set
/// that they belong to.
std::string ecp_name(const RUN_T& run) {
  if (run.molecule.ecps.empty()) return "";
  return run.input.ecp.empty() ? run.input.basis : run.input.ecp;
}

HESSIAN::HESSIAN_IDENTITY_T identity_of(const RUN_T& run) {
  HESSIAN::HESSIAN_IDENTITY_T identity;
  identity.method = run.input.method_as_written;
  identity.basis = run.input.basis;
  identity.ecp = ecp_name(run);
  identity.spin = run.molecule.unrestricted ? "unrestricted" : "restricted";
  identity.charge = run.molecule.charge;
  identity.multiplicity = run.molecule.multiplicity;
  for (const ATOM_T& atom : run.molecule.atoms) identity.atoms.push_back({atom.z, atom.position});
  return identity;
}

/// The energy of the run's last SCF with everything that its method adds.
double total_energy(const RUN_T& run) {
  double energy = run.scf.energy.total();
  if (run.mp2) energy += run.mp2->energy();
  for (const auto& term : run.nuclear_terms) energy += term->energy(GRADIENTS::positions_of(run.molecule));
  return energy;
}

}  // namespace

int read_cached_hessian(RUN_T& run, const char* purpose, HESSIAN::HESSIAN_FILE_T& hessian, std::ostream& report) {
  fmt::print(report, "   Reading cached Hessian from: {}\n", run.input.read_hess);
  const auto status = static_cast<int>(HESSIAN::read_hessian_file(run.input.read_hess, identity_of(run), hessian, report));
  if (status != 0) {
    fmt::print(report, " *** FATAL: %read_hess validation failed (ierr={}).  Aborting {}.\n", status, purpose);
    return status;
  }
  HESSIAN::print_unconverged(hessian.unconverged, hessian.hessian.rows(), report);
  if (hessian.unconverged > 0) run.converged = false;
  hessian.energy = total_energy(run);
  return 0;
}

void compute_hessian(RUN_T& run, HESSIAN::HESSIAN_FILE_T& hessian, std::ostream& report) {
  fmt::print(report, "   Method: Numerical Hessian (gradient FD)\n");
  if (run.geometry) run.geometry->jk.drop_store();  // the displaced runs need the room for theirs
  const INPUT_PARSER::INPUT_DATA_T settings = HESSIAN::settings_for_differences(run.input);
  const auto surface = method_surface(run, settings, nullptr);
  HESSIAN::HESSIAN_PRINTER_T progress(report);
  const HESSIAN::NUMERICAL_HESSIAN_T result = HESSIAN::numerical_hessian(*surface, progress);
  HESSIAN::print_unconverged(result.unconverged, result.hessian.rows(), report);
  if (result.unconverged > 0) run.converged = false;
  run.start = surface->converged_densities();
  hessian.identity = identity_of(run);
  hessian.energy = result.energy;
  hessian.gradient = result.gradient;
  hessian.hessian = result.hessian;
  hessian.unconverged = result.unconverged;
}

void save_hessian(const RUN_T& run, HESSIAN::HESSIAN_FILE_T& hessian, std::ostream& report) {
  std::ostringstream unseen;
  VIBRATIONS::VIBRATIONS_T vibrations;
  if (VIBRATIONS::analyse_vibrations(run.molecule, hessian.hessian, nullptr, vibrations, unseen) == 0) {
    hessian.frequencies = vibrations.frequencies;
    hessian.modes = vibrations.modes;
  }
  HESSIAN::write_hessian_file(output_base_name(run.input_file), hessian, report);
}

int analyse_hessian(const RUN_T& run, HESSIAN::HESSIAN_FILE_T& hessian, bool computed, std::ostream& report) {
  HESSIAN::print_stationarity(hessian.gradient, run.input.grad_tol, report);
  VIBRATIONS::VIBRATIONS_T vibrations;
  if (const int info = VIBRATIONS::analyse_vibrations(run.molecule, hessian.hessian, nullptr, vibrations, report);
      info != 0) {
    return info;
  }
  VIBRATIONS::print_thermochemistry(VIBRATIONS::thermochemistry(run.molecule, vibrations, hessian.energy.value()), report);
  fmt::print(report, "\n");
  const std::string base = output_base_name(run.input_file);
  if (computed) {
    hessian.frequencies = vibrations.frequencies;
    hessian.modes = vibrations.modes;
    HESSIAN::write_hessian_file(base, hessian, report);
  }
  MOLDEN::write_vibrations(base, run.molecule, vibrations.frequencies, vibrations.modes, report);
  return 0;
}

}  // namespace zentrix

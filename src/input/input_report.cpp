#include <fmt/ostream.h>

#include "constants/elements.hpp"
#include "constants/units.hpp"
#include "input/input_parser.hpp"
#include "input/text.hpp"
#include "report/layout.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

const char* display_name(JOB job) {
  switch (job) {
    case JOB::ts:
      return "TS Search (P-RFO)";
    case JOB::ts_freq:
      return "TS Search (P-RFO) + Freq";
    case JOB::scan:
      return "Rigid PES Scan";
    case JOB::bsse:
      return "BSSE / CP";
    default:
      return nullptr;
  }
}

bool is_transition_state(JOB job) { return job == JOB::ts || job == JOB::ts_freq; }
bool optimises(JOB job) { return job == JOB::opt || job == JOB::opt_freq || job == JOB::scanopt; }

/// A name for all elements, or one line per element of the molecule with its own name.
void print_names(const char* label, const INPUT_DATA_T& input, const std::string& global, const std::string& standard,
                 const std::map<int, std::string>& own, std::ostream& report) {
  fmt::print(report, "{}{}\n", label, global);
  if (own.empty()) return;
  std::map<int, std::string> names;
  for (const INPUT_ATOM_T& atom : input.atoms) {
    const auto found = own.find(atom.z);
    names[atom.z] = found == own.end() ? standard : found->second;
  }
  for (const auto& [z, name] : names) {
    fmt::print(report, "     {} -> {}\n", element_symbol(z), name.empty() ? "automatic" : name);
  }
}

/// With no name given the potentials that belong to the basis sets are found when the molecule is built.
void print_ecp(const INPUT_DATA_T& input, std::ostream& report) {
  print_names("   ECP:              ", input, input.ecp.empty() ? "automatic" : input.ecp, input.default_ecp,
              input.element_ecp, report);
  if (input.ecp == "none") return;
  if (input.ecp_method == DERIVATIVE::analytical) {
    fmt::print(report, "   ECP integrals:    analytical (McMurchie-Davidson)\n");
  } else {
    fmt::print(report, "   ECP integrals:    numerical (quadrature)\n");
  }
}

void print_solvation(const INPUT_DATA_T& input, std::ostream& report) {
  if (input.eps_given) {
    fmt::print(report, "   PCM (custom eps): {}\n", input.eps);
  } else if (input.solvent_given) {
    fmt::print(report, "   PCM solvent:      {}", input.solvent);
    if (input.eps > 0.0) fmt::print(report, " (eps={})", input.eps);  // set where the solvent's name was looked up
    fmt::print(report, "\n");
  }
}

void print_scf(const INPUT_DATA_T& input, std::ostream& report) {
  fmt::print(report, "   SCF converger:    {}\n", input.scf_converger);
  fmt::print(report, "   SCF max iter:     {}\n", input.scf_maxiter);
  switch (input.level_shift_mode) {
    case LEVEL_SHIFT::automatic:
      fmt::print(report, "   SCF level shift:  AUTO  (activates 0.2 Ha after 100 non-converged iters)\n");
      break;
    case LEVEL_SHIFT::off:
      fmt::print(report, "   SCF level shift:  OFF\n");
      break;
    case LEVEL_SHIFT::fixed:
      fmt::print(report, "   SCF level shift:  {} Ha (fixed, applied from iter 1)\n", input.level_shift);
      break;
  }
}

void print_geometry(const INPUT_DATA_T& input, std::ostream& report) {
  const std::string rule(47, '-');
  fmt::print(report, "\n   {}\n   Molecular Geometry (Angstroems):\n   {}\n    Atom      X            Y            Z\n",
             rule, rule);
  for (const INPUT_ATOM_T& atom : input.atoms) {
    fmt::print(report, "    {:<3s}", element_symbol(atom.z));
    for (const double x : atom.position) fmt::print(report, " {:12.7f}", without_minus_zero(x / BOHR_PER_ANGSTROM, 7));
    if (atom.fragment > 0) fmt::print(report, "   fragment {}", atom.fragment);
    fmt::print(report, "\n");
  }
  fmt::print(report, "   {}\n", rule);
}

void print_scan(const INPUT_DATA_T& input, std::ostream& report) {
  const std::string rule(56, '-');
  const bool relaxed = input.job == JOB::scanopt;
  fmt::print(report, "\n   {}\n   {} PES scan grid:\n   {}\n", rule, relaxed ? "Relaxed" : "Rigid", rule);
  fmt::print(report, "    Var  Row     From       To        Step     Pts  Unit\n");
  long long total = 1;
  for (const SCAN_VARIABLE_T& v : input.scan) {
    fmt::print(report, "    {:<3c}{:5d}{:11.4f}{:11.4f}{:11.4f}{:6d}  {}\n", v.kind, v.row, v.from, v.to, v.step, v.points,
               v.kind == 'R' ? "Ang" : "deg");
    total *= v.points;
  }
  fmt::print(report, "   {}\n   Total grid points: {}{}\n", rule, total,
             relaxed ? "   (each = one constrained optimization)" : "   (each = one independent SCF)");
}

void print_constraints(const INPUT_DATA_T& input, std::ostream& report) {
  fmt::print(report, "\n   Geometry constraints (held fixed):\n   {}\n", std::string(34, '-'));
  for (std::size_t n = 0; n < input.constraints.size(); ++n) {
    const CONSTRAINT_T& entry = input.constraints[n];
    const char* label = entry.kind == 'B' ? "     bond     " : entry.kind == 'A' ? "     angle    " : "     dihedral ";
    fmt::print(report, "{}{}:  atoms ", label, n + 1);
    for (const int atom : entry.atoms) fmt::print(report, " {}", atom);
    fmt::print(report, "\n");
  }
}

}  // namespace

std::string job_word(JOB job) {
  switch (job) {
    case JOB::energy:
      return "energy";
    case JOB::gradient:
      return "gradient";
    case JOB::opt:
      return "opt";
    case JOB::freq:
      return "freq";
    case JOB::opt_freq:
      return "opt+freq";
    case JOB::bsse:
      return "bsse";
    case JOB::scan:
      return "scan";
    case JOB::scanopt:
      return "scanopt";
    case JOB::ts:
      return "ts";
    case JOB::ts_freq:
      return "ts+freq";
  }
  return "";
}

void print_job_summary(const INPUT_DATA_T& input, std::ostream& report) {
  const char* name = display_name(input.job);
  fmt::print(report, "   Job type:         {}\n", name != nullptr ? name : job_word(input.job));
  fmt::print(report, "   Method:           {}\n", input.method);
  if (input.dispersion != "NONE") fmt::print(report, "   Dispersion:       {}\n", input.dispersion);
  print_solvation(input, report);
  print_names("   Basis set:        ", input, input.basis, input.default_basis, input.element_basis, report);
  fmt::print(report, "   Spin treatment:   {}\n", input.unrestricted ? "Unrestricted" : "Restricted");
  print_ecp(input, report);
  fmt::print(report, "   Charge:           {}\n   Multiplicity:     {}\n", input.charge, input.multiplicity);
  fmt::print(report, "   Atoms:            {}\n", input.atoms.size());
  if (input.spherical) {
    fmt::print(report, "   Angular functions: Spherical\n");
  } else {
    fmt::print(report, "   Angular functions: Cartesian\n");
  }
  print_scf(input, report);
  if (optimises(input.job) || is_transition_state(input.job)) {
    fmt::print(report, "   Geom max iter:    {}\n", input.geom_maxiter);
  }
  if (optimises(input.job)) {  // a transition-state search starts from a computed Hessian
    if (input.initial_hess == MODEL_HESSIAN::full) {
      fmt::print(report, "   Initial Hessian:  full  (coupled Almloef/Lindh model)\n");
    } else {
      fmt::print(report, "   Initial Hessian:  diag  (Lindh diagonal model)\n");
    }
  }
  print_geometry(input, report);
  if (!input.zmatrix.empty()) {
    fmt::print(report, "\n   Input Z-matrix:\n");
    for (const ZMATRIX_ROW_T& row : input.zmatrix) fmt::print(report, "     {}\n", row.text);
  }
  if (input.job == JOB::scan || input.job == JOB::scanopt) print_scan(input, report);
  if (!input.constraints.empty()) print_constraints(input, report);
}

}  // namespace zentrix::INPUT_PARSER

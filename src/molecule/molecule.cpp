#include "molecule/molecule.hpp"

#include <fmt/ostream.h>

#include <cmath>
#include <map>

#include "constants/elements.hpp"
#include "constants/limits.hpp"
#include "constants/units.hpp"
#include "molecule/basis_file.hpp"
#include "molecule/shell_validation.hpp"

namespace zentrix {
namespace {

using INPUT_PARSER::INPUT_DATA_T;

/// Self-overlap of x^l exp(-p/2 r^2) with itself over two exponents of sum p: (2l-1)!! / (2p)^l (pi/p)^(3/2).
double component_overlap(int l, double p) {
  double value = std::pow(PI / p, 1.5);
  for (int k = 1; k <= l; ++k) value *= (2 * k - 1) / (2.0 * p);
  return value;
}

int print_basis_failure(DATA_STATUS status, int z, const std::string& path, const ELEMENT_BASIS_T& basis,
                        std::ostream& report) {
  if (status == DATA_STATUS::angular_momentum) {
    fmt::print(report, " *** ERROR: basis-set angular momentum exceeds the supported limit.\n");
    fmt::print(report, "     Element {}: shell type \"{}\" has L = {}\n", element_symbol(z), basis.refused_letter,
               basis.refused_l);
    fmt::print(report, "     but Zentrix is compiled for L_max = {} (g-functions).\n", LMAX_BASIS);
    fmt::print(report, "     Choose a basis set without h/i/... functions, or rebuild with\n");
    fmt::print(report, "     a larger LMAX in src/constants (LMAX_GRAD, LMAX_HESS and the\n");
    fmt::print(report, "     engine sizes follow automatically).\n");
    return 1;
  }
  fmt::print(report, " *** ERROR: Cannot load basis for Z={} from {}\n", z, path);
  switch (status) {
    case DATA_STATUS::no_file:
      fmt::print(report, "     File not found.\n");
      break;
    case DATA_STATUS::no_element:
      fmt::print(report, "     Element not in basis file.\n");
      break;
    default:
      fmt::print(report, "     Parse error in basis file.\n");
      break;
  }
  return 1;
}

/// Normalised shells of one element.
int load_basis(const INPUT_DATA_T& input, int z, std::vector<SHELL_T>& shells, std::ostream& report) {
  const std::string path = basis_path(basis_name_of(input, z));
  ELEMENT_BASIS_T basis;
  const DATA_STATUS status = read_basis_file(path, z, basis);
  if (status != DATA_STATUS::ok) return print_basis_failure(status, z, path, basis, report);
  for (SHELL_T& shell : basis.shells) {
    if (const int error = normalize_shell(shell, report); error != 0) return error;
  }
  shells = std::move(basis.shells);
  return 0;
}

/// Name of the ECP set of an element: its own, the global one, or (empty) the one that belongs to its basis set.
std::string ecp_name_of(const INPUT_DATA_T& input, int z) {
  const auto own = input.element_ecp.find(z);
  return own == input.element_ecp.end() ? input.default_ecp : own->second;
}

bool is_none(const std::string& name) {
  return name.size() == 4 && (name[0] == 'n' || name[0] == 'N') && (name[1] == 'o' || name[1] == 'O') &&
         (name[2] == 'n' || name[2] == 'N') && (name[3] == 'e' || name[3] == 'E');
}

/// Finds the potential of element z. `found` tells whether there is one. A named set must exist and, when it was named for
/// this very element, must hold it; a global name covers the elements it holds.
int load_ecp(const INPUT_DATA_T& input, int z, ECP_T& ecp, bool& found, std::ostream& report) {
  found = false;
  const std::string name = ecp_name_of(input, z);
  if (is_none(name)) return 0;
  const bool automatic = name.empty();
  const bool own_name = input.element_ecp.count(z) != 0;
  const std::string path = ecp_path(automatic ? basis_name_of(input, z) : name);
  const DATA_STATUS status = read_ecp_file(path, z, ecp);
  if (status == DATA_STATUS::ok) {
    found = true;
    if (automatic) fmt::print(report, "   Auto-detected ECP for Z={} from {}\n", z, path);
    return 0;
  }
  const bool absent = status == DATA_STATUS::no_element || (automatic && status == DATA_STATUS::no_file);
  if (absent && !own_name) return 0;
  fmt::print(report, " *** ERROR loading ECP for Z={} from {}\n", z, path);
  return 1;
}

/// Everything that one element contributes to each of its atoms.
struct ELEMENT_DATA_T {
  std::vector<SHELL_T> shells;
  ECP_T ecp;
  bool has_ecp = false;
  bool ecp_known = false;  ///< looked for; elements of ghosts only are not
};

int load_elements(const INPUT_DATA_T& input, std::map<int, ELEMENT_DATA_T>& elements, std::ostream& report) {
  for (const auto& atom : input.atoms) {
    ELEMENT_DATA_T& element = elements[atom.z];
    if (element.shells.empty()) {
      if (const int error = load_basis(input, atom.z, element.shells, report); error != 0) return error;
    }
    if (atom.ghost || element.ecp_known) continue;
    if (const int error = load_ecp(input, atom.z, element.ecp, element.has_ecp, report); error != 0) return error;
    element.ecp_known = true;
  }
  return 0;
}

void place_atoms(const INPUT_DATA_T& input, const std::map<int, ELEMENT_DATA_T>& elements, MOLECULE_T& molecule) {
  for (const auto& entry : input.atoms) {
    const ELEMENT_DATA_T& element = elements.at(entry.z);
    const int index = static_cast<int>(molecule.atoms.size());
    const bool has_ecp = element.has_ecp && !entry.ghost;
    const double charge = entry.ghost ? 0.0 : entry.z - (has_ecp ? element.ecp.n_core : 0);
    molecule.atoms.push_back({element_symbol(entry.z), entry.z, charge, entry.position, entry.ghost, entry.fragment});
    for (SHELL_T shell : element.shells) {
      shell.atom = index;
      molecule.shells.push_back(std::move(shell));
    }
    if (has_ecp) {
      molecule.ecps.push_back(element.ecp);
      molecule.ecps.back().atom = index;
    }
  }
}

int set_electrons(const INPUT_DATA_T& input, MOLECULE_T& molecule, std::ostream& report) {
  double charges = 0.0;
  for (const ATOM_T& atom : molecule.atoms) charges += atom.charge;
  const long long count = std::llround(charges) - static_cast<long long>(input.charge);
  const long long mult = input.multiplicity;
  if (count <= 0) {
    fmt::print(report, " *** ERROR: Non-positive electron count: {}\n     Check charge and atomic numbers.\n", count);
    return 1;
  }
  if (mult < 1) {
    fmt::print(report, " *** ERROR: Multiplicity must be >= 1, got: {}\n", mult);
    return 1;
  }
  if ((count + mult) % 2 == 0) {
    fmt::print(report, " *** ERROR: Incompatible electron count and multiplicity!\n");
    fmt::print(report, "     nelec = {},  multiplicity = {}\n", count, mult);
    if (count % 2 == 0) {
      fmt::print(report, "     Even electrons require odd multiplicity (singlet=1, triplet=3, ...).\n");
    } else {
      fmt::print(report, "     Odd electrons require even multiplicity (doublet=2, quartet=4, ...).\n");
    }
    return 1;
  }
  const long long n_beta = (count - mult + 1) / 2;
  if (n_beta < 0) {
    fmt::print(report, " *** ERROR: Multiplicity too high for this electron count.\n");
    fmt::print(report, "     nelec = {},  mult = {},  nbeta = {}\n", count, mult, n_beta);
    return 1;
  }
  molecule.charge = input.charge;
  molecule.multiplicity = input.multiplicity;
  molecule.n_electrons = static_cast<int>(count);
  molecule.n_alpha = static_cast<int>(count - n_beta);
  molecule.n_beta = static_cast<int>(n_beta);
  molecule.unrestricted = input.unrestricted;
  if (molecule.n_alpha != molecule.n_beta && !molecule.unrestricted) {
    fmt::print(report, "   NOTE: Open-shell system (nalpha /= nbeta).\n         Switching to Unrestricted (UHF/UKS).\n");
    molecule.unrestricted = true;
  }
  return 0;
}

int check_function_count(const MOLECULE_T& molecule, std::ostream& report) {
  if (molecule.n_alpha <= molecule.n_basis) return 0;
  fmt::print(report, " *** ERROR: {} alpha electrons need at least as many basis functions; the basis set has {}.\n",
             molecule.n_alpha, molecule.n_basis);
  return 1;
}

}  // namespace

int build_molecule(const INPUT_DATA_T& input, MOLECULE_T& molecule, std::ostream& report) {
  molecule = MOLECULE_T{};
  molecule.spherical = input.spherical;
  std::map<int, ELEMENT_DATA_T> elements;
  if (const int error = load_elements(input, elements, report); error != 0) return error;
  place_atoms(input, elements, molecule);
  count_basis_functions(molecule);
  if (const int error = set_electrons(input, molecule, report); error != 0) return error;
  if (const int error = check_function_count(molecule, report); error != 0) return error;
  fmt::print(report, "   Molecule built successfully.\n");
  return 0;
}

int normalize_shell(SHELL_T& shell, std::ostream& report) {
  const SHELL_FAULT_T fault = shell_fault(shell);
  if (!fault.detail.empty()) {
    fmt::print(report, "FATAL [normalize_shell]: {}\n{}\n", fault.detail, fault.stop_text);
    return 1;
  }
  const auto n = static_cast<std::size_t>(shell.nprim);
  for (std::size_t i = 0; i < n; ++i) shell.coeff[i] /= std::sqrt(component_overlap(shell.l, 2.0 * shell.alpha[i]));
  double norm = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      norm += shell.coeff[i] * shell.coeff[j] * component_overlap(shell.l, shell.alpha[i] + shell.alpha[j]);
    }
  }
  if (!(norm > 0.0) || !std::isfinite(norm)) {
    fmt::print(report, "FATAL [normalize_shell]: contraction has no norm\n");
    return 1;
  }
  for (double& c : shell.coeff) c /= std::sqrt(norm);
  return 0;
}

void count_basis_functions(MOLECULE_T& molecule) {
  molecule.n_basis = molecule.n_cartesian = molecule.n_spherical = molecule.n_primitives = 0;
  for (SHELL_T& shell : molecule.shells) {
    shell.first = molecule.n_basis;
    shell.nfunc = molecule.spherical ? n_spherical(shell.l) : n_cartesian(shell.l);
    molecule.n_basis += shell.nfunc;
    molecule.n_cartesian += n_cartesian(shell.l);
    molecule.n_spherical += n_spherical(shell.l);
    molecule.n_primitives += shell.nprim * n_cartesian(shell.l);
  }
}

int automatic_frozen_core(const MOLECULE_T& molecule) {
  // Highest atomic number and core orbitals of each period's group.
  constexpr std::array<std::array<int, 2>, 7> rows = {{{2, 0}, {10, 1}, {18, 5}, {36, 9}, {54, 18}, {86, 27}, {MAX_Z, 43}}};
  std::vector<bool> has_ecp(molecule.atoms.size(), false);
  for (const ECP_T& ecp : molecule.ecps) has_ecp[static_cast<std::size_t>(ecp.atom)] = true;
  int count = 0;
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    if (has_ecp[a] || molecule.atoms[a].ghost) continue;
    for (const auto& [highest, orbitals] : rows) {
      if (molecule.atoms[a].z <= highest) {
        count += orbitals;
        break;
      }
    }
  }
  return count;
}

double nuclear_repulsion(const MOLECULE_T& molecule) {
  double energy = 0.0;
  for (std::size_t a = 0; a < molecule.atoms.size(); ++a) {
    for (std::size_t b = 0; b < a; ++b) {
      const auto& p = molecule.atoms[a].position;
      const auto& q = molecule.atoms[b].position;
      energy += molecule.atoms[a].charge * molecule.atoms[b].charge / std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
    }
  }
  return energy;
}

}  // namespace zentrix

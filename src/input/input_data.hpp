#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

// The parsed input file: one record with every keyword's value and default. Filled once by INPUT_PARSER::parse_input and
// read-only afterwards; the only place where user words have become settings.

namespace zentrix::INPUT_PARSER {

enum class JOB { energy, gradient, opt, freq, opt_freq, bsse, scan, scanopt, ts, ts_freq };
enum class LEVEL_SHIFT { automatic, off, fixed };
enum class OCCUPATION { automatic, strict, mom, mix };
enum class GUESS { automatic, sad, core };
enum class MODEL_HESSIAN { diag, full };
enum class OPT_COORD { internal, cartesian };
enum class DERIVATIVE { analytical, numerical };
enum class PCM_MODEL { none, cpcm, iefpcm, cosmo };

/// One atom of the geometry.
struct INPUT_ATOM_T {
  std::string token;                    ///< as written: "6", "C" or "C1"
  int z = 0;                            ///< atomic number the token stands for
  std::array<double, 3> position = {};  ///< bohr
  int fragment = 0;                     ///< fragment number of a counterpoise job, from 1; 0 in other jobs
  bool ghost = false;                   ///< basis functions only; the parser sets none, counterpoise sub-systems have them
};

/// One row of a Z-matrix; references are 1-based numbers of earlier rows, 0 where the row has no such field.
struct ZMATRIX_ROW_T {
  std::string token;
  int z = 0;
  int bond_atom = 0;
  double bond = 0.0;  ///< angstrom
  int angle_atom = 0;
  double angle = 0.0;  ///< degree
  int dihedral_atom = 0;
  double dihedral = 0.0;  ///< degree, right-handed
  std::string text;       ///< the row as written, for the input listing
};

/// One swept coordinate of a potential-energy-surface scan.
struct SCAN_VARIABLE_T {
  char kind = 'R';  ///< R bond (angstrom), A angle (degree), D dihedral (degree)
  int row = 0;      ///< Z-matrix row, from 1
  double from = 0.0;
  double to = 0.0;
  double step = 0.0;  ///< true step: (to - from) / (points - 1)
  int points = 1;     ///< both ends included
};

/// One coordinate held fixed in an optimisation.
struct CONSTRAINT_T {
  char kind = 'B';         ///< B bond, A angle, D dihedral
  std::vector<int> atoms;  ///< 2, 3 or 4 atom numbers, from 1, in input order
};

struct INPUT_DATA_T {
  // Job, method and molecule.
  JOB job = JOB::energy;
  std::string method = "HF";  ///< upper case
  std::string method_as_written = "HF";
  std::string dispersion = "NONE";           ///< upper case
  std::string basis = "STO-3G";              ///< "mixed" when element_basis holds more than the global name
  std::map<int, std::string> element_basis;  ///< atomic number -> basis name, where one was given for the element
  std::string default_basis = "STO-3G";      ///< name for the elements without one of their own
  std::string ecp;                           ///< empty: automatic detection; "none": off; "mixed" as for the basis
  std::map<int, std::string> element_ecp;
  std::string default_ecp;
  int charge = 0;
  int multiplicity = 1;
  bool unrestricted = false;
  bool spherical = false;

  // Self-consistent field.
  int scf_maxiter = 150;
  std::string scf_converger = "DIIS";  ///< upper case
  double scf_etol = 1e-8;              ///< hartree
  double scf_ptol = 1e-6;              ///< largest density element change
  double scf_gtol = 1e-5;              ///< ||FPS - SPF||; SCF_DIIS_ETOL and SCF_GTOL are one setting
  LEVEL_SHIFT level_shift_mode = LEVEL_SHIFT::automatic;
  double level_shift = 0.0;  ///< hartree, of the fixed mode
  double damping = 0.0;      ///< weight of the previous density
  int scf_min_iter = 5;
  int scf_n_converged = 2;
  double scf_diis_cond_max = 1e10;
  OCCUPATION occupation = OCCUPATION::automatic;
  GUESS initial_guess = GUESS::automatic;
  int eri_memory_limit_mb = 4096;  ///< megabytes of 2^20 bytes

  // Geometry optimisation, gradients, Hessians.
  int geom_maxiter = 50;
  MODEL_HESSIAN initial_hess = MODEL_HESSIAN::full;
  OPT_COORD opt_coord = OPT_COORD::internal;
  double grad_tol = 4.5e-4;  ///< hartree/bohr
  bool semi_analytical_gradient = false;
  DERIVATIVE hess_method = DERIVATIVE::numerical;
  DERIVATIVE ecp_method = DERIVATIVE::analytical;
  DERIVATIVE xc_deriv = DERIVATIVE::analytical;
  std::string read_hess;  ///< file name, case kept
  int ts_mode = 0;        ///< 1-based Hessian mode; 0: the lowest

  // Grid, correlation.
  std::string grid = "6";  ///< "FINE", "ULTRAFINE", "TM", "G09", "ORCA7" or "1" .. "10"
  int frozen_core = -1;    ///< -1 automatic, 0 none, n > 0 orbitals
  bool pump2 = false;

  // Solvation.
  PCM_MODEL pcm_model = PCM_MODEL::none;
  bool pcm_given = false;
  bool solvent_given = false;
  bool eps_given = false;
  bool solvation_off = false;  ///< the solvent word was "none": solvation stays off whatever else was given
  bool pcm_off = false;        ///< the same of the model word
  std::string solvent;         ///< case kept
  double eps = 0.0;
  int pcm_lebedev = 110;
  double pcm_scaling = 1.2;
  double pcm_switch = 0.2;  ///< bohr
  DERIVATIVE pcm_grad_method = DERIVATIVE::analytical;

  // Output.
  bool boys_precise = false;
  bool print_mo = false;
  bool export_mo = false;
  bool print_time = false;
  bool print_grad = false;

  // Geometry, scans, constraints.
  bool bohr_units = false;  ///< the Cartesian block was written in bohr
  std::vector<INPUT_ATOM_T> atoms;
  std::vector<ZMATRIX_ROW_T> zmatrix;        ///< empty for a Cartesian geometry
  int n_fragments = 0;                       ///< of a counterpoise job
  std::map<int, int> fragment_charge;        ///< by fragment; after the checks of a counterpoise job all have one
  std::map<int, int> fragment_multiplicity;  ///< the same
  std::vector<SCAN_VARIABLE_T> scan;
  std::vector<CONSTRAINT_T> constraints;

  /// Whether a continuum solvent is asked for.
  bool solvated() const { return solvent_given || eps_given || pcm_given; }
};

/// Name of the basis set that element z uses.
inline const std::string& basis_name_of(const INPUT_DATA_T& input, int z) {
  const auto own = input.element_basis.find(z);
  return own == input.element_basis.end() ? input.default_basis : own->second;
}

}  // namespace zentrix::INPUT_PARSER

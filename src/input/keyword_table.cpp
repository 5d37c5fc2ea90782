#include "input/keyword_table.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

using IN = INPUT_DATA_T;

/// Larger charges are typing slips that would only overflow an electron count later.
constexpr int largest_charge = 1000000;

constexpr const char* yes_no_text = "yes (on/true/1/T) | no (off/false/0/F) | <bare keyword for yes>";

bool is_positive(double x) { return x > 0.0; }
bool is_weight(double x) { return x >= 0.0 && x < 1.0; }
bool exceeds_one(double x) { return x > 1.0; }

VALUE_READER_T derivative(DERIVATIVE IN::*field, const WORD_GROUP_T& analytical, const WORD_GROUP_T& numerical) {
  return one_of(field, {{DERIVATIVE::analytical, analytical}, {DERIVATIVE::numerical, numerical}});
}

VALUE_READER_T job() {
  return one_of(&IN::job, {{JOB::energy, {"ENERGY", "SP", "SINGLE"}},
                           {JOB::gradient, {"GRADIENT", "GRAD", "FORCE"}},
                           {JOB::opt, {"OPT", "OPTIMIZE"}},
                           {JOB::freq, {"FREQ", "FREQUENCY", "HESSIAN"}},
                           {JOB::opt_freq, {"OPT+FREQ", "OPTFREQ"}},
                           {JOB::bsse, {"BSSE", "COUNTERPOISE", "CP"}},
                           {JOB::scan, {"SCAN", "PESCAN", "RIGID_SCAN"}},
                           {JOB::scanopt, {"SCANOPT", "RELAXED_SCAN", "SCAN+OPT"}},
                           {JOB::ts, {"TS", "OPT_TS", "OPTTS"}},
                           {JOB::ts_freq, {"TS+FREQ", "TSFREQ", "OPT_TS+FREQ", "OPTTSFREQ"}}});
}

VALUE_READER_T spin() {
  return one_of(&IN::unrestricted,
                {{true, {"UNRESTRICTED", "UHF", "UKS", "U"}}, {false, {"RESTRICTED", "RHF", "RKS", "R"}}});
}

VALUE_READER_T converger() { return one_of(&IN::scf_converger, {{"DIIS", {"DIIS"}}, {"NONE", {"NONE", "OFF", "NO"}}}); }

VALUE_READER_T occupation() {
  return one_of(&IN::occupation, {{OCCUPATION::automatic, {"AUTO"}},
                                  {OCCUPATION::strict, {"STRICT", "AUFBAU"}},
                                  {OCCUPATION::mom, {"MOM", "MAXOV", "MAX_OVERLAP"}},
                                  {OCCUPATION::mix, {"MIX", "REMIX"}}});
}

VALUE_READER_T initial_guess() {
  return one_of(&IN::initial_guess,
                {{GUESS::automatic, {"AUTO"}}, {GUESS::sad, {"SAD"}}, {GUESS::core, {"CORE", "HCORE", "CORE_H"}}});
}

VALUE_READER_T model_hessian() {
  return one_of(&IN::initial_hess, {{MODEL_HESSIAN::diag, {"DIAG", "DIAGONAL", "LINDH"}},
                                    {MODEL_HESSIAN::full, {"FULL", "ALMLOF", "ALMLOEF", "COUPLED"}}});
}

VALUE_READER_T opt_coord() {
  return one_of(&IN::opt_coord,
                {{OPT_COORD::internal, {"INTERNAL", "INTERNALS", "REDUNDANT", "RFO", "INT"}},
                 {OPT_COORD::cartesian, {"CART", "CARTESIAN", "BFGS", "CART_BFGS", "CARTESIAN_BFGS", "XYZ"}}});
}

VALUE_READER_T grad_method() {
  return one_of(&IN::semi_analytical_gradient,
                {{false, {"ANALYTICAL", "FULL", "1"}}, {true, {"SEMIANALYTICAL", "SEMI", "FD", "0"}}});
}

VALUE_READER_T hess_method() {
  return derivative(&IN::hess_method, {"ANALYTICAL", "FULL", "1"}, {"NUMERICAL", "NUM", "FD", "0"});
}

VALUE_READER_T ecp_method() {
  return derivative(&IN::ecp_method, {"ANALYTICAL", "MD", "MCMURCHIE", "1"}, {"NUMERICAL", "QUADRATURE", "NUM", "0"});
}

VALUE_READER_T xc_deriv() { return derivative(&IN::xc_deriv, {"ANALYTICAL", "ANAL", "EXACT"}, {"NUMERICAL", "NUM", "FD"}); }

VALUE_READER_T pcm_grad_method() {
  return derivative(&IN::pcm_grad_method, {"ANALYTICAL", "ANA", "AN", "TRUE", "YES", "ON"},
                    {"NUMERICAL", "NUM", "FD", "FALSE", "NO", "OFF"});
}

VALUE_READER_T tolerance(double IN::*field) { return real_where(field, "real", is_positive); }

// A row: name, aliases, value, default, meaning, accepted text. Kept as a table, three lines a keyword.
// clang-format off

std::vector<KEYWORD_T> job_and_molecule_rows() {
  return {
      {"METHOD", {}, method_value(), "HF",
       "Method: HF, MP2, UMP2 or the name of a density functional.",
       "hf | mp2 | ump2 | <density functional>"},
      {"DISPERSION", {"DISP"}, upper_word(&IN::dispersion, "word"), "NONE",
       "Empirical dispersion correction.",
       "none | d3bj | d4"},
      {"BASIS", {}, basis_value(), "STO-3G",
       "Basis set. A plain name serves all elements without one of their own.",
       "<basis name> | <element>=<basis name>"},
      {"ECP", {}, ecp_value(), "automatic",
       "Effective core potential; `none` switches automatic detection off.",
       "<ECP name> | <element>=<ECP name> | none"},
      {"JOB", {}, job(), "energy",
       "What to compute.",
       "energy | gradient | opt | freq | opt+freq | bsse | scan | scanopt | ts | ts+freq"},
      {"CHARGE", {},
       with_fragments(integer_in(&IN::charge, -largest_charge, largest_charge), &IN::charge, &IN::fragment_charge), "0",
       "Total charge of the molecule; `2=+1` is the charge of fragment 2 of a counterpoise job.",
       "expected: integer (e.g. 0, +1, -1)"},
      {"MULT", {"MULTIPLICITY"}, with_fragments(positive_integer(&IN::multiplicity), &IN::multiplicity, &IN::fragment_multiplicity), "1",
       "Spin multiplicity 2S+1; `2=3` is that of fragment 2 of a counterpoise job.",
       "expected: positive integer (1=singlet, 2=doublet, 3=triplet, ...)"},
      {"SPIN", {}, spin(), "restricted",
       "Restricted or unrestricted orbitals.",
       "restricted (RHF/RKS/R) | unrestricted (UHF/UKS/U)"},
      {"SPHERICAL", {}, yes_no(&IN::spherical), "no",
       "Spherical instead of Cartesian angular functions.",
       yes_no_text},
  };
}

std::vector<KEYWORD_T> scf_rows() {
  return {
      {"SCF_MAXITER", {}, positive_integer(&IN::scf_maxiter), "150",
       "Largest number of SCF iterations.",
       "expected: positive integer (e.g. 128)"},
      {"SCF_CONVERGER", {"CONVERGER"}, converger(), "DIIS",
       "Convergence acceleration.",
       "diis | none (off/no)"},
      {"SCF_ETOL", {}, tolerance(&IN::scf_etol), "1e-8",
       "Tolerance on the energy change, hartree.",
       "expected: real number (e.g. 1e-8)"},
      {"SCF_PTOL", {}, tolerance(&IN::scf_ptol), "1e-6",
       "Tolerance on the largest change of a density element.",
       "expected: real number (e.g. 1e-6)"},
      {"LEVEL_SHIFT", {}, level_shift_value(), "AUTO",
       "Shift of the virtual orbitals, hartree; a number is applied from the first iteration.",
       "expected: AUTO, OFF, or real number"},
      {"DAMPING", {}, real_where(&IN::damping, "real", is_weight), "0",
       "Weight of the previous density in the new one, from 0 to below 1.",
       "expected: real number (e.g. 0.5)"},
      {"SCF_DIIS_ETOL", {"SCF_GTOL"}, positive_real(&IN::scf_gtol), "1e-5",
       "Tolerance on the orbital gradient norm of FPS-SPF.",
       "expected: positive real (e.g. 1e-5)"},
      {"SCF_MIN_ITER", {}, positive_integer(&IN::scf_min_iter), "5",
       "Iterations that must pass before convergence counts.",
       "expected: positive integer (e.g. 5)"},
      {"SCF_N_CONVERGED", {"SCF_NCONV"}, positive_integer(&IN::scf_n_converged), "2",
       "Consecutive converged iterations required.",
       "expected: positive integer (1 or 2)"},
      {"SCF_DIIS_COND_MAX", {"SCF_DIIS_CONDMAX"}, real_where(&IN::scf_diis_cond_max, "real > 1", exceeds_one), "1e10",
       "Condition limit of the DIIS matrix.",
       "expected: real > 1 (e.g. 1e10)"},
      {"ERI_MEMORY_LIMIT_MB", {"ERI_MEM_LIMIT_MB", "ERI_MEMORY_LIMIT", "ERI_MEM_LIMIT"},
       positive_integer(&IN::eri_memory_limit_mb), "4096",
       "Memory for stored two-electron integrals, MB; larger stores are recomputed in every iteration.",
       "expected: positive integer in MB (e.g. 4096)"},
      {"UKS_OCCUPATION", {"UHF_OCCUPATION", "OCCUPATION"}, occupation(), "AUTO",
       "Occupation control of unrestricted runs.",
       "expected: AUTO, STRICT, MOM, or MIX"},
      {"INITIAL_GUESS", {"GUESS", "SCF_GUESS"}, initial_guess(), "AUTO",
       "Starting density.",
       "expected: AUTO, SAD, or CORE"},
      {"BOYS_COOK", {"BOYS_PRECISE"}, yes_no(&IN::boys_precise), "no",
       "Precise evaluation of the Boys function for the whole run.",
       yes_no_text},
  };
}

std::vector<KEYWORD_T> functional_and_correlation_rows() {
  return {
      {"GRID", {"GRID_QUALITY"}, grid_value(), "6",
       "Integration grid of density functionals.",
       "fine | ultrafine | tm | g09 | orca7 | <integer 1..10>"},
      {"XC_DERIV", {}, xc_deriv(), "analytical",
       "Second derivatives of the exchange-correlation functional, which no job of this version needs yet.",
       "analytical (anal/exact) | numerical (num/fd)"},
      {"FROZEN_CORE", {"NFROZEN"}, integer_in(&IN::frozen_core, -1, 2147483647), "-1",
       "Orbitals left uncorrelated in MP2.",
       "expected: integer (-1=auto, 0=correlate all, n>0=freeze n)"},
      {"PUMP2", {}, yes_no(&IN::pump2), "no",
       "Spin projection of UMP2.",
       yes_no_text},
  };
}

std::vector<KEYWORD_T> geometry_rows() {
  return {
      {"GEOM_MAXITER", {"OPT_MAXITER", "OPT_MAX_ITER", "GEOM_MAX_ITER"}, positive_integer(&IN::geom_maxiter), "50",
       "Largest number of optimisation steps.",
       "expected: positive integer"},
      {"INITIAL_HESS", {"INITIAL_HESSIAN", "INIT_HESS", "MODEL_HESS", "GUESS_HESS"}, model_hessian(), "full",
       "Model Hessian that an optimisation starts from.",
       "diag (lindh) | full (almloef/coupled)"},
      {"OPT_COORD", {"OPT_COORDINATES", "OPT_COORDS"}, opt_coord(), "internal",
       "Coordinates of the optimiser.",
       "internal (rfo/redundant) | cart (bfgs/cartesian)"},
      {"GRAD_TOL", {}, tolerance(&IN::grad_tol), "4.5e-4",
       "Limit of the Cartesian optimiser and of the note on frequencies for the largest gradient component, hartree/bohr.",
       "expected: real number (e.g. 4.5e-4)"},
      {"GRAD_METHOD", {}, grad_method(), "analytical",
       "Analytic or semi-analytic gradients.",
       "analytical (full/1) | semianalytical (semi/fd/0)"},
      {"HESS_METHOD", {}, hess_method(), "numerical",
       "Analytic or numerical Hessians.",
       "analytical (full/1) | numerical (num/fd/0)"},
      {"ECP_METHOD", {}, ecp_method(), "analytical",
       "Evaluation of the integrals over effective core potentials.",
       "analytical (md/mcmurchie/1) | numerical (quadrature/num/0)"},
      {"READ_HESS", {"READ_HESSIAN"}, file_name(&IN::read_hess), "none",
       "Hessian file to start from.",
       "<file name>"},
      {"TS_MODE", {"TSMODE"}, positive_integer(&IN::ts_mode), "lowest",
       "Hessian mode that a transition-state search follows, counted from 1.",
       "expected: positive integer (1-based mode index)"},
  };
}

std::vector<KEYWORD_T> solvation_rows() {
  return {
      {"PCM", {}, pcm_model_value(), "none",
       "Continuum solvation model.",
       "cpcm, c-pcm, iefpcm, ief-pcm, pcm, cosmo, none"},
      {"SOLVENT", {}, solvent_value(), "none",
       "Solvent; `none` switches solvation off.",
       "<solvent name> | none"},
      {"EPS", {"EPSILON", "PCM_EPS"}, permittivity_value(), "of the solvent",
       "Relative permittivity in place of the solvent's.",
       "expected: real >= 1.0 (vacuum is 1.0)"},
      {"PCM_LEBEDEV", {}, positive_integer(&IN::pcm_lebedev), "110",
       "Lebedev points of a cavity sphere.",
       "expected: positive Lebedev order (e.g. 110)"},
      {"PCM_SCALING", {}, positive_real(&IN::pcm_scaling), "1.2",
       "Scaling of the cavity radii.",
       "expected: positive real (typical 1.0 - 1.4)"},
      {"PCM_SWITCH", {}, positive_real(&IN::pcm_switch), "0.2",
       "Switching width of the cavity, bohr.",
       "expected: positive real, bohr (typical 0.1 - 0.4)"},
      {"PCM_GRAD_METHOD", {"PCM_GRADIENT_METHOD"}, pcm_grad_method(), "analytical",
       "Gradient of the energy with solvation.",
       "analytical (default) or numerical"},
  };
}

std::vector<KEYWORD_T> output_rows() {
  return {
      {"PRINT_MO", {}, yes_no(&IN::print_mo), "no",
       "Print orbital energies and coefficients.",
       yes_no_text},
      {"EXPORT_MO", {"MOLDEN_MO", "EXPORT_ORBITALS"}, yes_no(&IN::export_mo), "no",
       "Write the orbitals to a Molden file.",
       yes_no_text},
      {"PRINT_TIME", {"PRINT_TIMING"}, yes_no(&IN::print_time), "no",
       "Print the timing profile at the end.",
       yes_no_text},
      {"PRINT_GRAD", {"PRINT_GRADIENT"}, yes_no(&IN::print_grad), "no",
       "Print every Cartesian gradient of the run but those of a numerical Hessian.",
       yes_no_text},
  };
}

// clang-format on

}  // namespace

const std::vector<KEYWORD_T>& keyword_table() {
  static const std::vector<KEYWORD_T> table = [] {
    std::vector<KEYWORD_T> rows;
    for (const auto& part : {job_and_molecule_rows(), scf_rows(), functional_and_correlation_rows(), geometry_rows(),
                             solvation_rows(), output_rows()}) {
      rows.insert(rows.end(), part.begin(), part.end());
    }
    return rows;
  }();
  return table;
}

const KEYWORD_T* find_keyword(std::string_view word) {
  const std::string wanted = upper(word);
  for (const KEYWORD_T& row : keyword_table()) {
    if (wanted == row.name) return &row;
    for (const char* alias : row.aliases) {
      if (wanted == alias) return &row;
    }
  }
  return nullptr;
}

}  // namespace zentrix::INPUT_PARSER

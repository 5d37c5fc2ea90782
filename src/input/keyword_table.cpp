#include "input/keyword_table.hpp"

#include <array>
#include <initializer_list>
#include <utility>

#include "constants/elements.hpp"
#include "input/text.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

constexpr const char* yes_no_text = "yes (on/true/1/T) | no (off/false/0/F) | <bare keyword for yes>";

template <auto FIELD>
bool set_integer(INPUT_DATA_T& input, std::string_view value) {
  const auto number = read_integer(value);
  if (number) input.*FIELD = *number;
  return number.has_value();
}

template <auto FIELD>
bool set_positive_integer(INPUT_DATA_T& input, std::string_view value) {
  const auto number = read_integer(value);
  if (!number || *number < 1) return false;
  input.*FIELD = *number;
  return true;
}

template <auto FIELD>
bool set_real(INPUT_DATA_T& input, std::string_view value) {
  const auto number = read_real(value);
  if (number) input.*FIELD = *number;
  return number.has_value();
}

template <auto FIELD>
bool set_positive_real(INPUT_DATA_T& input, std::string_view value) {
  const auto number = read_real(value);
  if (!number || *number <= 0.0) return false;
  input.*FIELD = *number;
  return true;
}

template <auto FIELD>
bool set_yes_no(INPUT_DATA_T& input, std::string_view value) {
  const auto answer = read_yes_no(value);
  if (answer) input.*FIELD = *answer;
  return answer.has_value();
}

template <auto FIELD>
bool set_upper(INPUT_DATA_T& input, std::string_view value) {
  input.*FIELD = upper(value);
  return true;
}

/// One choice of a word keyword: all words that mean it.
template <typename VALUE>
struct CHOICE_T {
  VALUE value;
  std::initializer_list<const char*> words;
};

template <typename VALUE>
bool choose(VALUE& field, std::string_view value, std::initializer_list<CHOICE_T<VALUE>> choices) {
  const std::string word = upper(value);
  for (const auto& choice : choices) {
    for (const char* known : choice.words) {
      if (word == known) {
        field = choice.value;
        return true;
      }
    }
  }
  return false;
}

/// "name" for all elements or "El=name" for one.
struct ELEMENT_NAME_T {
  int z = 0;  ///< 0: all elements
  std::string name;
};

ELEMENT_NAME_T split_element_name(std::string_view value) {
  const auto equals = value.find('=');
  if (equals != std::string_view::npos) {
    const int z = atomic_number(trimmed(value.substr(0, equals)));
    if (z != 0) return {z, std::string(trimmed(value.substr(equals + 1)))};
  }
  return {0, std::string(value)};
}

/// A global name replaces what was said before for all elements; an element's own name turns the global one into "mixed".
bool set_element_name(std::string_view value, std::string& global, std::string& standard, std::map<int, std::string>& own) {
  const ELEMENT_NAME_T parsed = split_element_name(value);
  if (parsed.name.empty()) return false;
  if (parsed.z == 0) {
    standard = parsed.name;
  } else {
    own[parsed.z] = parsed.name;
  }
  global = own.empty() ? standard : "mixed";
  return true;
}

bool set_level_shift(INPUT_DATA_T& input, std::string_view value) {
  if (choose<LEVEL_SHIFT>(input.level_shift_mode, value,
                          {{LEVEL_SHIFT::automatic, {"AUTO"}}, {LEVEL_SHIFT::off, {"OFF", "NONE", "NO"}}})) {
    input.level_shift = 0.0;
    return true;
  }
  const auto number = read_real(value);
  if (!number) return false;
  input.level_shift = *number;
  input.level_shift_mode = *number == 0.0 ? LEVEL_SHIFT::off : LEVEL_SHIFT::fixed;
  return true;
}

bool set_grid(INPUT_DATA_T& input, std::string_view value) {
  if (choose<std::string>(input.grid, value,
                          {{"FINE", {"FINE", "GFINE"}},
                           {"ULTRAFINE", {"ULTRAFINE", "GULTRAFINE"}},
                           {"TM", {"TM", "TREUTLER"}},
                           {"G09", {"G09", "G09REF"}},
                           {"ORCA7", {"ORCA7"}}})) {
    return true;
  }
  const auto level = read_integer(value);
  if (!level || *level < 1 || *level > 10) return false;
  input.grid = std::to_string(*level);
  return true;
}

bool set_condition_limit(INPUT_DATA_T& input, std::string_view value) {
  const auto number = read_real(value);
  if (!number || *number <= 1.0) return false;
  input.scf_diis_cond_max = *number;
  return true;
}

bool set_frozen_core(INPUT_DATA_T& input, std::string_view value) {
  const auto number = read_integer(value);
  if (!number || *number < -1) return false;
  input.frozen_core = *number;
  return true;
}

bool set_solvent(INPUT_DATA_T& input, std::string_view value) {
  const std::string word = upper(value);
  const bool off = word == "NONE" || word == "OFF" || word == "NO" || word == "FALSE";
  input.solvent_given = !off;
  input.solvent = off ? "" : std::string(value);
  return true;
}

bool set_eps(INPUT_DATA_T& input, std::string_view value) {
  const auto number = read_real(value);
  if (!number || *number < 1.0) return false;
  input.eps = *number;
  input.eps_given = true;
  return true;
}

bool set_pcm(INPUT_DATA_T& input, std::string_view value) {
  if (!choose<PCM_MODEL>(input.pcm_model, value,
                         {{PCM_MODEL::cpcm, {"CPCM", "C-PCM", "C_PCM"}},
                          {PCM_MODEL::iefpcm, {"IEFPCM", "IEF-PCM", "IEF_PCM", "PCM"}},
                          {PCM_MODEL::cosmo, {"COSMO"}},
                          {PCM_MODEL::none, {"NONE"}}})) {
    return false;
  }
  input.pcm_given = input.pcm_model != PCM_MODEL::none;
  return true;
}

using IN = INPUT_DATA_T;
using VIEW = std::string_view;

std::vector<KEYWORD_T> job_and_molecule_rows() {
  return {
      {"METHOD", {}, "name", "HF", "Method or density functional.", "", false, false, set_upper<&IN::method>},
      {"DISPERSION",
       {"DISP"},
       "word",
       "NONE",
       "Empirical dispersion correction.",
       "none | d3 | d4",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<std::string>(
             in.dispersion, v, {{"NONE", {"NONE", "OFF", "NO"}}, {"D3", {"D3", "D3BJ", "D3(BJ)", "D3-BJ"}}, {"D4", {"D4"}}});
       }},
      {"BASIS",
       {},
       "name, or El=name for one element",
       "STO-3G",
       "Basis set; the name may contain blanks.",
       "<basis name> | <element>=<basis name>",
       true,
       false,
       [](IN& in, VIEW v) { return set_element_name(v, in.basis, in.default_basis, in.element_basis); }},
      {"ECP",
       {},
       "name, or El=name for one element",
       "automatic",
       "Effective core potential; none switches automatic detection off.",
       "<ECP name> | <element>=<ECP name> | none",
       true,
       false,
       [](IN& in, VIEW v) { return set_element_name(v, in.ecp, in.default_ecp, in.element_ecp); }},
      {"JOB",
       {},
       "word",
       "energy",
       "What to compute.",
       "energy | gradient | opt | freq | opt+freq | bsse | scan | scanopt | ts | ts+freq",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<JOB>(in.job, v,
                            {{JOB::energy, {"ENERGY", "SP", "SINGLE"}},
                             {JOB::gradient, {"GRADIENT", "GRAD", "FORCE"}},
                             {JOB::opt, {"OPT", "OPTIMIZE"}},
                             {JOB::freq, {"FREQ", "FREQUENCY", "HESSIAN"}},
                             {JOB::opt_freq, {"OPT+FREQ", "OPTFREQ"}},
                             {JOB::bsse, {"BSSE", "COUNTERPOISE", "CP"}},
                             {JOB::scan, {"SCAN", "PESCAN", "RIGID_SCAN"}},
                             {JOB::scanopt, {"SCANOPT", "RELAXED_SCAN", "SCAN+OPT"}},
                             {JOB::ts, {"TS", "OPT_TS", "OPTTS"}},
                             {JOB::ts_freq, {"TS+FREQ", "TSFREQ", "OPT_TS+FREQ", "OPTTSFREQ"}}});
       }},
      {"CHARGE",
       {},
       "integer",
       "0",
       "Total charge.",
       "expected: integer (e.g. 0, +1, -1)",
       false,
       false,
       set_integer<&IN::charge>},
      {"MULT",
       {"MULTIPLICITY"},
       "positive integer",
       "1",
       "Spin multiplicity 2S+1.",
       "expected: positive integer (1=singlet, 2=doublet, 3=triplet, ...)",
       false,
       false,
       set_positive_integer<&IN::multiplicity>},
      {"SPIN",
       {},
       "word",
       "restricted",
       "Restricted or unrestricted orbitals.",
       "restricted (RHF/RKS/R) | unrestricted (UHF/UKS/U)",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<bool>(in.unrestricted, v,
                             {{true, {"UNRESTRICTED", "UHF", "UKS", "U"}}, {false, {"RESTRICTED", "RHF", "RKS", "R"}}});
       }},
      {"SPHERICAL",
       {},
       "yes/no",
       "no",
       "Spherical instead of Cartesian angular functions.",
       yes_no_text,
       false,
       true,
       set_yes_no<&IN::spherical>},
  };
}

std::vector<KEYWORD_T> scf_rows() {
  return {
      {"SCF_MAXITER",
       {},
       "positive integer",
       "150",
       "Largest number of SCF iterations.",
       "expected: positive integer (e.g. 128)",
       false,
       false,
       set_positive_integer<&IN::scf_maxiter>},
      {"SCF_CONVERGER",
       {"CONVERGER"},
       "word",
       "DIIS",
       "Convergence acceleration.",
       "diis | none (off)",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<std::string>(in.scf_converger, v, {{"DIIS", {"DIIS"}}, {"NONE", {"NONE", "OFF"}}});
       }},
      {"SCF_ETOL",
       {},
       "real",
       "1e-8",
       "Tolerance on the energy change, hartree.",
       "expected: real number (e.g. 1e-8)",
       false,
       false,
       set_real<&IN::scf_etol>},
      {"SCF_PTOL",
       {},
       "real",
       "1e-6",
       "Tolerance on the largest change of a density element.",
       "expected: real number (e.g. 1e-6)",
       false,
       false,
       set_real<&IN::scf_ptol>},
      {"LEVEL_SHIFT",
       {},
       "word or real",
       "AUTO",
       "Shift of the virtual orbitals, hartree.",
       "expected: AUTO, OFF, or real number",
       false,
       false,
       set_level_shift},
      {"DAMPING",
       {},
       "real",
       "0",
       "Weight of the previous density in the new one.",
       "expected: real number (e.g. 0.5)",
       false,
       false,
       set_real<&IN::damping>},
      {"SCF_DIIS_ETOL",
       {"SCF_GTOL"},
       "positive real",
       "1e-5",
       "Tolerance on the orbital gradient ||FPS-SPF||.",
       "expected: positive real (e.g. 1e-5)",
       false,
       false,
       set_positive_real<&IN::scf_gtol>},
      {"SCF_MIN_ITER",
       {},
       "positive integer",
       "5",
       "Iterations that must pass before convergence counts.",
       "expected: positive integer (e.g. 5)",
       false,
       false,
       set_positive_integer<&IN::scf_min_iter>},
      {"SCF_N_CONVERGED",
       {"SCF_NCONV"},
       "positive integer",
       "2",
       "Consecutive converged iterations required.",
       "expected: positive integer (1 or 2)",
       false,
       false,
       set_positive_integer<&IN::scf_n_converged>},
      {"SCF_DIIS_COND_MAX",
       {"SCF_DIIS_CONDMAX"},
       "real > 1",
       "1e10",
       "Condition limit of the DIIS matrix.",
       "expected: real > 1 (e.g. 1e10)",
       false,
       false,
       set_condition_limit},
      {"ERI_MEMORY_LIMIT_MB",
       {"ERI_MEM_LIMIT_MB", "ERI_MEMORY_LIMIT", "ERI_MEM_LIMIT"},
       "positive integer",
       "4096",
       "Memory for stored integrals, MB; above it they are recomputed.",
       "expected: positive integer in MB (e.g. 4096)",
       false,
       false,
       set_positive_integer<&IN::eri_memory_limit_mb>},
      {"UKS_OCCUPATION",
       {"UHF_OCCUPATION", "OCCUPATION"},
       "word",
       "AUTO",
       "Occupation control of unrestricted runs.",
       "expected: AUTO, STRICT, MOM, or MIX",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<OCCUPATION>(in.occupation, v,
                                   {{OCCUPATION::automatic, {"AUTO"}},
                                    {OCCUPATION::strict, {"STRICT", "AUFBAU"}},
                                    {OCCUPATION::mom, {"MOM", "MAXOV", "MAX_OVERLAP"}},
                                    {OCCUPATION::mix, {"MIX", "REMIX"}}});
       }},
      {"INITIAL_GUESS",
       {"GUESS", "SCF_GUESS"},
       "word",
       "AUTO",
       "Starting density.",
       "expected: AUTO, SAD, or CORE",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<GUESS>(
             in.initial_guess, v,
             {{GUESS::automatic, {"AUTO"}}, {GUESS::sad, {"SAD"}}, {GUESS::core, {"CORE", "HCORE", "CORE_H"}}});
       }},
      {"BOYS_COOK",
       {"BOYS_PRECISE"},
       "yes/no",
       "no",
       "Boys function by its series instead of the table.",
       yes_no_text,
       false,
       true,
       set_yes_no<&IN::boys_precise>},
      {"GRID",
       {"GRID_QUALITY"},
       "word or 1 to 10",
       "6",
       "Integration grid of density functionals.",
       "fine | ultrafine | tm | g09 | orca7 | <integer 1..10>",
       false,
       false,
       set_grid},
      {"XC_DERIV",
       {},
       "word",
       "analytical",
       "Second derivatives of the functional.",
       "analytical (anal/exact) | numerical (num/fd)",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<DERIVATIVE>(in.xc_deriv, v,
                                   {{DERIVATIVE::analytical, {"ANALYTICAL", "ANAL", "EXACT"}},
                                    {DERIVATIVE::numerical, {"NUMERICAL", "NUM", "FD"}}});
       }},
      {"FROZEN_CORE",
       {"NFROZEN"},
       "integer",
       "-1",
       "Orbitals left uncorrelated in MP2.",
       "expected: integer (-1=auto, 0=correlate all, n>0=freeze n)",
       false,
       false,
       set_frozen_core},
      {"PUMP2", {}, "yes/no", "no", "Spin projection of UMP2.", yes_no_text, false, true, set_yes_no<&IN::pump2>},
  };
}

std::vector<KEYWORD_T> geometry_rows() {
  return {
      {"GEOM_MAXITER",
       {"OPT_MAXITER", "OPT_MAX_ITER", "GEOM_MAX_ITER"},
       "positive integer",
       "50",
       "Largest number of optimisation steps.",
       "expected: positive integer",
       false,
       false,
       set_positive_integer<&IN::geom_maxiter>},
      {"INITIAL_HESS",
       {"INITIAL_HESSIAN", "INIT_HESS", "MODEL_HESS", "GUESS_HESS"},
       "word",
       "full",
       "Model Hessian an optimisation starts from.",
       "diag (lindh) | full (almloef/coupled)",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<MODEL_HESSIAN>(in.initial_hess, v,
                                      {{MODEL_HESSIAN::diag, {"DIAG", "DIAGONAL", "LINDH"}},
                                       {MODEL_HESSIAN::full, {"FULL", "ALMLOF", "ALMLOEF", "COUPLED"}}});
       }},
      {"OPT_COORD",
       {"OPT_COORDINATES", "OPT_COORDS"},
       "word",
       "internal",
       "Coordinates of the optimiser.",
       "internal (rfo/redundant) | cart (bfgs/cartesian)",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<OPT_COORD>(
             in.opt_coord, v,
             {{OPT_COORD::internal, {"INTERNAL", "INTERNALS", "REDUNDANT", "RFO", "INT"}},
              {OPT_COORD::cartesian, {"CART", "CARTESIAN", "BFGS", "CART_BFGS", "CARTESIAN_BFGS", "XYZ"}}});
       }},
      {"GRAD_TOL",
       {},
       "real",
       "4.5e-4",
       "Optimiser's tolerance on the largest gradient component, hartree/bohr.",
       "expected: real number (e.g. 4.5e-4)",
       false,
       false,
       set_real<&IN::grad_tol>},
      {"GRAD_METHOD",
       {},
       "word",
       "analytical",
       "Analytic or semi-analytic gradients.",
       "analytical (full/1) | semianalytical (semi/fd/0)",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<bool>(in.semi_analytical_gradient, v,
                             {{false, {"ANALYTICAL", "FULL", "1"}}, {true, {"SEMIANALYTICAL", "SEMI", "FD", "0"}}});
       }},
      {"HESS_METHOD",
       {},
       "word",
       "numerical",
       "Analytic or numerical Hessians.",
       "analytical (full/1) | numerical (num/fd/0)",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<DERIVATIVE>(in.hess_method, v,
                                   {{DERIVATIVE::analytical, {"ANALYTICAL", "FULL", "1"}},
                                    {DERIVATIVE::numerical, {"NUMERICAL", "NUM", "FD", "0"}}});
       }},
      {"ECP_METHOD",
       {},
       "word",
       "analytical",
       "Evaluation of ECP integrals.",
       "analytical (md/mcmurchie/1) | numerical (quadrature/num/0)",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<DERIVATIVE>(in.ecp_method, v,
                                   {{DERIVATIVE::analytical, {"ANALYTICAL", "MD", "MCMURCHIE", "1"}},
                                    {DERIVATIVE::numerical, {"NUMERICAL", "QUADRATURE", "NUM", "0"}}});
       }},
      {"READ_HESS",
       {"READ_HESSIAN"},
       "file name",
       "none",
       "Hessian file to start from.",
       "<file name>",
       true,
       false,
       [](IN& in, VIEW v) {
         in.read_hess = std::string(v);
         return true;
       }},
      {"TS_MODE",
       {"TSMODE"},
       "positive integer",
       "lowest",
       "Hessian mode a transition-state search follows.",
       "expected: positive integer (1-based mode index)",
       false,
       false,
       set_positive_integer<&IN::ts_mode>},
  };
}

std::vector<KEYWORD_T> solvent_and_output_rows() {
  return {
      {"PCM",
       {},
       "word",
       "none",
       "Continuum solvation model.",
       "cpcm, c-pcm, iefpcm, ief-pcm, pcm, cosmo, none",
       false,
       false,
       set_pcm},
      {"SOLVENT",
       {},
       "name",
       "none",
       "Solvent; none switches solvation off.",
       "<solvent name> | none",
       false,
       false,
       set_solvent},
      {"EPS",
       {"EPSILON", "PCM_EPS"},
       "real >= 1",
       "of the solvent",
       "Relative permittivity.",
       "expected: real >= 1.0 (vacuum is 1.0)",
       false,
       false,
       set_eps},
      {"PCM_LEBEDEV",
       {},
       "positive integer",
       "110",
       "Lebedev points of a cavity sphere.",
       "expected: positive Lebedev order (e.g. 110)",
       false,
       false,
       set_positive_integer<&IN::pcm_lebedev>},
      {"PCM_SCALING",
       {},
       "positive real",
       "1.2",
       "Scaling of the cavity radii.",
       "expected: positive real (typical 1.0 - 1.4)",
       false,
       false,
       set_positive_real<&IN::pcm_scaling>},
      {"PCM_SWITCH",
       {},
       "positive real",
       "0.2",
       "Switching width of the cavity, bohr.",
       "expected: positive real, bohr (typical 0.1 - 0.4)",
       false,
       false,
       set_positive_real<&IN::pcm_switch>},
      {"PCM_GRAD_METHOD",
       {"PCM_GRADIENT_METHOD"},
       "word",
       "analytical",
       "Gradient with solvation.",
       "analytical (default) or numerical",
       false,
       false,
       [](IN& in, VIEW v) {
         return choose<DERIVATIVE>(in.pcm_grad_method, v,
                                   {{DERIVATIVE::analytical, {"ANALYTICAL", "ANA", "AN", "TRUE", "YES", "ON"}},
                                    {DERIVATIVE::numerical, {"NUMERICAL", "NUM", "FD", "FALSE", "NO", "OFF"}}});
       }},
      {"PRINT_MO",
       {},
       "yes/no",
       "no",
       "Print orbital energies and coefficients.",
       yes_no_text,
       false,
       true,
       set_yes_no<&IN::print_mo>},
      {"EXPORT_MO",
       {"MOLDEN_MO", "EXPORT_ORBITALS"},
       "yes/no",
       "no",
       "Write the orbitals to a Molden file.",
       yes_no_text,
       false,
       true,
       set_yes_no<&IN::export_mo>},
      {"PRINT_TIME",
       {"PRINT_TIMING"},
       "yes/no",
       "no",
       "Print the timing profile at the end.",
       yes_no_text,
       false,
       true,
       set_yes_no<&IN::print_time>},
      {"PRINT_GRAD",
       {"PRINT_GRADIENT"},
       "yes/no",
       "no",
       "Print the Cartesian gradient.",
       yes_no_text,
       false,
       true,
       set_yes_no<&IN::print_grad>},
  };
}

}  // namespace

const std::vector<KEYWORD_T>& keyword_table() {
  static const std::vector<KEYWORD_T> table = [] {
    std::vector<KEYWORD_T> rows;
    for (auto& part : {job_and_molecule_rows(), scf_rows(), geometry_rows(), solvent_and_output_rows()}) {
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

std::string keyword_manual() {
  std::string text =
      "# Keywords\n\n"
      "Made from the program's keyword table by `zentrix --keywords`; do not edit by hand.\n\n"
      "A keyword line is `%KEYWORD value`, in any case. Keywords in parentheses are full equivalents. A yes/no keyword "
      "written\n"
      "alone means yes.\n\n"
      "| keyword | value | default | meaning | accepted |\n|---|---|---|---|---|\n";
  for (const KEYWORD_T& row : keyword_table()) {
    text += std::string("| `") + row.name + "`";
    for (std::size_t i = 0; i < row.aliases.size(); ++i) {
      text += std::string(i == 0 ? " (" : ", ") + "`" + row.aliases[i] + "`" + (i + 1 == row.aliases.size() ? ")" : "");
    }
    std::string valid;
    for (const char* c = row.valid; *c != '\0'; ++c) {
      if (*c == '|') valid += '\\';
      valid += *c;
    }
    text += std::string(" | ") + row.value + " | " + row.standard + " | " + row.meaning + " | " +
            (valid.empty() ? "" : "`" + valid + "`") + " |\n";
  }
  return text;
}

}  // namespace zentrix::INPUT_PARSER

#include "input/value_readers.hpp"

#include <cmath>

#include "constants/elements.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

/// Hartree; far beyond any use, and no orbital energy loses its digits.
constexpr double largest_shift = 1000.0;

/// "name" for all elements (z = 0) or "El=name" for one.
struct ELEMENT_NAME_T {
  int z = 0;
  std::string name;
};

/// An empty name means that the value is not valid. No basis set or potential has a '=' in its name, so what stands before
/// one must be an element.
ELEMENT_NAME_T split_element_name(std::string_view value) {
  const auto equals = value.find('=');
  if (equals == std::string_view::npos) return {0, std::string(value)};
  const int z = atomic_number(trimmed(value.substr(0, equals)));
  if (z == 0) return {};
  return {z, std::string(trimmed(value.substr(equals + 1)))};
}

/// Fields of the record that one per-element name fills.
struct NAME_FIELDS_T {
  std::string INPUT_DATA_T::*global;
  std::string INPUT_DATA_T::*standard;
  std::map<int, std::string> INPUT_DATA_T::*own;
};

/// A plain name is for the elements without one of their own, in whatever order the lines stand; a name for one element
/// turns the global one into "mixed".
VALUE_READER_T element_names(NAME_FIELDS_T fields, const char* kind) {
  VALUE_READER_T reader = {kind, [=](INPUT_DATA_T& input, std::string_view value) {
                             ELEMENT_NAME_T parsed = split_element_name(value);
                             if (parsed.name.empty()) return false;
                             if (upper(parsed.name) == "NONE") parsed.name = "none";
                             if (parsed.z == 0) {
                               input.*fields.standard = parsed.name;
                             } else {
                               (input.*fields.own)[parsed.z] = parsed.name;
                             }
                             input.*fields.global = (input.*fields.own).empty() ? input.*fields.standard : "mixed";
                             return true;
                           }};
  reader.rest_of_line = true;
  return reader;
}

}  // namespace

/// The whole rest of the line: "PBE 0" is not PBE, and "B3LYP D3" not B3LYP.
VALUE_READER_T method_value() {
  VALUE_READER_T reader = upper_word(&INPUT_DATA_T::method, "name");
  reader.set = [upper_case = reader.set](INPUT_DATA_T& input, std::string_view value) {
    input.method_as_written = std::string(value);
    return upper_case(input, value);
  };
  reader.rest_of_line = true;
  return reader;
}

VALUE_READER_T level_shift_value() {
  VALUE_READER_T reader = one_of(&INPUT_DATA_T::level_shift_mode,
                                 {{LEVEL_SHIFT::automatic, {"AUTO"}}, {LEVEL_SHIFT::off, {"OFF", "NONE", "NO"}}});
  reader.kind = "word or real";
  reader.set = [known = reader.set](INPUT_DATA_T& input, std::string_view value) {
    const auto number = read_real(value);
    if (number && std::abs(*number) > largest_shift) return false;
    if (number) input.level_shift_mode = *number == 0.0 ? LEVEL_SHIFT::off : LEVEL_SHIFT::fixed;
    input.level_shift = number.value_or(0.0);
    return number.has_value() || known(input, value);
  };
  return reader;
}

VALUE_READER_T grid_value() {
  VALUE_READER_T reader = one_of(&INPUT_DATA_T::grid, {{"FINE", {"FINE", "GFINE"}},
                                                       {"ULTRAFINE", {"ULTRAFINE", "GULTRAFINE"}},
                                                       {"TM", {"TM", "TREUTLER"}},
                                                       {"G09", {"G09", "G09REF"}},
                                                       {"ORCA7", {"ORCA7"}}});
  reader.kind = "word or 1 to 10";
  reader.set = [known = reader.set](INPUT_DATA_T& input, std::string_view value) {
    const auto level = read_integer(value);
    if (level && (*level < 1 || *level > 10)) return false;
    if (level) input.grid = std::to_string(*level);
    return level.has_value() || known(input, value);
  };
  return reader;
}

VALUE_READER_T pcm_model_value() {
  VALUE_READER_T reader = one_of(&INPUT_DATA_T::pcm_model, {{PCM_MODEL::cpcm, {"CPCM", "C-PCM", "C_PCM"}},
                                                            {PCM_MODEL::iefpcm, {"IEFPCM", "IEF-PCM", "IEF_PCM", "PCM"}},
                                                            {PCM_MODEL::cosmo, {"COSMO"}},
                                                            {PCM_MODEL::none, {"NONE"}}});
  reader.set = [known = reader.set](INPUT_DATA_T& input, std::string_view value) {
    if (!known(input, value)) return false;
    input.pcm_off = input.pcm_model == PCM_MODEL::none;
    input.pcm_given = !input.pcm_off;
    return true;
  };
  return reader;
}

VALUE_READER_T solvent_value() {
  const WORD_GROUP_T off = {"NONE", "OFF", "NO", "FALSE"};
  VALUE_READER_T reader = {"solvent name or word", [=](INPUT_DATA_T& input, std::string_view value) {
                             const std::string word = upper(value);
                             input.solvation_off = false;
                             for (const std::string& known : off) input.solvation_off = input.solvation_off || word == known;
                             input.solvent_given = !input.solvation_off;
                             input.solvent = input.solvation_off ? "" : std::string(value);
                             return true;
                           }};
  reader.words = {off};
  return reader;
}

VALUE_READER_T permittivity_value() {
  VALUE_READER_T reader = real_where(&INPUT_DATA_T::eps, "real >= 1", [](double x) { return x >= 1.0; });
  reader.set = [number = reader.set](INPUT_DATA_T& input, std::string_view value) {
    if (!number(input, value)) return false;
    input.eps_given = true;
    return true;
  };
  return reader;
}

VALUE_READER_T basis_value() {
  return element_names({&INPUT_DATA_T::basis, &INPUT_DATA_T::default_basis, &INPUT_DATA_T::element_basis},
                       "name, or El=name for one element");
}

VALUE_READER_T ecp_value() {
  return element_names({&INPUT_DATA_T::ecp, &INPUT_DATA_T::default_ecp, &INPUT_DATA_T::element_ecp},
                       "name, or El=name for one element");
}

}  // namespace zentrix::INPUT_PARSER

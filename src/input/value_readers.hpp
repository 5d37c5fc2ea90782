#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "input/input_data.hpp"
#include "input/text.hpp"

// How the value of a keyword becomes a setting: one reader for each kind of value, made for the field it fills.

namespace zentrix::INPUT_PARSER {

/// Words that mean the same; the first is the name, the others are equivalents.
using WORD_GROUP_T = std::vector<std::string>;

struct VALUE_READER_T {
  std::string kind;                                                      ///< "integer", "yes/no", ..., for the manual
  std::function<bool(INPUT_DATA_T& input, std::string_view value)> set;  ///< false: the value is not valid
  std::vector<WORD_GROUP_T> words = {};                                  ///< the words it takes, where it takes words
  bool rest_of_line = false;                                             ///< the value may contain blanks
  bool bare_yes = false;                                                 ///< the keyword written alone means yes
};

/// An integer from `least` to `most`.
inline VALUE_READER_T integer_in(int INPUT_DATA_T::*field, int least, int most, const char* kind = "integer") {
  return {kind, [=](INPUT_DATA_T& input, std::string_view value) {
            const auto number = read_integer(value);
            if (!number || *number < least || *number > most) return false;
            input.*field = *number;
            return true;
          }};
}

inline VALUE_READER_T positive_integer(int INPUT_DATA_T::*field, int most = 2147483647) {
  return integer_in(field, 1, most, "positive integer");
}

/// The same for the molecule, or "k=value" for fragment k of a counterpoise job.
inline VALUE_READER_T with_fragments(VALUE_READER_T whole, int INPUT_DATA_T::*field, std::map<int, int> INPUT_DATA_T::*own) {
  whole.kind += ", or k=value for fragment k";
  whole.set = [set = whole.set, field, own](INPUT_DATA_T& input, std::string_view value) {
    const auto equals = value.find('=');
    if (equals == std::string_view::npos) return set(input, value);
    const auto fragment = read_integer(value.substr(0, equals));
    INPUT_DATA_T read;
    if (!fragment || *fragment < 1 || !set(read, value.substr(equals + 1))) return false;
    (input.*own)[*fragment] = read.*field;
    return true;
  };
  return whole;
}

/// A finite real number for which `accepted` holds.
inline VALUE_READER_T real_where(double INPUT_DATA_T::*field, const char* kind, bool (*accepted)(double)) {
  return {kind, [=](INPUT_DATA_T& input, std::string_view value) {
            const auto number = read_real(value);
            if (!number || !accepted(*number)) return false;
            input.*field = *number;
            return true;
          }};
}

inline VALUE_READER_T positive_real(double INPUT_DATA_T::*field) {
  return real_where(field, "positive real", [](double x) { return x > 0.0; });
}

inline VALUE_READER_T yes_no(bool INPUT_DATA_T::*field) {
  VALUE_READER_T reader = {"yes/no", [=](INPUT_DATA_T& input, std::string_view value) {
                             const auto answer = read_yes_no(value);
                             if (answer) input.*field = *answer;
                             return answer.has_value();
                           }};
  reader.bare_yes = true;
  return reader;
}

/// Any word, stored in upper case; the subsystem that it selects from judges it.
inline VALUE_READER_T upper_word(std::string INPUT_DATA_T::*field, const char* kind) {
  return {kind, [=](INPUT_DATA_T& input, std::string_view value) {
            input.*field = upper(value);
            return true;
          }};
}

/// A file name, case and blanks kept.
inline VALUE_READER_T file_name(std::string INPUT_DATA_T::*field) {
  VALUE_READER_T reader = {"file name", [=](INPUT_DATA_T& input, std::string_view value) {
                             input.*field = std::string(value);
                             return true;
                           }};
  reader.rest_of_line = true;
  return reader;
}

/// One meaning of a word keyword with all words for it.
template <typename VALUE>
struct CHOICE_T {
  VALUE value;
  WORD_GROUP_T words;
};

/// One of several words, in any case.
template <typename VALUE>
VALUE_READER_T one_of(VALUE INPUT_DATA_T::*field, const std::vector<CHOICE_T<std::type_identity_t<VALUE>>>& choices) {
  VALUE_READER_T reader = {"word", [=](INPUT_DATA_T& input, std::string_view value) {
                             const std::string word = upper(value);
                             for (const auto& choice : choices) {
                               for (const std::string& known : choice.words) {
                                 if (word != known) continue;
                                 input.*field = choice.value;
                                 return true;
                               }
                             }
                             return false;
                           }};
  for (const auto& choice : choices) reader.words.push_back(choice.words);
  return reader;
}

/// A reader that does more than fill one field: "AUTO" or a number, a word that also raises a flag.
VALUE_READER_T method_value();
VALUE_READER_T level_shift_value();
VALUE_READER_T grid_value();
VALUE_READER_T pcm_model_value();
VALUE_READER_T solvent_value();
VALUE_READER_T permittivity_value();
VALUE_READER_T basis_value();
VALUE_READER_T ecp_value();

}  // namespace zentrix::INPUT_PARSER

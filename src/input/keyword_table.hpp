#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "input/value_readers.hpp"

// The one table of input keywords: parsing, error messages and the manual's keyword chapter all follow from it.

namespace zentrix::INPUT_PARSER {

struct KEYWORD_T {
  const char* name;                  ///< without '%', upper case
  std::vector<const char*> aliases;  ///< full equivalents
  VALUE_READER_T value;              ///< kind of value and the field it fills
  const char* standard;              ///< default, for the manual
  const char* meaning;               ///< one line for the manual
  const char* valid;                 ///< text after "Valid: " when a value is refused
};

const std::vector<KEYWORD_T>& keyword_table();

/// Row of a keyword or alias in any case; null when there is none.
const KEYWORD_T* find_keyword(std::string_view word);

/// The keyword chapter of the manual, in Markdown, made from the table.
std::string keyword_manual();

}  // namespace zentrix::INPUT_PARSER

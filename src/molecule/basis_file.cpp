#include "molecule/basis_file.hpp"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <optional>
#include <string_view>

#include "constants/elements.hpp"
#include "constants/limits.hpp"
#include "input/text.hpp"

namespace zentrix {
namespace {

constexpr std::string_view shell_letters = "SPDFGHI";
/// No published contraction is this long; a larger count is a damaged file.
constexpr int largest_contraction = 1000;

using INPUT_PARSER::read_integer;
using INPUT_PARSER::read_real;

std::vector<std::string> words(const std::string& line) {
  const auto found = INPUT_PARSER::words(line);
  return {found.begin(), found.end()};
}

/// Next line that is neither empty nor a comment, as words; none at the end of the file.
std::optional<std::vector<std::string>> next_words(std::istream& file) {
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] == '!') continue;
    std::vector<std::string> found = words(line);
    if (!found.empty()) return found;
  }
  return std::nullopt;
}

bool is_separator(const std::vector<std::string>& line) { return line[0].compare(0, 4, "****") == 0; }

/// Moves to the block of element z: the first words after a separator name the element.
DATA_STATUS find_element(std::istream& file, int z) {
  if (z < 1) return DATA_STATUS::no_element;
  bool at_block_start = true;
  for (std::string line; std::getline(file, line);) {
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos || line[0] == '!') continue;
    if (line.compare(first, 4, "****") == 0) {
      at_block_start = true;
    } else if (at_block_start) {
      const std::vector<std::string> found = words(line);
      if (found.empty()) continue;
      if (atomic_number(found[0]) == z) return DATA_STATUS::ok;
      at_block_start = false;
    }
  }
  return DATA_STATUS::no_element;
}

/// Reads nprim lines of an exponent and one coefficient per column.
bool read_primitives(std::istream& file, int nprim, double scale, std::vector<SHELL_T*> columns) {
  for (int k = 0; k < nprim; ++k) {
    const auto line = next_words(file);
    if (!line || line->size() < 1 + columns.size()) return false;
    const auto exponent = read_real((*line)[0]);
    const double scaled = exponent.value_or(0.0) * scale * scale;
    if (!(scaled > 0.0) || !std::isfinite(scaled)) return false;
    for (std::size_t c = 0; c < columns.size(); ++c) {
      const auto coefficient = read_real((*line)[c + 1]);
      if (!coefficient) return false;
      columns[c]->alpha.push_back(scaled);
      columns[c]->coeff.push_back(*coefficient);
    }
  }
  return true;
}

DATA_STATUS read_shell(std::istream& file, const std::vector<std::string>& header, ELEMENT_BASIS_T& basis) {
  const std::string type = INPUT_PARSER::upper(header[0]);
  const auto nprim = header.size() > 1 ? read_integer(header[1]) : std::nullopt;
  const auto scale = header.size() > 2 ? read_real(header[2]) : std::optional<double>(1.0);
  if (!nprim || *nprim < 1 || *nprim > largest_contraction || !scale || *scale <= 0.0) return DATA_STATUS::parse_error;
  std::vector<int> momenta;
  if (type == "SP") {
    momenta = {0, 1};
  } else {
    const auto l = type.size() == 1 ? shell_letters.find(type[0]) : std::string_view::npos;
    if (l == std::string_view::npos) return DATA_STATUS::parse_error;
    momenta = {static_cast<int>(l)};
    if (momenta[0] > LMAX_BASIS) {
      basis.refused_letter = type[0];
      basis.refused_l = momenta[0];
      return DATA_STATUS::angular_momentum;
    }
  }
  std::vector<SHELL_T> shells(momenta.size());
  std::vector<SHELL_T*> columns;
  for (std::size_t k = 0; k < shells.size(); ++k) {
    shells[k].l = momenta[k];
    shells[k].nprim = *nprim;
    columns.push_back(&shells[k]);
  }
  if (!read_primitives(file, *nprim, *scale, columns)) return DATA_STATUS::parse_error;
  basis.shells.insert(basis.shells.end(), shells.begin(), shells.end());
  return DATA_STATUS::ok;
}

bool read_terms(std::istream& file, std::vector<ECP_TERM_T>& terms) {
  const auto title = next_words(file);
  const auto count_line = title && !is_separator(*title) ? next_words(file) : std::nullopt;
  const auto count = count_line ? read_integer((*count_line)[0]) : std::nullopt;
  if (!count || *count < 0 || *count > largest_contraction) return false;
  for (int k = 0; k < *count; ++k) {
    const auto line = next_words(file);
    if (!line || line->size() < 3) return false;
    const auto n = read_integer((*line)[0]);
    const auto exponent = read_real((*line)[1]);
    const auto coefficient = read_real((*line)[2]);
    if (!n || *n < 0 || *n > 10 || !exponent || *exponent <= 0.0 || !coefficient) return false;
    terms.push_back({*n, *exponent, *coefficient});
  }
  return true;
}

template <typename READER, typename RECORD>
DATA_STATUS read_file(const std::string& path, int z, RECORD& record, READER reader) {
  std::ifstream file(path);
  if (!file || (file.peek() == std::char_traits<char>::eof() && !file.eof())) return DATA_STATUS::no_file;
  file.clear();
  return reader(file, z, record);
}

}  // namespace

DATA_STATUS read_basis(std::istream& file, int z, ELEMENT_BASIS_T& basis) {
  basis = {};
  if (find_element(file, z) != DATA_STATUS::ok) return DATA_STATUS::no_element;
  while (const auto line = next_words(file)) {
    if (is_separator(*line)) break;
    if (const DATA_STATUS status = read_shell(file, *line, basis); status != DATA_STATUS::ok) return status;
  }
  return basis.shells.empty() ? DATA_STATUS::parse_error : DATA_STATUS::ok;
}

DATA_STATUS read_ecp(std::istream& file, int z, ECP_T& ecp) {
  ecp = {};
  if (find_element(file, z) != DATA_STATUS::ok) return DATA_STATUS::no_element;
  const auto header = next_words(file);
  if (!header || header->size() < 3) return DATA_STATUS::parse_error;
  const auto l_max = read_integer((*header)[1]);
  const auto n_core = read_integer((*header)[2]);
  if (!l_max || *l_max < 0 || *l_max > LMAX_WORK || !n_core || *n_core < 0 || *n_core >= z) return DATA_STATUS::parse_error;
  ecp.l_max = *l_max;
  ecp.n_core = *n_core;
  ecp.semi_local.resize(static_cast<std::size_t>(*l_max));
  if (!read_terms(file, ecp.local)) return DATA_STATUS::parse_error;
  for (auto& terms : ecp.semi_local) {
    if (!read_terms(file, terms)) return DATA_STATUS::parse_error;
  }
  return DATA_STATUS::ok;
}

DATA_STATUS read_basis_file(const std::string& path, int z, ELEMENT_BASIS_T& basis) {
  return read_file(path, z, basis, read_basis);
}

DATA_STATUS read_ecp_file(const std::string& path, int z, ECP_T& ecp) { return read_file(path, z, ecp, read_ecp); }

}  // namespace zentrix

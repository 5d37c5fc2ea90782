#include "dispersion/d3_data.hpp"

#include <fmt/ostream.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>

#include "input/text.hpp"

namespace zentrix::DISPERSION {
namespace {

using INPUT_PARSER::read_integer;
using INPUT_PARSER::read_real;

constexpr double same_reference = 1e-6;
constexpr double radius_factor = 4.0 / 3.0;

bool is_element(int z) { return z >= 1 && z <= D3_MAX_Z; }

/// The next line with data; none at the end of the file.
std::optional<std::string> next_line(std::istream& file) {
  for (std::string line; std::getline(file, line);) {
    const std::string_view text = INPUT_PARSER::trimmed(line);
    if (!text.empty() && text[0] != '#' && text[0] != '!') return line;
  }
  return std::nullopt;
}

/// Opens a file for reading; a folder opens as well, but cannot be read.
bool open_data_file(const std::string& path, std::ifstream& file) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return false;
  file.open(path);
  return file.is_open();
}

struct REFERENCE_LINE_T {
  int a = 0, b = 0;
  double cn_a = 0.0, cn_b = 0.0;
  double c6 = 0.0;
};

std::optional<REFERENCE_LINE_T> read_reference_line(std::string_view line) {
  const auto words = INPUT_PARSER::words(line);
  if (words.size() < 5) return std::nullopt;
  const auto a = read_integer(words[0]);
  const auto b = read_integer(words[1]);
  const auto cn_a = read_real(words[2]);
  const auto cn_b = read_real(words[3]);
  const auto c6 = read_real(words[4]);
  if (!a || !b || !cn_a || !cn_b || !c6) return std::nullopt;
  return REFERENCE_LINE_T{*a, *b, *cn_a, *cn_b, *c6};
}

/// Slot of a reference coordination number, a new one when it has not been met; none when the element is full.
std::optional<int> reference_slot(D3_ELEMENT_T& element, double cn) {
  for (int i = 0; i < element.n_references; ++i) {
    if (std::abs(element.reference_cn[static_cast<std::size_t>(i)] - cn) <= same_reference) return i;
  }
  if (element.n_references == D3_MAX_REFERENCES) return std::nullopt;
  element.reference_cn[static_cast<std::size_t>(element.n_references)] = cn;
  return element.n_references++;
}

int tell_too_many(int z, std::ostream& report) {
  fmt::print(report, " *** ERROR: too many reference CN points for Z={}\n     MAX_REF = {}\n", z, D3_MAX_REFERENCES);
  return 1;
}

int store(const REFERENCE_LINE_T& line, D3_DATA_T& data, std::ostream& report) {
  const auto i = reference_slot(data.element(line.a), line.cn_a);
  if (!i) return tell_too_many(line.a, report);
  const auto j = reference_slot(data.element(line.b), line.cn_b);
  if (!j) return tell_too_many(line.b, report);
  data.add_reference_c6(line.a, line.b, *i, *j, line.c6);
  return 0;
}

}  // namespace

double& D3_DATA_T::coefficient(int a, int b, int i, int j) {
  std::size_t& block = block_of_[pair(a, b)];
  if (block == no_block) {
    block = blocks_.size();
    blocks_.push_back({});
  }
  return blocks_[block][slot(i, j)];
}

void D3_DATA_T::add_reference_c6(int a, int b, int i, int j, double c6) {
  coefficient(a, b, i, j) = c6;
  coefficient(b, a, j, i) = c6;
  ++n_entries_;
}

int read_d3_atomic(std::istream& file, D3_DATA_T& data, std::ostream& report) {
  int accepted = 0;
  while (const auto line = next_line(file)) {
    const auto words = INPUT_PARSER::words(*line);
    const auto z = read_integer(words[0]);
    const auto radius = words.size() > 1 ? read_real(words[1]) : std::nullopt;
    const auto q = words.size() > 2 ? read_real(words[2]) : std::nullopt;
    if (!z || !radius || !q) {
      fmt::print(report, " *** ERROR: malformed D3 atomic line: {}\n", INPUT_PARSER::trimmed(*line));
      return 1;
    }
    if (!is_element(*z)) continue;
    data.element(*z).radius = *radius / radius_factor;
    data.element(*z).q = *q;
    ++accepted;
  }
  if (accepted == 0) {
    fmt::print(report, " *** ERROR: D3 atomic data file is empty\n");
    return 1;
  }
  data.set_atomic_loaded();
  return 0;
}

int read_d3_reference(std::istream& file, D3_DATA_T& data, std::ostream& report) {
  if (!data.atomic_loaded()) {
    fmt::print(report, " *** ERROR: call load_d3_atomic before load_d3_reference\n");
    return 1;
  }
  while (const auto line = next_line(file)) {
    const auto entry = read_reference_line(*line);
    if (!entry) {
      fmt::print(report, " *** ERROR: malformed D3 data line: {}\n", INPUT_PARSER::trimmed(*line));
      return 1;
    }
    if (!is_element(entry->a) || !is_element(entry->b)) continue;
    if (const int error = store(*entry, data, report); error != 0) return error;
  }
  if (data.n_entries() == 0) fmt::print(report, " *** WARNING: D3 reference database is empty (0 entries).\n");
  return 0;
}

int load_d3_atomic(const std::string& path, D3_DATA_T& data, std::ostream& report) {
  std::ifstream file;
  if (open_data_file(path, file)) return read_d3_atomic(file, data, report);
  fmt::print(report, " *** ERROR: cannot open D3 atomic data file: {}\n", path);
  return 1;
}

int load_d3_reference(const std::string& path, D3_DATA_T& data, std::ostream& report) {
  std::ifstream file;
  if (open_data_file(path, file)) return read_d3_reference(file, data, report);
  fmt::print(report, " *** ERROR: cannot open D3 reference C6 database: {}\n", path);
  return 1;
}

}  // namespace zentrix::DISPERSION

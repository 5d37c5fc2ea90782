#include <fmt/ostream.h>

#include <cmath>

#include "constants/elements.hpp"
#include "constants/units.hpp"
#include "input/blocks.hpp"
#include "input/text.hpp"

namespace zentrix::INPUT_PARSER {
namespace {

/// No molecule is this large; such a number is a typing slip that would only turn into overflow later (angstrom or bohr).
constexpr double largest_coordinate = 1e6;

bool all_digits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool read_coordinates(const std::vector<std::string_view>& fields, double unit, std::array<double, 3>& position) {
  if (fields.size() < 3) return false;
  for (std::size_t k = 0; k < 3; ++k) {
    const auto value = read_real(fields[k]);
    if (!value || std::abs(*value) > largest_coordinate) return false;
    position[k] = *value * unit;
  }
  return true;
}

int print_fragment_form(const std::string& line, std::ostream& report) {
  fmt::print(report, " *** ERROR parsing %geo line under %job bsse:\n              {}\n", line);
  fmt::print(report, "            Expected 5 columns: <Atom>  X  Y  Z  ifrag\n");
  return 1;
}

}  // namespace

int token_atomic_number(const std::string& token) {
  if (all_digits(token)) {
    const auto z = read_integer(token);
    return z && *z >= 1 && *z <= MAX_Z ? *z : 0;
  }
  const std::size_t letters = std::min(token.find_first_of("0123456789"), token.size());
  const std::string number = token.substr(letters);
  if (letters == 0 || letters > 2 || (!number.empty() && !all_digits(number))) return 0;
  return atomic_number(token.substr(0, letters));
}

void print_bad_token(const std::string& token, std::ostream& report) {
  fmt::print(report, " *** ERROR: Unrecognized atom token: {}\n", token);
  fmt::print(report, "            Accepted formats:\n");
  fmt::print(report, "              <AtomicNumber>           (e.g. 6, 8, 1)\n");
  fmt::print(report, "              <Element>                (e.g. C, O, H)\n");
  fmt::print(report, "              <Element><OrderingNumber> (e.g. C1, O5, H12)\n");
}

int parse_cartesian_block(const std::vector<std::string>& lines, bool bohr, bool with_fragments,
                          std::vector<INPUT_ATOM_T>& atoms, std::ostream& report) {
  const double unit = bohr ? 1.0 : BOHR_PER_ANGSTROM;
  for (const std::string& line : lines) {
    const BLOCK_LINE_T split = split_block_line(line);
    INPUT_ATOM_T atom;
    atom.token = split.token;
    atom.z = token_atomic_number(split.token);
    if (atom.z == 0) {
      print_bad_token(split.token, report);
      return 1;
    }
    const std::vector<std::string_view> fields = words(split.rest);
    if (with_fragments && fields.size() < 4) return print_fragment_form(line, report);
    if (!read_coordinates(fields, unit, atom.position)) {
      fmt::print(report, " *** ERROR parsing geometry line: {}\n", line);
      return 1;
    }
    std::size_t used = 3;
    const auto fragment = fields.size() > 3 ? read_integer(fields[3]) : std::nullopt;
    if (with_fragments) {
      if (!fragment) return print_fragment_form(line, report);
      if (*fragment < 1) {
        fmt::print(report, " *** ERROR: fragment index must be >= 1, got {}\n", *fragment);
        return 1;
      }
      atom.fragment = *fragment;
      used = 4;
    } else if (fragment) {
      used = 4;  // a geometry written for a counterpoise job serves other jobs too
    }
    warn_unused_fields(fields, used, report);
    atoms.push_back(atom);
  }
  return 0;
}

void warn_trailing_text(std::string_view text, std::ostream& report) {
  fmt::print(report, "   *** WARNING: text after the value is ignored: {}\n", trimmed(text));
}

void warn_unused_fields(const std::vector<std::string_view>& fields, std::size_t used, std::ostream& report) {
  if (used >= fields.size()) return;
  const char* end = fields.back().data() + fields.back().size();
  warn_trailing_text({fields[used].data(), static_cast<std::size_t>(end - fields[used].data())}, report);
}

}  // namespace zentrix::INPUT_PARSER

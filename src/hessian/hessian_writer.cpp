#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <cmath>
#include <ctime>
#include <iterator>

#include "constants/elements.hpp"
#include "hessian/hessian_file.hpp"
#include "input/text.hpp"
#include "report/side_files.hpp"

namespace zentrix::HESSIAN {
namespace {

using BUFFER_T = fmt::memory_buffer;
using INPUT_PARSER::trimmed;

template <typename... ARGS>
void put(BUFFER_T& out, fmt::format_string<ARGS...> format, ARGS&&... args) {
  fmt::format_to(std::back_inserter(out), format, std::forward<ARGS>(args)...);
}

/// 20 columns, 12 decimals. Numbers too small for an exponent of two digits are zero for every purpose of the file.
std::string number(double x) {
  constexpr double smallest = 1e-99;
  return fmt::format("{:20.12E}", std::abs(x) < smallest ? 0.0 : x);
}

std::string ecp_word(const HESSIAN_IDENTITY_T& identity) {
  const std::string name(trimmed(identity.ecp));
  return name.empty() ? "none" : name;
}

void put_header(BUFFER_T& out, const HESSIAN_FILE_T& content) {
  const HESSIAN_IDENTITY_T& identity = content.identity;
  put(out, "# Zentrix Hessian file\n# Format version: {}\n", FILE_VERSION);
  put(out, "# Generated:      {:%Y-%m-%d %H:%M:%S}\n", fmt::localtime(std::time(nullptr)));
  put(out, "# Method:         {}\n# Basis:          {}\n", trimmed(identity.method), trimmed(identity.basis));
  put(out, "# ECP:            {}\n# Spin:           {}\n", ecp_word(identity), identity.spin);
  put(out, "# Charge:         {}\n# Multiplicity:   {}\n", identity.charge, identity.multiplicity);
  put(out, "# Units:          bohr (geometry, gradient), Ha/bohr^2 (Hessian), cm^-1 (frequencies)\n");
  if (content.unconverged > 0) put(out, "# Unconverged:    {}\n", content.unconverged);
}

void put_identity(BUFFER_T& out, const HESSIAN_IDENTITY_T& identity) {
  put(out, "\n$method\n{}\n\n$basis\n{}\n", trimmed(identity.method), trimmed(identity.basis));
  put(out, "\n$ecp\n{}\n\n$spin\n{}\n", ecp_word(identity), identity.spin);
  put(out, "\n$charge\n{}\n\n$multiplicity\n{}\n", identity.charge, identity.multiplicity);
  put(out, "\n$natoms\n{}\n\n$atoms\n", identity.atoms.size());
  for (const auto& atom : identity.atoms) {
    put(out, "{:3d} {:<2s}", atom.z, element_symbol(atom.z));
    for (const double x : atom.position) put(out, " {}", number(x));
    put(out, "\n");
  }
}

/// Five numbers to a line, each followed by a blank.
void put_values(BUFFER_T& out, const VECTOR& values) {
  constexpr Eigen::Index per_line = 5;
  for (Eigen::Index i = 0; i < values.size(); ++i) {
    put(out, "{} ", number(values(i)));
    if ((i + 1) % per_line == 0 || i + 1 == values.size()) put(out, "\n");
  }
}

}  // namespace

std::string hessian_file_text(const HESSIAN_FILE_T& content) {
  BUFFER_T out;
  put_header(out, content);
  put_identity(out, content.identity);
  const Eigen::Index n = content.hessian.rows();
  put(out, "\n$energy\n{}\n\n$gradient\n", number(content.energy.value()));
  const VECTOR gradient = content.gradient.size() == n ? content.gradient : VECTOR::Zero(n);
  for (Eigen::Index a = 0; a < n; a += 3) {
    put(out, " {} {} {}\n", number(gradient(a)), number(gradient(a + 1)), number(gradient(a + 2)));
  }
  put(out, "\n$hessian\n{} {} \n", n, n);
  for (Eigen::Index row = 0; row < n; ++row) put_values(out, content.hessian.row(row));
  put(out, "\n$frequencies\n{}\n", content.frequencies.size());
  put_values(out, content.frequencies);
  put(out, "\n$normal_modes\n{} {} \n", content.modes.rows(), content.modes.cols());
  for (Eigen::Index mode = 0; mode < content.modes.cols(); ++mode) put_values(out, content.modes.col(mode));
  put(out, "\n$end\n");
  return fmt::to_string(out);
}

std::string write_hessian_file(const std::string& base, const HESSIAN_FILE_T& content, std::ostream& report) {
  std::string name = unique_output_name(base, "hess", report);
  if (!write_side_file(name, hessian_file_text(content))) {
    fmt::print(report, " *** WARNING: could not open Hessian file for writing: {}\n", name);
    return "";
  }
  fmt::print(report, "   Hessian written to: {}\n", name);
  return name;
}

}  // namespace zentrix::HESSIAN

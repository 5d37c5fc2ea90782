#include "report/layout.hpp"

#include <fmt/chrono.h>
#include <fmt/ostream.h>

#include <cmath>
#include <ctime>

namespace zentrix {

std::string section_rule() { return " " + std::string(55, '='); }

void print_section_heading(const std::string& number, const std::string& title, std::ostream& report) {
  fmt::print(report, "\n --- Section {}: {} ---\n", number, title);
}

void print_timestamp(std::ostream& report) {
  fmt::print(report, " Date and time: {:%Y-%m-%d %H:%M:%S}\n", fmt::localtime(std::time(nullptr)));
}

double without_minus_zero(double x, int decimals) { return std::abs(x) < 0.5 * std::pow(10.0, -decimals) ? 0.0 : x; }

}  // namespace zentrix

#pragma once

#include <iosfwd>
#include <string>

// The pieces of the report that no subsystem owns: rules, section headings, the timestamp.

namespace zentrix {

/// The rule line of the banner and of the section ends: one blank and 55 '='.
std::string section_rule();

/// " --- Section <number>: <title> ---", set off by an empty line.
void print_section_heading(const std::string& number, const std::string& title, std::ostream& report);

/// Current local date and time on one line.
void print_timestamp(std::ostream& report);

/// The value as it is to be printed with so many decimals: a negative that would show as "-0.000" becomes a plain zero.
double without_minus_zero(double x, int decimals);

}  // namespace zentrix

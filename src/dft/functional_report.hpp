#pragma once

#include <iosfwd>
#include <string_view>

namespace zentrix::DFT {

/// The two lines that refuse a method name.
void print_unknown_method(std::string_view method_name, std::ostream& report);

}  // namespace zentrix::DFT

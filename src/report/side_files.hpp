#pragma once

#include <iosfwd>
#include <string>

namespace zentrix {

/// Base name of all side files of a run: the input path without folders and without its last extension (a name whose only
/// dot is its first character keeps it); "zentrix" when nothing is left.
std::string output_base_name(const std::string& input_path);

/// First of base.ext, base_2.ext, ..., base_999.ext that does not exist; the last one, after a warning, when all do.
std::string unique_output_name(const std::string& base, const std::string& extension, std::ostream& report);

/// Writes a whole side file, replacing what has its name. A file that cannot be completed leaves nothing behind under that
/// name. True on success.
[[nodiscard]] bool write_side_file(const std::string& name, const std::string& text);

}  // namespace zentrix

#include <fmt/ostream.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <istream>
#include <map>
#include <set>

#include "hessian/hessian_file.hpp"
#include "input/text.hpp"

namespace zentrix::HESSIAN {
namespace {

/// Larger counts are typing slips; they must not become an allocation.
constexpr int largest_count = 30000;

using INPUT_PARSER::trimmed;

std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

/// Free-format records: blank-separated values that may go on over several lines; what stands behind the last value wanted
/// on its line is dropped, so that the next record starts on a new one.
class RECORD_READER_T {
 public:
  explicit RECORD_READER_T(std::istream& file) : file_(file) {}

  bool line(std::string& text) { return static_cast<bool>(std::getline(file_, text)); }

  /// Starts a new record.
  void begin() { words_.clear(), next_ = 0; }

  bool word(std::string& text) {
    while (next_ >= words_.size()) {
      std::string row;
      if (!line(row)) return false;
      split(row);
    }
    text = words_[next_++];
    return true;
  }
  bool integer(int& value) { return number(INPUT_PARSER::read_integer, value); }
  bool real(double& value) { return number(INPUT_PARSER::read_real, value); }
  /// Grows with what is really there, whatever the count promised.
  bool reals(std::size_t count, std::vector<double>& values) {
    values.clear();
    double value = 0.0;
    while (values.size() < count && real(value)) values.push_back(value);
    return values.size() == count;
  }

 private:
  void split(const std::string& row) {
    begin();
    for (const std::string_view text : INPUT_PARSER::words(row)) words_.emplace_back(text);
  }

  template <typename T>
  bool number(std::optional<T> (*read)(std::string_view), T& value) {
    std::string text;
    if (!word(text)) return false;
    const std::optional<T> found = read(text);
    value = found.value_or(value);
    return found.has_value();
  }

  std::istream& file_;
  std::vector<std::string> words_;
  std::size_t next_ = 0;
};

/// A fault of a file's text with the line that tells it.
struct FAULT_T {
  READ_STATUS status = READ_STATUS::accepted;
  std::string text;
};

class FILE_PARSER_T {
 public:
  FILE_PARSER_T(std::istream& file, std::string name, int dimension, HESSIAN_FILE_T& content)
      : reader_(file), name_(std::move(name)), dimension_(dimension), content_(content) {}

  FAULT_T parse() {
    std::string line;
    if (FAULT_T fault = scan_header(line); fault.status != READ_STATUS::accepted) return fault;
    for (bool more = !line.empty(); more; more = reader_.line(line)) {
      if (line.empty() || line[0] != '$') continue;
      const std::string_view row = trimmed(line);
      const std::string tag = lower(row.substr(0, std::min(row.find_first_of(" \t"), longest_tag)));
      if (tag == "$end") break;
      if (FAULT_T fault = read_tag(tag); fault.status != READ_STATUS::accepted) return fault;
    }
    return check_complete();
  }

 private:
  static constexpr std::size_t longest_tag = 64;

  static FAULT_T fault(READ_STATUS status, const std::string& text) { return {status, " *** ERROR: " + text}; }
  FAULT_T malformed() const { return fault(READ_STATUS::malformed, name_ + ": malformed Hessian file (parse error)."); }

  /// The integer behind the colon of a header line.
  static bool header_number(const std::string& line, int& value) {
    const std::string_view text = trimmed(std::string_view(line).substr(line.find(':') + 1));
    const std::optional<int> found = INPUT_PARSER::read_integer(text.substr(0, text.find_first_of(" \t")));
    value = found.value_or(value);
    return found.has_value();
  }

  /// Reads up to the first line that begins with '$', which is handed on.
  FAULT_T scan_header(std::string& line) {
    int version = 0;
    bool found = false;
    while (reader_.line(line) && (line.empty() || line[0] != '$')) {
      if (line.empty() || line[0] != '#') continue;
      if (line.find("Format version:") != std::string::npos) found = header_number(line, version);
      if (line.find("Unconverged:") != std::string::npos) header_number(line, content_.unconverged);
    }
    if (line.empty() || line[0] != '$') line.clear();
    if (!found) return fault(READ_STATUS::no_version, name_ + ": missing \"# Format version:\" header.");
    if (version == FILE_VERSION) return {};
    return fault(
        READ_STATUS::other_version,
        fmt::format("Hessian file format version {} is incompatible with current version {}", version, FILE_VERSION));
  }

  FAULT_T read_tag(const std::string& tag) {
    using HANDLER = FAULT_T (FILE_PARSER_T::*)();
    static const std::map<std::string, HANDLER> handlers = {
        {"$method", &FILE_PARSER_T::read_method},     {"$basis", &FILE_PARSER_T::read_basis},
        {"$ecp", &FILE_PARSER_T::read_ecp},           {"$spin", &FILE_PARSER_T::read_spin},
        {"$charge", &FILE_PARSER_T::read_charge},     {"$multiplicity", &FILE_PARSER_T::read_multiplicity},
        {"$natoms", &FILE_PARSER_T::read_natoms},     {"$atoms", &FILE_PARSER_T::read_atoms},
        {"$energy", &FILE_PARSER_T::read_energy},     {"$gradient", &FILE_PARSER_T::read_gradient},
        {"$hessian", &FILE_PARSER_T::read_matrix},    {"$frequencies", &FILE_PARSER_T::read_frequencies},
        {"$normal_modes", &FILE_PARSER_T::read_modes}};
    const auto handler = handlers.find(tag);
    if (handler == handlers.end()) return {};
    reader_.begin();
    FAULT_T result = (this->*handler->second)();
    if (result.status == READ_STATUS::accepted) seen_.insert(tag);
    return result;
  }

  FAULT_T read_text(std::string& value) {
    std::string line;
    if (!reader_.line(line)) return malformed();
    value = trimmed(line);
    return {};
  }
  FAULT_T read_integer(int& value) { return reader_.integer(value) ? FAULT_T{} : malformed(); }

  FAULT_T read_method() { return read_text(content_.identity.method); }
  FAULT_T read_basis() { return read_text(content_.identity.basis); }
  FAULT_T read_ecp() {
    FAULT_T result = read_text(content_.identity.ecp);
    if (lower(content_.identity.ecp) == "none") content_.identity.ecp.clear();
    return result;
  }
  FAULT_T read_spin() { return read_text(content_.identity.spin); }
  FAULT_T read_charge() { return read_integer(content_.identity.charge); }
  FAULT_T read_multiplicity() { return read_integer(content_.identity.multiplicity); }

  FAULT_T read_natoms() {
    if (!reader_.integer(n_atoms_) || n_atoms_ < 1 || n_atoms_ > largest_count) return malformed();
    return {};
  }

  FAULT_T read_atoms() {
    if (seen_.count("$natoms") == 0) return fault(READ_STATUS::out_of_order, "$atoms before $natoms");
    content_.identity.atoms.clear();
    for (int a = 0; a < n_atoms_; ++a) {
      reader_.begin();
      HESSIAN_IDENTITY_T::NUCLEUS_T atom;
      std::string symbol;
      if (!reader_.integer(atom.z) || !reader_.word(symbol)) return malformed();
      for (double& x : atom.position) {
        if (!reader_.real(x)) return malformed();
      }
      content_.identity.atoms.push_back(atom);
    }
    return {};
  }

  FAULT_T read_energy() {
    double energy = 0.0;
    if (!reader_.real(energy)) return malformed();
    content_.energy = energy;
    return {};
  }

  FAULT_T read_gradient() {
    if (seen_.count("$natoms") == 0) return fault(READ_STATUS::out_of_order, "$gradient before $natoms");
    return read_vector(3 * n_atoms_, content_.gradient);
  }

  FAULT_T read_matrix() {
    int rows = 0;
    int columns = 0;
    if (!reader_.integer(rows) || !reader_.integer(columns)) return malformed();
    if (rows != dimension_ || columns != dimension_) {
      return fault(READ_STATUS::other_size,
                   fmt::format("$hessian: matrix size {} x {} but expected {}", rows, columns, dimension_));
    }
    // Stored row after row.
    FAULT_T result = read_columns(rows, columns, content_.hessian);
    content_.hessian.transposeInPlace();
    return result;
  }

  FAULT_T read_frequencies() {
    int count = 0;
    if (!reader_.integer(count) || count < 0 || count > largest_count) return malformed();
    return read_vector(count, content_.frequencies);
  }

  FAULT_T read_modes() {
    int rows = 0;
    int columns = 0;
    if (!reader_.integer(rows) || !reader_.integer(columns)) return malformed();
    if (rows < 0 || columns < 0 || rows > largest_count || columns > largest_count) return malformed();
    return read_columns(rows, columns, content_.modes);
  }

  /// Values that begin on a line of their own.
  FAULT_T read_vector(int count, VECTOR& vector) {
    reader_.begin();
    std::vector<double> values;
    if (!reader_.reals(static_cast<std::size_t>(count), values)) return malformed();
    vector = Eigen::Map<const VECTOR>(values.data(), count);
    return {};
  }

  FAULT_T read_columns(int rows, int columns, MATRIX& matrix) {
    reader_.begin();
    std::vector<double> values;
    if (!reader_.reals(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns), values)) return malformed();
    matrix = Eigen::Map<const MATRIX>(values.data(), rows, columns);
    return {};
  }

  FAULT_T check_complete() const {
    for (const char* tag :
         {"$method", "$basis", "$ecp", "$spin", "$charge", "$multiplicity", "$natoms", "$atoms", "$hessian"}) {
      if (seen_.count(tag) == 0) return fault(READ_STATUS::incomplete, name_ + ": required tag(s) missing.");
    }
    // A second $natoms may contradict the atoms that were read under the first.
    return content_.identity.atoms.size() == static_cast<std::size_t>(n_atoms_) ? FAULT_T{} : malformed();
  }

  RECORD_READER_T reader_;
  std::string name_;
  int dimension_ = 0;
  HESSIAN_FILE_T& content_;
  int n_atoms_ = 0;
  std::set<std::string> seen_;
};

/// Compares what a file says of itself with the run, in a fixed order; the first difference is told.
class CONSISTENCY_T {
 public:
  CONSISTENCY_T(const HESSIAN_IDENTITY_T& file, const HESSIAN_IDENTITY_T& current, std::ostream& report)
      : file_(file), current_(current), report_(report) {}

  READ_STATUS check() {
    const std::function<READ_STATUS()> checks[] = {
        [this] { return atoms(); },
        [this] { return geometry(); },
        [this] { return text("method", file_.method, current_.method, READ_STATUS::other_method); },
        [this] { return text("basis", file_.basis, current_.basis, READ_STATUS::other_basis); },
        [this] { return text("ECP", ecp(file_), ecp(current_), READ_STATUS::other_ecp); },
        [this] { return text("spin", file_.spin, current_.spin, READ_STATUS::other_spin); },
        [this] { return charge(); },
        [this] { return multiplicity(); }};
    for (const auto& next : checks) {
      if (const READ_STATUS status = next(); status != READ_STATUS::accepted) return status;
    }
    return READ_STATUS::accepted;
  }

  double largest_distance() const { return largest_; }

 private:
  static std::string ecp(const HESSIAN_IDENTITY_T& identity) {
    const std::string name(trimmed(identity.ecp));
    return name.empty() || lower(name) == "none" ? "none" : name;
  }

  READ_STATUS atoms() {
    if (file_.atoms.size() != current_.atoms.size()) {
      fmt::print(report_, " *** ERROR: hess_file natom = {}, current natom = {}\n", file_.atoms.size(),
                 current_.atoms.size());
      return READ_STATUS::other_atom_count;
    }
    for (std::size_t a = 0; a < file_.atoms.size(); ++a) {
      if (file_.atoms[a].z == current_.atoms[a].z) continue;
      fmt::print(report_, " *** ERROR: hess_file atom {}: Z = {}, current Z = {}\n", a + 1, file_.atoms[a].z,
                 current_.atoms[a].z);
      return READ_STATUS::other_element;
    }
    return READ_STATUS::accepted;
  }

  READ_STATUS geometry() {
    std::size_t farthest = 0;
    for (std::size_t a = 0; a < file_.atoms.size(); ++a) {
      const auto& p = file_.atoms[a].position;
      const auto& q = current_.atoms[a].position;
      const double distance = std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
      if (distance <= largest_) continue;
      largest_ = distance;
      farthest = a;
    }
    if (largest_ <= GEOMETRY_TOLERANCE) return READ_STATUS::accepted;
    const auto& there = file_.atoms[farthest].position;
    const auto& here = current_.atoms[farthest].position;
    fmt::print(report_, " *** ERROR: hess_file geometry mismatch on atom {}\n", farthest + 1);
    fmt::print(report_, "            file:    {:16.10f} {:16.10f} {:16.10f}\n", there[0], there[1], there[2]);
    fmt::print(report_, "            input:   {:16.10f} {:16.10f} {:16.10f}\n", here[0], here[1], here[2]);
    fmt::print(report_, "            |dx| = {:.3e} bohr  (tolerance {:.3e} bohr)\n", largest_, GEOMETRY_TOLERANCE);
    fmt::print(report_, "            Run aborted; recompute the Hessian at the current geometry.\n");
    return READ_STATUS::other_geometry;
  }

  READ_STATUS text(const char* item, const std::string& there, const std::string& here, READ_STATUS status) {
    if (lower(trimmed(there)) == lower(trimmed(here))) return READ_STATUS::accepted;
    fmt::print(report_, " *** ERROR: hess_file {} mismatch:\n", item);
    fmt::print(report_, "              file:    {}\n              input:   {}\n", trimmed(there), trimmed(here));
    fmt::print(report_, "              Run aborted; the cached Hessian is inconsistent with the current run.\n");
    return status;
  }

  READ_STATUS charge() {
    if (file_.charge == current_.charge) return READ_STATUS::accepted;
    fmt::print(report_, " *** ERROR: hess_file charge = {}, current charge = {}\n", file_.charge, current_.charge);
    return READ_STATUS::other_charge;
  }

  READ_STATUS multiplicity() {
    if (file_.multiplicity == current_.multiplicity) return READ_STATUS::accepted;
    fmt::print(report_, " *** ERROR: hess_file mult = {}, current mult = {}\n", file_.multiplicity, current_.multiplicity);
    return READ_STATUS::other_multiplicity;
  }

  const HESSIAN_IDENTITY_T& file_;
  const HESSIAN_IDENTITY_T& current_;
  std::ostream& report_;
  double largest_ = 0.0;
};

}  // namespace

READ_STATUS read_hessian(std::istream& file, const std::string& name, const HESSIAN_IDENTITY_T& current,
                         HESSIAN_FILE_T& content, std::ostream& report) {
  content = {};
  const int dimension = 3 * static_cast<int>(current.atoms.size());
  if (const FAULT_T fault = FILE_PARSER_T(file, name, dimension, content).parse(); fault.status != READ_STATUS::accepted) {
    fmt::print(report, "{}\n", fault.text);
    return fault.status;
  }
  CONSISTENCY_T consistency(content.identity, current, report);
  if (const READ_STATUS status = consistency.check(); status != READ_STATUS::accepted) return status;
  fmt::print(report, "   Hessian read from: {}\n", name);
  fmt::print(report, "   Geometry match: max dx = {:.8f} bohr (within tolerance).\n", consistency.largest_distance());
  return READ_STATUS::accepted;
}

READ_STATUS read_hessian_file(const std::string& name, const HESSIAN_IDENTITY_T& current, HESSIAN_FILE_T& content,
                              std::ostream& report) {
  std::ifstream file(name);
  std::error_code unknown;
  if (!file || std::filesystem::is_directory(name, unknown)) {
    fmt::print(report, " *** ERROR: cannot open Hessian file: {}\n", name);
    return READ_STATUS::no_file;
  }
  return read_hessian(file, name, current, content, report);
}

}  // namespace zentrix::HESSIAN

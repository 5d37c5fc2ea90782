#pragma once

#include <array>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

// The published data of the D3 correction, read at run time from two text files: S. Grimme, J. Antony, S. Ehrlich, H. Krieg,
// J. Chem. Phys. 132 (2010) 154104.

namespace zentrix::DISPERSION {

inline constexpr int D3_MAX_Z = 103;
/// Reference systems per element.
inline constexpr int D3_MAX_REFERENCES = 7;

struct D3_ELEMENT_T {
  double radius = 0.0;   ///< covalent radius, bohr; the file holds 4/3 of it. 0: the element has no data
  double q = 0.0;        ///< C8 = 3 C6 q_A q_B, bohr
  int n_references = 0;  ///< reference coordination numbers met so far
  std::array<double, D3_MAX_REFERENCES> reference_cn = {};
};

/// Element data and the reference C6 coefficients of all pairs of reference systems.
class D3_DATA_T {
 public:
  D3_DATA_T() : elements_(D3_MAX_Z + 1), block_of_((D3_MAX_Z + 1) * (D3_MAX_Z + 1), no_block) {}

  const D3_ELEMENT_T& element(int z) const { return elements_[static_cast<std::size_t>(z)]; }
  D3_ELEMENT_T& element(int z) { return elements_[static_cast<std::size_t>(z)]; }
  bool atomic_loaded() const { return atomic_loaded_; }
  void set_atomic_loaded() { atomic_loaded_ = true; }

  /// Number of pairs of reference systems that were read; 0: no reference data.
  std::size_t n_entries() const { return n_entries_; }
  /// C6 of reference i of element a with reference j of element b, hartree bohr^6; 0 where none was read.
  double reference_c6(int a, int b, int i, int j) const {
    const std::size_t block = block_of_[pair(a, b)];
    return block == no_block ? 0.0 : blocks_[block][slot(i, j)];
  }
  /// Stores the coefficient for both orders of the pair.
  void add_reference_c6(int a, int b, int i, int j, double c6);

 private:
  using BLOCK_T = std::array<double, static_cast<std::size_t>(D3_MAX_REFERENCES) * D3_MAX_REFERENCES>;
  static constexpr std::size_t no_block = static_cast<std::size_t>(-1);
  static std::size_t pair(int a, int b) { return static_cast<std::size_t>(a * (D3_MAX_Z + 1) + b); }
  static std::size_t slot(int i, int j) { return static_cast<std::size_t>(i * D3_MAX_REFERENCES + j); }
  double& coefficient(int a, int b, int i, int j);

  std::vector<D3_ELEMENT_T> elements_;
  std::vector<std::size_t> block_of_;  ///< per pair of elements
  std::vector<BLOCK_T> blocks_;
  std::size_t n_entries_ = 0;
  bool atomic_loaded_ = false;
};

/// Reads the atomic file: lines "Z  4R/3  q" (bohr); blank lines and lines that begin with '#' or '!' are skipped, so are
/// elements outside 1..103. 0 on success, otherwise a code after the reason was printed.
[[nodiscard]] int load_d3_atomic(const std::string& path, D3_DATA_T& data, std::ostream& report);
/// Reads the reference file, after the atomic one: lines "Z_A Z_B CN_A CN_B C6" (hartree bohr^6). Coordination numbers of an
/// element that agree to 1e-6 are one reference system. A file without data is only warned of.
[[nodiscard]] int load_d3_reference(const std::string& path, D3_DATA_T& data, std::ostream& report);

/// The readers behind the two routines above, on an open stream.
[[nodiscard]] int read_d3_atomic(std::istream& file, D3_DATA_T& data, std::ostream& report);
[[nodiscard]] int read_d3_reference(std::istream& file, D3_DATA_T& data, std::ostream& report);

}  // namespace zentrix::DISPERSION

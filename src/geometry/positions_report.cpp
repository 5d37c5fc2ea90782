#include "geometry/positions_report.hpp"

#include <fmt/ostream.h>

#include "constants/units.hpp"
#include "report/layout.hpp"

namespace zentrix::INTERNAL_COORDS {

std::vector<std::string> symbols_of(const MOLECULE_T& molecule) {
  std::vector<std::string> symbols;
  for (const ATOM_T& atom : molecule.atoms) symbols.push_back(atom.symbol);
  return symbols;
}

void print_positions(const std::vector<std::string>& symbols, const VECTOR& positions, std::ostream& report) {
  const auto angstrom = [&](Eigen::Index k) { return without_minus_zero(positions(k) / BOHR_PER_ANGSTROM, 8); };
  for (std::size_t a = 0; a < symbols.size(); ++a) {
    const auto k = static_cast<Eigen::Index>(3 * a);
    fmt::print(report, "   {:4d}  {:<2}  {:14.8f} {:14.8f} {:14.8f}\n", a + 1, symbols[a], angstrom(k), angstrom(k + 1),
               angstrom(k + 2));
  }
}

}  // namespace zentrix::INTERNAL_COORDS

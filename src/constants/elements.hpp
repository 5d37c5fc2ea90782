#pragma once

#include <string>
#include <string_view>

namespace zentrix {

/// Highest atomic number with a symbol.
inline constexpr int MAX_Z = 118;
/// Highest atomic number a basis file may hold (radon).
inline constexpr int MAX_BASIS_Z = 86;

/// Symbol of element z, 1 <= z <= 118 ("H", "He", ..., without padding).
std::string element_symbol(int z);

/// Atomic number of a symbol, in any case, surrounding blanks ignored; 0 when there is no such element.
int atomic_number(std::string_view symbol);

/// Standard atomic weight of element z in unified atomic mass units (an average over natural isotopes; the mass number of a
/// long-lived isotope for elements without a standard weight).
double atomic_weight(int z);

}  // namespace zentrix

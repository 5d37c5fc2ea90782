#pragma once

// Unit factors. Inside the program lengths are bohr, energies hartree and angles radian.

namespace zentrix {

inline constexpr double PI = 3.14159265358979323846;
/// 1 angstrom in bohr.
inline constexpr double BOHR_PER_ANGSTROM = 1.8897261246257702;
inline constexpr double RADIAN_PER_DEGREE = PI / 180.0;
/// 1 hartree in kcal/mol, kJ/mol and cm^-1.
inline constexpr double KCAL_MOL_PER_HARTREE = 627.5094740631;
inline constexpr double KJ_MOL_PER_HARTREE = 2625.4996394799;
inline constexpr double WAVENUMBER_PER_HARTREE = 219474.63;
/// 1 atomic unit of dipole moment (e bohr) in debye.
inline constexpr double DEBYE_PER_AU = 2.541746473;

}  // namespace zentrix

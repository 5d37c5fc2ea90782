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
/// 1 unified atomic mass unit in electron masses, the mass of all vibrational work.
inline constexpr double ELECTRON_MASSES_PER_U = 1822.888486209;
/// Squared dipole derivative along a mass-weighted mode, e^2/m_e, as infrared intensity in km/mol.
inline constexpr double KM_MOL_PER_AU = 1777100.0;
/// Boltzmann constant, hartree/K, and 1 atomic unit of pressure (hartree/bohr^3) in pascal: CODATA 2018.
inline constexpr double BOLTZMANN = 3.1668115634556e-6;
inline constexpr double PASCAL_PER_AU = 2.9421015697e13;
inline constexpr double STANDARD_TEMPERATURE = 298.15;  ///< K
inline constexpr double ATMOSPHERE = 101325.0;          ///< Pa

}  // namespace zentrix

#include "constants/elements.hpp"

#include <array>
#include <cctype>

namespace zentrix {
namespace {

struct ELEMENT_ROW_T {
  const char* symbol;
  double weight;
};

// Symbol and standard atomic weight (u) in order of atomic number.
constexpr std::array<ELEMENT_ROW_T, MAX_Z> elements = {{
    {"H", 1.00794},  {"He", 4.0026},  {"Li", 6.941},   {"Be", 9.01218}, {"B", 10.811},   {"C", 12.0107},  {"N", 14.0067},
    {"O", 15.9994},  {"F", 18.9984},  {"Ne", 20.1797}, {"Na", 22.9898}, {"Mg", 24.305},  {"Al", 26.9815}, {"Si", 28.0855},
    {"P", 30.9738},  {"S", 32.065},   {"Cl", 35.453},  {"Ar", 39.948},  {"K", 39.0983},  {"Ca", 40.078},  {"Sc", 44.9559},
    {"Ti", 47.867},  {"V", 50.9415},  {"Cr", 51.9961}, {"Mn", 54.938},  {"Fe", 55.845},  {"Co", 58.9332}, {"Ni", 58.6934},
    {"Cu", 63.546},  {"Zn", 65.38},   {"Ga", 69.723},  {"Ge", 72.64},   {"As", 74.9216}, {"Se", 78.96},   {"Br", 79.904},
    {"Kr", 83.798},  {"Rb", 85.4678}, {"Sr", 87.62},   {"Y", 88.9059},  {"Zr", 91.224},  {"Nb", 92.9064}, {"Mo", 95.96},
    {"Tc", 98},      {"Ru", 101.07},  {"Rh", 102.906}, {"Pd", 106.42},  {"Ag", 107.868}, {"Cd", 112.411}, {"In", 114.818},
    {"Sn", 118.71},  {"Sb", 121.76},  {"Te", 127.6},   {"I", 126.904},  {"Xe", 131.293}, {"Cs", 132.905}, {"Ba", 137.327},
    {"La", 138.905}, {"Ce", 140.116}, {"Pr", 140.908}, {"Nd", 144.242}, {"Pm", 145},     {"Sm", 150.36},  {"Eu", 151.964},
    {"Gd", 157.25},  {"Tb", 158.925}, {"Dy", 162.5},   {"Ho", 164.93},  {"Er", 167.259}, {"Tm", 168.934}, {"Yb", 173.054},
    {"Lu", 174.967}, {"Hf", 178.49},  {"Ta", 180.948}, {"W", 183.84},   {"Re", 186.207}, {"Os", 190.23},  {"Ir", 192.217},
    {"Pt", 195.084}, {"Au", 196.967}, {"Hg", 200.59},  {"Tl", 204.383}, {"Pb", 207.2},   {"Bi", 208.98},  {"Po", 209},
    {"At", 210},     {"Rn", 222},     {"Fr", 223},     {"Ra", 226},     {"Ac", 227},     {"Th", 232.038}, {"Pa", 231.036},
    {"U", 238.029},  {"Np", 237},     {"Pu", 244},     {"Am", 243},     {"Cm", 247},     {"Bk", 247},     {"Cf", 251},
    {"Es", 252},     {"Fm", 257},     {"Md", 258},     {"No", 259},     {"Lr", 266},     {"Rf", 267},     {"Db", 268},
    {"Sg", 269},     {"Bh", 270},     {"Hs", 277},     {"Mt", 278},     {"Ds", 281},     {"Rg", 282},     {"Cn", 285},
    {"Nh", 286},     {"Fl", 289},     {"Mc", 290},     {"Lv", 293},     {"Ts", 294},     {"Og", 294},
}};

}  // namespace

std::string element_symbol(int z) { return elements.at(static_cast<std::size_t>(z) - 1).symbol; }

double atomic_weight(int z) { return elements.at(static_cast<std::size_t>(z) - 1).weight; }

int atomic_number(std::string_view symbol) {
  const auto first = symbol.find_first_not_of(' ');
  if (first == std::string_view::npos) return 0;
  symbol = symbol.substr(first, symbol.find_last_not_of(' ') - first + 1);
  std::string wanted(symbol);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const auto c = static_cast<unsigned char>(wanted[i]);
    wanted[i] = static_cast<char>(i == 0 ? std::toupper(c) : std::tolower(c));
  }
  for (int z = 1; z <= MAX_Z; ++z) {
    if (wanted == elements[static_cast<std::size_t>(z) - 1].symbol) return z;
  }
  return 0;
}

}  // namespace zentrix

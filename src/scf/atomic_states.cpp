#include "scf/atomic_states.hpp"

#include <algorithm>

namespace zentrix::SCF {
namespace {

constexpr int l_count = 4;  // s to f
constexpr int cerium = 58;

constexpr int capacity(int l) { return 2 * (2 * l + 1); }

/// Electrons of the k-th shell (from 0) of every angular momentum.
using CONFIGURATION_T = std::array<std::vector<int>, l_count>;

struct SUBSHELL_T {
  int l;
  int k;  ///< number of the shell among those of the same l, from 0
};

/// Order of filling: 1s 2s 2p 3s 3p 4s 3d 4p 5s 4d 5p 6s 4f 5d 6p.
constexpr std::array<SUBSHELL_T, 15> filling_order = {{{0, 0},
                                                       {0, 1},
                                                       {1, 0},
                                                       {0, 2},
                                                       {1, 1},
                                                       {0, 3},
                                                       {2, 0},
                                                       {1, 2},
                                                       {0, 4},
                                                       {2, 1},
                                                       {1, 3},
                                                       {0, 5},
                                                       {3, 0},
                                                       {2, 2},
                                                       {1, 4}}};

/// Neutral atoms that deviate from that order: electrons that have moved from one subshell to another.
struct EXCEPTION_T {
  int z;
  SUBSHELL_T from;
  SUBSHELL_T to;
  int electrons;
};
constexpr SUBSHELL_T s4 = {0, 3}, s5 = {0, 4}, s6 = {0, 5}, d3 = {2, 0}, d4 = {2, 1}, d5 = {2, 2}, f4 = {3, 0};
constexpr std::array<EXCEPTION_T, 13> exceptions = {{{24, s4, d3, 1},
                                                     {29, s4, d3, 1},
                                                     {41, s5, d4, 1},
                                                     {42, s5, d4, 1},
                                                     {44, s5, d4, 1},
                                                     {45, s5, d4, 1},
                                                     {46, s5, d4, 2},
                                                     {47, s5, d4, 1},
                                                     {57, f4, d5, 1},
                                                     {58, f4, d5, 1},
                                                     {64, f4, d5, 1},
                                                     {78, s6, d5, 1},
                                                     {79, s6, d5, 1}}};

int& electrons_of(CONFIGURATION_T& configuration, SUBSHELL_T shell) {
  auto& shells = configuration[static_cast<std::size_t>(shell.l)];
  if (shells.size() <= static_cast<std::size_t>(shell.k)) shells.resize(static_cast<std::size_t>(shell.k) + 1, 0);
  return shells[static_cast<std::size_t>(shell.k)];
}

CONFIGURATION_T neutral_configuration(int z) {
  CONFIGURATION_T configuration;
  int left = z;
  for (const SUBSHELL_T& shell : filling_order) {
    if (left == 0) break;
    const int taken = std::min(left, capacity(shell.l));
    electrons_of(configuration, shell) = taken;
    left -= taken;
  }
  for (const EXCEPTION_T& exception : exceptions) {
    if (exception.z != z) continue;
    electrons_of(configuration, exception.from) -= exception.electrons;
    electrons_of(configuration, exception.to) += exception.electrons;
  }
  return configuration;
}

/// Shells of s, p, d, f inside a core of so many electrons. The usual cores are noble gases with or without the filled d and
/// f shells that lie inside the valence shell.
std::array<int, l_count> core_shells(int n_core) {
  struct ROW_T {
    int electrons;
    std::array<int, l_count> shells;
  };
  static constexpr std::array<ROW_T, 11> rows = {{{2, {1, 0, 0, 0}},
                                                  {10, {2, 1, 0, 0}},
                                                  {18, {3, 2, 0, 0}},
                                                  {28, {3, 2, 1, 0}},
                                                  {36, {4, 3, 1, 0}},
                                                  {46, {4, 3, 2, 0}},
                                                  {54, {5, 4, 2, 0}},
                                                  {60, {4, 3, 2, 1}},
                                                  {68, {5, 4, 2, 1}},
                                                  {78, {5, 4, 3, 1}},
                                                  {80, {6, 4, 3, 1}}}};
  for (const ROW_T& row : rows)
    if (row.electrons == n_core) return row.shells;
  return {};
}

}  // namespace

ATOMIC_STATE_T atomic_ground_state(int z, int n_core) {
  CONFIGURATION_T configuration = neutral_configuration(z);
  const std::array<int, l_count> core = core_shells(n_core);
  ATOMIC_STATE_T state;
  for (int l = 0; l < l_count; ++l) {
    auto& shells = configuration[static_cast<std::size_t>(l)];
    const auto removed = std::min(shells.size(), static_cast<std::size_t>(core[static_cast<std::size_t>(l)]));
    shells.erase(shells.begin(), shells.begin() + static_cast<std::ptrdiff_t>(removed));
    while (!shells.empty() && shells.back() == 0) shells.pop_back();
    std::array<std::vector<double>, 2> fractions;
    for (const int electrons : shells) {
      const int majority = std::min(electrons, 2 * l + 1);
      // The 4f and 5d electrons of cerium have opposite spins in its ground term (1G).
      const std::size_t first = z == cerium && l == 2 && electrons == 1 ? 1 : 0;
      fractions[first].push_back(static_cast<double>(majority) / (2 * l + 1));
      fractions[1 - first].push_back(static_cast<double>(electrons - majority) / (2 * l + 1));
      (first == 0 ? state.n_alpha : state.n_beta) += majority;
      (first == 0 ? state.n_beta : state.n_alpha) += electrons - majority;
    }
    for (std::size_t s = 0; s < 2; ++s) state.filling[s].push_back(fractions[s]);
  }
  return state;
}

}  // namespace zentrix::SCF
